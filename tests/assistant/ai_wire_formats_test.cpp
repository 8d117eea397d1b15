#include "assistant/ai_wire_formats.hpp"

#include <gtest/gtest.h>

#include "assistant/ai_provider_client.hpp"

namespace orvane::assistant {
namespace {

using nlohmann::json;

std::string repeated(std::string_view piece, int count) {
  std::string out;
  for (int i = 0; i < count; ++i) out += piece;
  return out;
}

// A thread with every kind of item: the user, an answer with text and two
// calls (one with broken argument text), an answer with neither, the results.
AICompletionRequest fullRequest() {
  AICompletionRequest request;
  request.system = "You edit projects.";
  request.items = {
      AIUserItem{"add a title"},
      AIAssistantItem{"Adding it.", {{"c1", "add_text_layer", R"({"text":"Hi","at":{"x":1}})"}, {"c2", "noop", "{broken"}}},
      AIToolResultsItem{{{"c1", "Added layer.", false}, {"c2", "Unknown tool.", true}}},
      AIAssistantItem{std::string(), {}},
      AIAssistantItem{std::nullopt, {}},
  };
  request.tools = {{"add_text_layer", "Adds a text layer.", R"({"type":"object","properties":{"text":{"type":"string"}}})"},
                   {"noop", "Does nothing.", "not json"}};
  return request;
}

TEST(AIWireRequestTest, AnthropicBodyCarriesEveryItemInItsBlockForm) {
  const json body = wire::anthropicRequestBody(fullRequest(), "claude-x");
  const json expected = json::parse(R"({
    "model": "claude-x", "max_tokens": 4096, "system": "You edit projects.",
    "messages": [
      {"role": "user", "content": "add a title"},
      {"role": "assistant", "content": [
        {"type": "text", "text": "Adding it."},
        {"type": "tool_use", "id": "c1", "name": "add_text_layer", "input": {"text": "Hi", "at": {"x": 1}}},
        {"type": "tool_use", "id": "c2", "name": "noop", "input": {}}]},
      {"role": "user", "content": [
        {"type": "tool_result", "tool_use_id": "c1", "content": "Added layer.", "is_error": false},
        {"type": "tool_result", "tool_use_id": "c2", "content": "Unknown tool.", "is_error": true}]},
      {"role": "assistant", "content": []},
      {"role": "assistant", "content": []}],
    "tools": [
      {"name": "add_text_layer", "description": "Adds a text layer.",
       "input_schema": {"type": "object", "properties": {"text": {"type": "string"}}}},
      {"name": "noop", "description": "Does nothing.", "input_schema": {}}]
  })");
  EXPECT_EQ(body, expected) << body.dump(2);
}

TEST(AIWireRequestTest, OpenAIBodyPutsTheSystemFirstAndOneToolMessagePerResult) {
  const json body = wire::openAIRequestBody(fullRequest(), "gpt-x");
  const json expected = json::parse(R"({
    "model": "gpt-x",
    "messages": [
      {"role": "system", "content": "You edit projects."},
      {"role": "user", "content": "add a title"},
      {"role": "assistant", "content": "Adding it.", "tool_calls": [
        {"id": "c1", "type": "function",
         "function": {"name": "add_text_layer", "arguments": "{\"text\":\"Hi\",\"at\":{\"x\":1}}"}},
        {"id": "c2", "type": "function", "function": {"name": "noop", "arguments": "{broken"}}]},
      {"role": "tool", "tool_call_id": "c1", "content": "Added layer."},
      {"role": "tool", "tool_call_id": "c2", "content": "Unknown tool."},
      {"role": "assistant", "content": ""},
      {"role": "assistant"}],
    "tools": [
      {"type": "function", "function": {"name": "add_text_layer", "description": "Adds a text layer.",
        "parameters": {"type": "object", "properties": {"text": {"type": "string"}}}}},
      {"type": "function", "function": {"name": "noop", "description": "Does nothing.", "parameters": {}}}],
    "tool_choice": "auto"
  })");
  EXPECT_EQ(body, expected) << body.dump(2);
}

