#pragma once
// The assistant's conversation inside the program, one neutral shape for
// both wire formats: what the thread holds, what one model call asks for and
// what it answers, and the failures of a call. Plain values; any thread.

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace orvane::assistant {

enum class AIChatRole { system, user, assistant, tool };

// One call that the model asked for. The arguments stay JSON text until the
// tool executor parses them.
struct AIToolCall {
  std::string id;
  std::string name;
  std::string argumentsJSON;
  friend bool operator==(const AIToolCall&, const AIToolCall&) = default;
};

struct AIToolResult {
  std::string toolCallID;
  std::string content;
  bool isError = false;
  friend bool operator==(const AIToolResult&, const AIToolResult&) = default;
};

// One turn of the thread: the user's text, the model's reply, or the results
// of the calls it asked for.
struct AIUserItem {
  std::string text;
  friend bool operator==(const AIUserItem&, const AIUserItem&) = default;
};
struct AIAssistantItem {
  std::optional<std::string> text;
  std::vector<AIToolCall> toolCalls;
  friend bool operator==(const AIAssistantItem&, const AIAssistantItem&) = default;
};
struct AIToolResultsItem {
  std::vector<AIToolResult> results;
  friend bool operator==(const AIToolResultsItem&, const AIToolResultsItem&) = default;
};
using AIConversationItem = std::variant<AIUserItem, AIAssistantItem, AIToolResultsItem>;

// One tool offered to the model; the parameters are a JSON Schema object as
// text, parsed again at each request.
struct AIToolDefinition {
  std::string name;
  std::string description;
  std::string parametersJSON;
  friend bool operator==(const AIToolDefinition&, const AIToolDefinition&) = default;
};

struct AICompletionRequest {
  std::string system;
  std::vector<AIConversationItem> items;  // oldest first
  std::vector<AIToolDefinition> tools;
};

struct AICompletionResponse {
  std::optional<std::string> text;  // never empty: an empty text is absent
  std::vector<AIToolCall> toolCalls;
  std::optional<std::string> stopReason;
  friend bool operator==(const AICompletionResponse&, const AICompletionResponse&) = default;
};

struct AIModelInfo {
  std::string id;
  std::string displayName;
  friend bool operator==(const AIModelInfo&, const AIModelInfo&) = default;
};

// The failure of a provider call. transport and json carry the HTTP layer's
// or the JSON parser's own words, shown as they are.
struct AIProviderError {
  enum class Kind { httpStatus, decoding, missingAPIKey, invalidBaseURL, cancelled, emptyResponse, transport, json };
  Kind kind = Kind::emptyResponse;
  int status = 0;    // httpStatus
  std::string text;  // the body (httpStatus), the detail (decoding), the words (transport, json)

  static AIProviderError httpStatus(int status, std::string body) { return {Kind::httpStatus, status, std::move(body)}; }
  static AIProviderError decoding(std::string text) { return {Kind::decoding, 0, std::move(text)}; }
  static AIProviderError missingAPIKey() { return {Kind::missingAPIKey, 0, {}}; }
  static AIProviderError invalidBaseURL() { return {Kind::invalidBaseURL, 0, {}}; }
  static AIProviderError cancelled() { return {Kind::cancelled, 0, {}}; }
  static AIProviderError emptyResponse() { return {Kind::emptyResponse, 0, {}}; }
  static AIProviderError transport(std::string text) { return {Kind::transport, 0, std::move(text)}; }
  static AIProviderError json(std::string text) { return {Kind::json, 0, std::move(text)}; }

  // "API error (401): body", "Could not read the API response: text", "Add
  // an API key in AI Settings.", "The API base URL is invalid.",
  // "Cancelled.", "The model returned an empty response."; the text itself
  // for transport and json.
  std::string message() const;
  friend bool operator==(const AIProviderError&, const AIProviderError&) = default;
};

}  // namespace orvane::assistant
