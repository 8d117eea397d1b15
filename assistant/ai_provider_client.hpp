#pragma once
// The only way to the language model: one request and one complete JSON
// reply per call, in the Anthropic Messages format for claude and the OpenAI
// Chat Completions format for openAI and custom. The endpoint (kind, model,
// address, key) is resolved from the settings on the main thread; the calls
// themselves block and may run on any thread, and a stop request on the
// token ends a call in flight with AIProviderError::cancelled. Stateless:
// nothing survives a call, and nothing is retried.

#include <expected>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "assistant/ai_settings.hpp"
#include "assistant/ai_types.hpp"

namespace orvane::assistant {

// Everything one call needs, resolved before it starts.
struct AIEndpoint {
  AIProviderKind provider = AIProviderKind::claude;
  std::string model;
  std::string baseURL;
  std::string apiKey;
};

// What a caller may set instead of the saved settings; absent fields take
// the saved provider, model, resolved address and stored key.
struct AIEndpointOverrides {
  std::optional<AIProviderKind> provider;
  std::optional<std::string> model;
  std::optional<std::string> baseURL;
  std::optional<std::string> apiKey;
};

// The key (given, else stored for the kind): missing or empty fails with
// missingAPIKey; then the address: absent or invalid fails with
// invalidBaseURL. So a missing key hides a bad address.
std::expected<AIEndpoint, AIProviderError> resolveEndpoint(const AISettings& settings,
                                                          const AIEndpointOverrides& overrides = {});

struct AIProviderClient {
  static std::expected<AICompletionResponse, AIProviderError> complete(const AIEndpoint& endpoint,
                                                                       const AICompletionRequest& request,
                                                                       std::stop_token stop = {});
  static std::expected<std::vector<AIModelInfo>, AIProviderError> listModels(const AIEndpoint& endpoint,
                                                                             std::stop_token stop = {});
  // One "ping" with the saved settings: the reply trimmed, or "Connected."
  // when it is empty.
  static std::expected<std::string, AIProviderError> testConnection(const AISettings& settings,
                                                                    std::stop_token stop = {});
};

// OpenAI model lists sort by this rank, then by id.
int chatRank(std::string_view modelID);

}  // namespace orvane::assistant