TEST(AIWireAnthropicReplyTest, JoinsTextPartsAndReadsToolUses) {
  const auto reply = wire::readAnthropicReply(R"({
    "content": [
      {"type": "text", "text": "  First."},
      {"type": "thinking", "thinking": "hidden"},
      {"type": "tool_use", "id": "t1", "name": "set_opacity"},
      {"type": "text", "text": "Second.\n\n"},
      {"type": "tool_use", "id": "t2", "name": "move", "input": {"to": {"x": 1.5, "list": [1, null]}}},
      {"type": "tool_use", "id": 7, "name": "skipped"},
      {"type": "tool_use", "id": "t3"},
      {"type": "text"}],
    "stop_reason": "tool_use"})");
  ASSERT_TRUE(reply) << reply.error().message();
  EXPECT_EQ(reply->text, "First.\nSecond.");
  ASSERT_EQ(reply->toolCalls.size(), 2u);
  EXPECT_EQ(reply->toolCalls[0], (AIToolCall{"t1", "set_opacity", "{}"}));
  EXPECT_EQ(reply->toolCalls[1].id, "t2");
  EXPECT_EQ(json::parse(reply->toolCalls[1].argumentsJSON), json::parse(R"({"to": {"x": 1.5, "list": [1, null]}})"));
  EXPECT_EQ(reply->stopReason, "tool_use");
}

TEST(AIWireAnthropicReplyTest, AnEmptyReplyIsAcceptedWithNothingInIt) {
  const auto blank = wire::readAnthropicReply(R"({"content": [{"type": "text", "text": " \n\t "}], "stop_reason": 3})");
  ASSERT_TRUE(blank);
  EXPECT_EQ(*blank, AICompletionResponse{});
  const auto none = wire::readAnthropicReply(R"({"content": []})");
  ASSERT_TRUE(none);
  EXPECT_EQ(*none, AICompletionResponse{});
}

TEST(AIWireAnthropicReplyTest, WrongShapesAndBrokenJSONFail) {
  for (const char* bytes : {R"({})", R"([])", R"({"content": "text"})", R"({"content": [{"type": "text"}, 3]})"}) {
    const auto reply = wire::readAnthropicReply(bytes);
    ASSERT_FALSE(reply) << bytes;
    EXPECT_EQ(reply.error().message(), "Could not read the API response: Claude content missing") << bytes;
  }
  for (const char* bytes : {"", "{\"content\": [", "<html>502</html>"}) {
    const auto reply = wire::readAnthropicReply(bytes);
    ASSERT_FALSE(reply) << bytes;
    EXPECT_EQ(reply.error().kind, AIProviderError::Kind::json);
    EXPECT_NE(reply.error().message().find("parse error"), std::string::npos) << reply.error().message();
  }
}

TEST(AIWireOpenAIReplyTest, ContentNullWithToolCallsGivesTheCallsAndNoText) {
  const auto reply = wire::readOpenAIReply(R"({"choices": [{"finish_reason": "tool_calls", "message": {
    "content": null, "tool_calls": [
      {"id": "a", "type": "function", "function": {"name": "add", "arguments": "{\"x\":1}"}},
      {"id": "b", "function": {"name": "bare"}},
      {"id": "c", "function": "not an object"},
      {"function": {"name": "no id"}},
      {"id": "d", "function": {"arguments": "{}"}}]}}]})");
  ASSERT_TRUE(reply) << reply.error().message();
  EXPECT_FALSE(reply->text);
  EXPECT_EQ(reply->toolCalls, (std::vector<AIToolCall>{{"a", "add", "{\"x\":1}"}, {"b", "bare", "{}"}}));
  EXPECT_EQ(reply->stopReason, "tool_calls");
}

