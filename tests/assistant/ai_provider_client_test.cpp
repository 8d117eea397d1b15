#include "assistant/ai_provider_client.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <thread>

#include "core/settings_store.hpp"
#include "tests/assistant/scripted_model_server.hpp"

namespace orvane::assistant {
namespace {

using nlohmann::json;
using testing_support::RecordedRequest;
using testing_support::ScriptedModelServer;
using testing_support::ScriptedReply;

class TestKeyStore final : public KeyStore {
 public:
  std::optional<std::string> read(std::string_view service, std::string_view account) const override {
    const auto it = secrets_.find(std::string(service) + "/" + std::string(account));
    return it == secrets_.end() ? std::nullopt : std::optional(it->second);
  }
  void write(std::string_view service, std::string_view account, std::string_view secret) override {
    secrets_[std::string(service) + "/" + std::string(account)] = secret;
  }
  void remove(std::string_view service, std::string_view account) override {
    secrets_.erase(std::string(service) + "/" + std::string(account));
  }
  std::string storeDescription() const override { return "Test"; }

 private:
  std::map<std::string, std::string> secrets_;
};

std::string repeated(std::string_view piece, int count) {
  std::string out;
  for (int i = 0; i < count; ++i) out += piece;
  return out;
}

const AICompletionRequest kTitleRequest{
    "You edit projects.",
    {AIUserItem{"add a title"}},
    {{"add_text_layer", "Adds a text layer.", R"({"type":"object","properties":{"text":{"type":"string"}}})"}}};

struct ProviderClientTest : ::testing::Test {
  ScriptedModelServer server;
  AIEndpoint claude() const { return {AIProviderKind::claude, "claude-test", server.baseURL(), "sk-ant-1"}; }
  AIEndpoint openAI() const { return {AIProviderKind::openAI, "gpt-test", server.baseURL() + "/v1/", "sk-oai-2"}; }
  RecordedRequest onlyRequest() const {
    const auto requests = server.requests();
    EXPECT_EQ(requests.size(), 1u);
    return requests.empty() ? RecordedRequest{} : requests.front();
  }
};

TEST_F(ProviderClientTest, AnthropicRequestGoesToMessagesWithItsHeadersAndBody) {
  server.enqueueJSON({{"content", {{{"type", "text"}, {"text", " Added. "}}}}, {"stop_reason", "end_turn"}});
  const auto reply = AIProviderClient::complete(claude(), kTitleRequest);
  ASSERT_TRUE(reply) << reply.error().message();
  EXPECT_EQ(*reply, (AICompletionResponse{"Added.", {}, "end_turn"}));

  const RecordedRequest request = onlyRequest();
  EXPECT_EQ(request.method, "POST");
  EXPECT_EQ(request.path, "/v1/messages");
  EXPECT_EQ(request.header("x-api-key"), "sk-ant-1");
  EXPECT_EQ(request.header("anthropic-version"), "2023-06-01");
  EXPECT_EQ(request.header("Content-Type"), "application/json");
  EXPECT_FALSE(request.header("Authorization"));
  const json body = request.json();
  EXPECT_EQ(body["model"], "claude-test");
  EXPECT_EQ(body["max_tokens"], 4096);
  EXPECT_EQ(body["system"], "You edit projects.");
  EXPECT_EQ(body["messages"], json::parse(R"([{"role": "user", "content": "add a title"}])"));
  EXPECT_EQ(body["tools"], json::parse(R"([{"name": "add_text_layer", "description": "Adds a text layer.",
      "input_schema": {"type": "object", "properties": {"text": {"type": "string"}}}}])"));
  for (const char* absent : {"tool_choice", "temperature", "stream"}) EXPECT_FALSE(body.contains(absent)) << absent;
}

TEST_F(ProviderClientTest, OpenAIRequestGoesToChatCompletionsWithBearerAndToolChoice) {
  server.enqueueJSON(json::parse(R"({"choices": [{"finish_reason": "tool_calls", "message": {"content": null,
      "tool_calls": [{"id": "call_1", "type": "function",
                      "function": {"name": "add_text_layer", "arguments": "{\"text\":\"Hi\"}"}}]}}]})"));
  const auto reply = AIProviderClient::complete(openAI(), kTitleRequest);
  ASSERT_TRUE(reply) << reply.error().message();
  EXPECT_EQ(*reply, (AICompletionResponse{std::nullopt, {{"call_1", "add_text_layer", R"({"text":"Hi"})"}}, "tool_calls"}));

  const RecordedRequest request = onlyRequest();
  EXPECT_EQ(request.path, "/v1/chat/completions");
  EXPECT_EQ(request.header("Authorization"), "Bearer sk-oai-2");
  EXPECT_EQ(request.header("Content-Type"), "application/json");
  EXPECT_FALSE(request.header("x-api-key"));
  const json body = request.json();
  EXPECT_EQ(body["model"], "gpt-test");
  EXPECT_EQ(body["messages"], json::parse(R"([{"role": "system", "content": "You edit projects."},
                                               {"role": "user", "content": "add a title"}])"));
  EXPECT_EQ(body["tools"][0]["type"], "function");
  EXPECT_EQ(body["tools"][0]["function"]["name"], "add_text_layer");
  EXPECT_EQ(body["tools"][0]["function"]["parameters"]["type"], "object");
  EXPECT_EQ(body["tool_choice"], "auto");
  EXPECT_FALSE(body.contains("max_tokens"));
}

