#include "assistant/ai_provider_client.hpp"

#include "assistant/ai_http.hpp"
#include "assistant/ai_wire_formats.hpp"
#include "core/text_util.hpp"

namespace orvane::assistant {

namespace {

constexpr std::string_view kAnthropicVersion = "2023-06-01";

AIHeaders anthropicHeaders(const AIEndpoint& endpoint) {
  return {{"x-api-key", endpoint.apiKey}, {"anthropic-version", std::string(kAnthropicVersion)}};
}

AIHeaders openAIHeaders(const AIEndpoint& endpoint) { return {{"Authorization", "Bearer " + endpoint.apiKey}}; }

}  // namespace

std::expected<AIEndpoint, AIProviderError> resolveEndpoint(const AISettings& settings,
                                                          const AIEndpointOverrides& overrides) {
  AIEndpoint endpoint;
  endpoint.provider = overrides.provider.value_or(settings.provider());
  // A provider other than the saved one brings its own default model and
  // address, unless they are given too: the saved ones belong to another
  // kind and would send one format to the other's server.
  const bool savedProvider = endpoint.provider == settings.provider();
  endpoint.model = overrides.model           ? *overrides.model
                   : savedProvider           ? settings.model()
                                             : std::string(defaultModel(endpoint.provider));
  // The key first: without one nothing is sent, whatever the address.
  const std::optional<std::string> key =
      overrides.apiKey ? overrides.apiKey : settings.keychain().apiKey(endpoint.provider);
  if (!key || key->empty()) return std::unexpected(AIProviderError::missingAPIKey());
  endpoint.apiKey = *key;
  const std::optional<std::string> address =
      overrides.baseURL ? validatedBaseURL(*overrides.baseURL)
      : savedProvider   ? settings.resolvedBaseURL()
                        : validatedBaseURL(defaultBaseURL(endpoint.provider));
  if (!address) return std::unexpected(AIProviderError::invalidBaseURL());
  endpoint.baseURL = *address;
  return endpoint;
}

std::expected<AICompletionResponse, AIProviderError> AIProviderClient::complete(const AIEndpoint& endpoint,
                                                                                const AICompletionRequest& request,
                                                                                std::stop_token stop) {
  if (endpoint.provider == AIProviderKind::claude) {
    const auto bytes = AIHTTP::postJSON(wire::joinURL(endpoint.baseURL, "v1/messages"), anthropicHeaders(endpoint),
                                        wire::anthropicRequestBody(request, endpoint.model), std::move(stop));
    if (!bytes) return std::unexpected(bytes.error());
    return wire::readAnthropicReply(*bytes);
  }
  const auto bytes = AIHTTP::postJSON(wire::joinURL(endpoint.baseURL, "chat/completions"), openAIHeaders(endpoint),
                                      wire::openAIRequestBody(request, endpoint.model), std::move(stop));
  if (!bytes) return std::unexpected(bytes.error());
  return wire::readOpenAIReply(*bytes);
}

std::expected<std::vector<AIModelInfo>, AIProviderError> AIProviderClient::listModels(const AIEndpoint& endpoint,
                                                                                      std::stop_token stop) {
  if (endpoint.provider == AIProviderKind::claude) {
    const auto bytes =
        AIHTTP::getJSON(wire::joinURL(endpoint.baseURL, "v1/models"), anthropicHeaders(endpoint), std::move(stop));
    if (!bytes) return std::unexpected(bytes.error());
    return wire::readAnthropicModels(*bytes);
  }
  const auto bytes = AIHTTP::getJSON(wire::joinURL(endpoint.baseURL, "models"), openAIHeaders(endpoint), std::move(stop));
  if (!bytes) return std::unexpected(bytes.error());
  return wire::readOpenAIModels(*bytes);
}

std::expected<std::string, AIProviderError> AIProviderClient::testConnection(const AISettings& settings,
                                                                             std::stop_token stop) {
  const auto endpoint = resolveEndpoint(settings);
  if (!endpoint) return std::unexpected(endpoint.error());
  const AICompletionRequest ping{"Reply with exactly: ok", {AIUserItem{"ping"}}, {}};
  const auto reply = complete(*endpoint, ping, std::move(stop));
  if (!reply) return std::unexpected(reply.error());
  const std::string text = core::trimmed(reply->text.value_or(""));
  return text.empty() ? std::string("Connected.") : text;
}

int chatRank(std::string_view modelID) { return wire::modelChatRank(modelID); }

}  // namespace orvane::assistant