TEST(AIWireOpenAIReplyTest, ReadsTrimmedTextOfTheFirstChoiceOnly) {
  const auto reply = wire::readOpenAIReply(
      R"({"choices": [{"message": {"content": "\n Done. \n"}, "finish_reason": "stop"}, {"message": {"content": "other"}}]})");
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->text, "Done.");
  EXPECT_TRUE(reply->toolCalls.empty());
  EXPECT_EQ(reply->stopReason, "stop");
  // A tool_calls value that is no list of objects counts as none.
  const auto mixed = wire::readOpenAIReply(
      R"({"choices": [{"message": {"content": "Hi", "tool_calls": [{"id": "a", "function": {"name": "f"}}, 1]}}]})");
  ASSERT_TRUE(mixed);
  EXPECT_TRUE(mixed->toolCalls.empty());
}

TEST(AIWireOpenAIReplyTest, AnEmptyReplyFailsUnlikeTheAnthropicOne) {
  for (const char* bytes : {R"({"choices": [{"message": {"content": "  \n "}}]})",
                            R"({"choices": [{"message": {"content": null, "tool_calls": []}}]})",
                            R"({"choices": [{"message": {}}]})"}) {
    const auto reply = wire::readOpenAIReply(bytes);
    ASSERT_FALSE(reply) << bytes;
    EXPECT_EQ(reply.error().message(), "The model returned an empty response.");
  }
}

TEST(AIWireOpenAIReplyTest, MissingChoicesFail) {
  for (const char* bytes : {R"({})", R"({"choices": []})", R"({"choices": [3]})", R"({"choices": [{"message": "x"}]})",
                            R"({"choices": {"message": {}}})", R"("text")"}) {
    const auto reply = wire::readOpenAIReply(bytes);
    ASSERT_FALSE(reply) << bytes;
    EXPECT_EQ(reply.error().message(), "Could not read the API response: OpenAI choices missing") << bytes;
  }
  EXPECT_EQ(wire::readOpenAIReply("{oops").error().kind, AIProviderError::Kind::json);
}

TEST(AIWireModelListTest, AnthropicKeepsTheServersOrderWithTrimmedDisplayNames) {
  const auto models = wire::readAnthropicModels(R"({"data": [
    {"id": "claude-b", "display_name": "  Claude B \n"},
    {"id": "claude-a", "display_name": "   "},
    {"id": "", "display_name": "dropped"},
    {"display_name": "no id"},
    {"id": "claude-c", "display_name": 5}]})");
  ASSERT_TRUE(models);
  EXPECT_EQ(*models, (std::vector<AIModelInfo>{{"claude-b", "Claude B"}, {"claude-a", "claude-a"}, {"claude-c", "claude-c"}}));
  EXPECT_EQ(wire::readAnthropicModels(R"({"data": [1]})").error().message(),
            "Could not read the API response: Claude models list missing");
}

TEST(AIWireModelListTest, OpenAISortsByChatRankThenIdAsGiven) {
  const auto models = wire::readOpenAIModels(R"({"data": [
    {"id": "text-embedding-3-small"}, {"id": "whisper-1"}, {"id": "dall-e-3"}, {"id": "gpt-3.5-turbo"},
    {"id": "o3-mini"}, {"id": "gpt-4-turbo"}, {"id": "gpt-4.1"}, {"id": "gpt-4o-mini"}, {"id": "gpt-4o"},
    {"id": "GPT-4O-mini"}, {"id": "o4-mini"}, {"id": ""}]})");
  ASSERT_TRUE(models);
  std::vector<std::string> ids;
  for (const auto& model : *models) {
    ids.push_back(model.id);
    EXPECT_EQ(model.displayName, model.id);
  }
  EXPECT_EQ(ids, (std::vector<std::string>{"GPT-4O-mini", "gpt-4o", "gpt-4o-mini", "gpt-4.1", "gpt-4-turbo", "o3-mini",
                                           "o4-mini", "gpt-3.5-turbo", "dall-e-3", "text-embedding-3-small",
                                           "whisper-1"}));
  EXPECT_EQ(wire::readOpenAIModels(R"({"object": "list"})").error().message(),
            "Could not read the API response: OpenAI models list missing");
}