TEST_F(ProviderClientTest, ALineBreakInAKeyCannotAddHeaders) {
  server.enqueueJSON({{"choices", {{{"message", {{"content", "hi"}}}}}}});
  AIEndpoint endpoint = openAI();
  endpoint.apiKey = "sk\r\nX-Injected: 1";
  ASSERT_TRUE(AIProviderClient::complete(endpoint, kTitleRequest));
  const RecordedRequest request = onlyRequest();
  EXPECT_FALSE(request.header("X-Injected"));
  EXPECT_EQ(request.header("Authorization"), "Bearer skX-Injected: 1");
}

// A tool result can quote the JSON parser, which cuts a character in two
// ("last read: '{\xC3'"), and a project can hold a file name that is no
// UTF-8. Both stay in the thread, so refusing to send them would fail every
// later turn too.
TEST_F(ProviderClientTest, BytesThatAreNoUTF8TravelAsReplacementCharacters) {
  server.enqueueJSON({{"choices", {{{"message", {{"content", "ok"}}}}}}});
  server.enqueueJSON({{"content", json::array()}});
  const AICompletionRequest request{"file=clip\xE9.mov",
                                    {AIUserItem{"go"},
                                     AIAssistantItem{std::nullopt, {{"c1", "add_text_layer", "{\xC3}"}}},
                                     AIToolResultsItem{{{"c1", "last read: '{\xC3'", true}}}},
                                    {}};
  ASSERT_TRUE(AIProviderClient::complete(openAI(), request));
  ASSERT_TRUE(AIProviderClient::complete(claude(), request));
  const auto requests = server.requests();
  ASSERT_EQ(requests.size(), 2u);
  const json openAIBody = requests[0].json();
  EXPECT_EQ(openAIBody["messages"][0]["content"], "file=clip\uFFFD.mov");
  EXPECT_EQ(openAIBody["messages"][2]["tool_calls"][0]["function"]["arguments"], "{\uFFFD}");
  EXPECT_EQ(openAIBody["messages"][3]["content"], "last read: '{\uFFFD'");
  const json anthropicBody = requests[1].json();
  EXPECT_EQ(anthropicBody["system"], "file=clip\uFFFD.mov");
  EXPECT_EQ(anthropicBody["messages"][2]["content"][0]["content"], "last read: '{\uFFFD'");
}

TEST_F(ProviderClientTest, WithoutToolsNeitherToolsNorToolChoiceTravel) {
  server.enqueueJSON({{"content", json::array()}});
  server.enqueueJSON({{"choices", {{{"message", {{"content", "hi"}}}}}}});
  const AICompletionRequest plain{"", {AIUserItem{"hello"}}, {}};
  ASSERT_TRUE(AIProviderClient::complete(claude(), plain));
  ASSERT_TRUE(AIProviderClient::complete(openAI(), plain));
  const auto requests = server.requests();
  ASSERT_EQ(requests.size(), 2u);
  for (const auto& request : requests) {
    EXPECT_FALSE(request.json().contains("tools")) << request.path;
    EXPECT_FALSE(request.json().contains("tool_choice")) << request.path;
  }
  // An empty system text still travels, in each format's place for it.
  EXPECT_EQ(requests[0].json()["system"], "");
  EXPECT_EQ(requests[1].json()["messages"][0], json({{"role", "system"}, {"content", ""}}));
}

TEST_F(ProviderClientTest, AnEmptyReplyPassesInTheAnthropicFormatOnly) {
  server.enqueueJSON({{"content", {{{"type", "text"}, {"text", "  \n"}}}}});
  server.enqueueJSON({{"choices", {{{"message", {{"content", "  \n"}}}}}}});
  const auto anthropic = AIProviderClient::complete(claude(), kTitleRequest);
  ASSERT_TRUE(anthropic);
  EXPECT_EQ(*anthropic, AICompletionResponse{});
  const auto openAIReply = AIProviderClient::complete(openAI(), kTitleRequest);
  ASSERT_FALSE(openAIReply);
  EXPECT_EQ(openAIReply.error().message(), "The model returned an empty response.");
}

TEST_F(ProviderClientTest, ErrorStatusesShowTheBodyCutToFourHundredCharacters) {
  server.enqueue({401, repeated("x", 401), {}, "text/plain"});
  server.enqueue({429, repeated("é", 400), {}, "text/plain"});
  server.enqueue({500, "\xFF\xFE broken", {}, "text/plain"});
  EXPECT_EQ(AIProviderClient::complete(claude(), kTitleRequest).error().message(),
            "API error (401): " + repeated("x", 400) + "…");
  EXPECT_EQ(AIProviderClient::complete(openAI(), kTitleRequest).error(),
            AIProviderError::httpStatus(429, repeated("é", 400)));
  EXPECT_EQ(AIProviderClient::listModels(openAI()).error().message(), "API error (500): ");
}

TEST_F(ProviderClientTest, MalformedJSONFailsWithTheParsersWords) {
  server.enqueue({200, R"({"content": [)"});
  const auto reply = AIProviderClient::complete(claude(), kTitleRequest);
  ASSERT_FALSE(reply);
  EXPECT_EQ(reply.error().kind, AIProviderError::Kind::json);
  EXPECT_NE(reply.error().message().find("parse error"), std::string::npos) << reply.error().message();
}

TEST_F(ProviderClientTest, AStopRequestEndsARequestInFlight) {
  constexpr auto kDelay = std::chrono::seconds(5);
  server.enqueue({200, R"({"content": []})", kDelay});
  std::stop_source stop;
  std::jthread canceller([&] {
    while (server.requestCount() == 0) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    stop.request_stop();
  });
  const auto started = std::chrono::steady_clock::now();
  const auto reply = AIProviderClient::complete(claude(), kTitleRequest, stop.get_token());
  const auto elapsed = std::chrono::steady_clock::now() - started;
  ASSERT_FALSE(reply);
  EXPECT_EQ(reply.error(), AIProviderError::cancelled());
  EXPECT_LT(elapsed, kDelay);
}

TEST_F(ProviderClientTest, AStopRequestedBeforeTheCallSendsNothing) {
  std::stop_source stop;
  stop.request_stop();
  EXPECT_EQ(AIProviderClient::listModels(claude(), stop.get_token()).error(), AIProviderError::cancelled());
  EXPECT_EQ(server.requestCount(), 0u);
}

TEST_F(ProviderClientTest, AClosedPortIsATransportError) {
  AIEndpoint endpoint = claude();
  server.stop();
  const auto reply = AIProviderClient::complete(endpoint, kTitleRequest);
  ASSERT_FALSE(reply);
  EXPECT_EQ(reply.error().kind, AIProviderError::Kind::transport);
  EXPECT_NE(reply.error().message().find("connect"), std::string::npos) << reply.error().message();
}

TEST_F(ProviderClientTest, ModelListsOfBothFormats) {
  server.enqueueJSON(json::parse(R"({"data": [{"id": "claude-b", "display_name": " Claude B "}, {"id": "claude-a"}]})"));
  server.enqueueJSON(json::parse(
      R"({"object": "list", "data": [{"id": "text-embedding-3-small"}, {"id": "gpt-4o"}, {"id": "GPT-4O-mini"}]})"));
  const auto anthropic = AIProviderClient::listModels(claude());
  ASSERT_TRUE(anthropic) << anthropic.error().message();
  EXPECT_EQ(*anthropic, (std::vector<AIModelInfo>{{"claude-b", "Claude B"}, {"claude-a", "claude-a"}}));
  const auto openAIModels = AIProviderClient::listModels(openAI());
  ASSERT_TRUE(openAIModels) << openAIModels.error().message();
  EXPECT_EQ(*openAIModels, (std::vector<AIModelInfo>{{"GPT-4O-mini", "GPT-4O-mini"},
                                                     {"gpt-4o", "gpt-4o"},
                                                     {"text-embedding-3-small", "text-embedding-3-small"}}));

  const auto requests = server.requests();
  ASSERT_EQ(requests.size(), 2u);
  EXPECT_EQ(requests[0].method, "GET");
  EXPECT_EQ(requests[0].path, "/v1/models");
  EXPECT_EQ(requests[0].header("x-api-key"), "sk-ant-1");
  EXPECT_EQ(requests[0].header("anthropic-version"), "2023-06-01");
  EXPECT_EQ(requests[1].path, "/v1/models");
  EXPECT_EQ(requests[1].header("Authorization"), "Bearer sk-oai-2");
}