TEST(AIWireModelListTest, ChatRankTakesTheFirstMatchingRuleOnTheLowerCasedId) {
  EXPECT_EQ(chatRank("GPT-4O-mini"), 0);
  EXPECT_EQ(chatRank("gpt-4.1-nano"), 1);
  EXPECT_EQ(chatRank("gpt-4"), 2);
  EXPECT_EQ(chatRank("O3"), 3);
  EXPECT_EQ(chatRank("gpt-3.5-turbo-instruct"), 4);
  EXPECT_EQ(chatRank("gpt-4o-mini-tts"), 0);  // the prefix rule comes first
  EXPECT_EQ(chatRank("tts-1-hd"), 100);
  EXPECT_EQ(chatRank("nomic-EMBED-text"), 100);
  EXPECT_EQ(chatRank("llama3.2"), 50);
  EXPECT_EQ(chatRank(""), 50);
}

TEST(AIWireErrorBodyTest, KeepsFourHundredCharactersCountingCodePoints) {
  EXPECT_EQ(wire::errorBodyExcerpt(repeated("x", 401)), repeated("x", 400) + "…");
  EXPECT_EQ(wire::errorBodyExcerpt(repeated("x", 400)), repeated("x", 400));
  EXPECT_EQ(wire::errorBodyExcerpt(repeated("é", 400)), repeated("é", 400));
  EXPECT_EQ(wire::errorBodyExcerpt(repeated("é", 401)), repeated("é", 400) + "…");
  EXPECT_EQ(wire::errorBodyExcerpt("a" + repeated("😀", 400)), "a" + repeated("😀", 399) + "…");
  EXPECT_EQ(wire::errorBodyExcerpt(""), "");
  // Not UTF-8: a lone continuation byte, a surrogate, an overlong slash.
  EXPECT_EQ(wire::errorBodyExcerpt("bad \x80 byte"), "");
  EXPECT_EQ(wire::errorBodyExcerpt("\xED\xA0\x80"), "");
  EXPECT_EQ(wire::errorBodyExcerpt("\xC0\xAF"), "");
  EXPECT_EQ(wire::errorBodyExcerpt(repeated("x", 500) + "\xFF"), "");
}

TEST(AIWireHelpersTest, JSONObjectNeverFails) {
  EXPECT_EQ(wire::jsonObject(R"({"a": [1, 2]})"), json::parse(R"({"a": [1, 2]})"));
  EXPECT_EQ(wire::jsonObject("[true]"), json::parse("[true]"));
  EXPECT_EQ(wire::jsonObject(""), json::object());
  EXPECT_EQ(wire::jsonObject("{\"a\": "), json::object());
  EXPECT_EQ(wire::jsonObject("\"\xFF\""), json::object());
  EXPECT_EQ(wire::jsonObject(repeated("[", 100000) + repeated("]", 100000)), json::object());
  EXPECT_EQ(wire::jsonObject(R"({"s": "[[[[{{{{"})"), json::parse(R"({"s": "[[[[{{{{"})"));
}

TEST(AIWireHelpersTest, JoinURLPutsExactlyOneSlashBetween) {
  EXPECT_EQ(wire::joinURL("https://api.anthropic.com", "v1/messages"), "https://api.anthropic.com/v1/messages");
  EXPECT_EQ(wire::joinURL("https://api.openai.com/v1/", "chat/completions"),
            "https://api.openai.com/v1/chat/completions");
  EXPECT_EQ(wire::joinURL("http://localhost:11434/v1//", "/models"), "http://localhost:11434/v1/models");
}

}  // namespace
}  // namespace orvane::assistant