struct EndpointSettingsTest : ProviderClientTest {
  core::MemorySettingsStore store;
  TestKeyStore keys;
  AIKeychain keychain{keys};
  AISettings settings{store, keychain};
  void SetUp() override {
    settings.setProvider(AIProviderKind::custom);
    settings.setModel("local-model");
    settings.setBaseURL(server.baseURL() + "/v1");
  }
};

TEST_F(EndpointSettingsTest, AMissingKeySendsNothingAndHidesABadAddress) {
  EXPECT_EQ(resolveEndpoint(settings).error(), AIProviderError::missingAPIKey());
  EXPECT_EQ(resolveEndpoint(settings, {.apiKey = ""}).error(), AIProviderError::missingAPIKey());
  EXPECT_EQ(resolveEndpoint(settings, {.baseURL = "not a url"}).error(), AIProviderError::missingAPIKey());
  EXPECT_EQ(AIProviderClient::testConnection(settings).error().message(), "Add an API key in AI Settings.");
  EXPECT_EQ(server.requestCount(), 0u);

  EXPECT_EQ(resolveEndpoint(settings, {.baseURL = "not a url", .apiKey = "k"}).error(),
            AIProviderError::invalidBaseURL());
  settings.setBaseURL("ftp://example.com");
  EXPECT_EQ(resolveEndpoint(settings, {.apiKey = "k"}).error(), AIProviderError::invalidBaseURL());
}

TEST_F(EndpointSettingsTest, TheGivenKeyAndAddressWinOverTheSavedOnes) {
  keychain.setAPIKey("stored", AIProviderKind::custom);
  const auto saved = resolveEndpoint(settings);
  ASSERT_TRUE(saved);
  EXPECT_EQ(saved->provider, AIProviderKind::custom);
  EXPECT_EQ(saved->model, "local-model");
  EXPECT_EQ(saved->baseURL, server.baseURL() + "/v1");
  EXPECT_EQ(saved->apiKey, "stored");

  const auto given = resolveEndpoint(settings, {AIProviderKind::claude, "claude-x", " http://127.0.0.1:9 ", " given "});
  ASSERT_TRUE(given);
  EXPECT_EQ(given->provider, AIProviderKind::claude);
  EXPECT_EQ(given->model, "claude-x");
  EXPECT_EQ(given->baseURL, "http://127.0.0.1:9");
  EXPECT_EQ(given->apiKey, " given ");
}

// The saved model and address belong to the saved kind: another kind asked
// for alone takes its own defaults and its own stored key.
TEST_F(EndpointSettingsTest, AnotherProviderAloneBringsItsOwnModelAddressAndKey) {
  keychain.setAPIKey("stored-custom", AIProviderKind::custom);
  keychain.setAPIKey("stored-openai", AIProviderKind::openAI);
  const auto other = resolveEndpoint(settings, {.provider = AIProviderKind::openAI});
  ASSERT_TRUE(other);
  EXPECT_EQ(other->model, "gpt-4o");
  EXPECT_EQ(other->baseURL, "https://api.openai.com/v1");
  EXPECT_EQ(other->apiKey, "stored-openai");

  const auto same = resolveEndpoint(settings, {.provider = AIProviderKind::custom});
  ASSERT_TRUE(same);
  EXPECT_EQ(same->model, "local-model");
  EXPECT_EQ(same->baseURL, server.baseURL() + "/v1");
}

TEST_F(EndpointSettingsTest, TestConnectionPingsWithTheSavedSettings) {
  keychain.setAPIKey("stored", AIProviderKind::custom);
  server.enqueueJSON({{"choices", {{{"message", {{"content", "\n ok \n"}}}}}}});
  server.enqueueJSON(json::parse(R"({"choices": [{"message": {"tool_calls": [{"id": "a", "function": {"name": "f"}}]}}]})"));
  EXPECT_EQ(AIProviderClient::testConnection(settings), "ok");
  EXPECT_EQ(AIProviderClient::testConnection(settings), "Connected.");

  const auto requests = server.requests();
  ASSERT_EQ(requests.size(), 2u);
  EXPECT_EQ(requests[0].path, "/v1/chat/completions");
  EXPECT_EQ(requests[0].header("Authorization"), "Bearer stored");
  EXPECT_EQ(requests[0].json(), json::parse(R"({"model": "local-model", "messages": [
      {"role": "system", "content": "Reply with exactly: ok"}, {"role": "user", "content": "ping"}]})"));
}

}  // namespace
}  // namespace orvane::assistant
