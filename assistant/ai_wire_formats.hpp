#pragma once
// The two wire formats of the provider client as pure functions: the JSON
// bodies of the Anthropic Messages and OpenAI Chat Completions requests, the
// readers of their replies and model lists, and the small rules the HTTP
// layer shares (URL joining, the shortened error body). No I/O; any thread.

#include <string>
#include <string_view>
#include <variant>
#include <vector>
#include <version>
#ifdef __cpp_lib_expected
#include <expected>
#endif

#include <nlohmann/json.hpp>

#include "assistant/ai_types.hpp"

namespace orvane::assistant::wire {

// The text parsed as JSON; an empty object on any failure, so a broken
// stored schema or argument text travels as {} and never stops a request.
// Text nested deeper than kMaxJSONDepth counts as a failure, since writing
// it again would recurse that deep.
nlohmann::json jsonObject(std::string_view text);
inline constexpr int kMaxJSONDepth = 256;
// The value has no object or list nested deeper than limit (the value
// itself counts as level 1). Walks without recursion.
bool withinDepth(const nlohmann::json& value, int limit);

// base and path joined with exactly one "/" between them.
std::string joinURL(std::string_view base, std::string_view path);

// A non-2xx body as the error shows it: the bytes as UTF-8 (empty when they
// are not), cut to 400 characters (code points) with "…" after.
std::string errorBodyExcerpt(std::string_view body);

nlohmann::json anthropicRequestBody(const AICompletionRequest& request, std::string_view model);
nlohmann::json openAIRequestBody(const AICompletionRequest& request, std::string_view model);

// What a reader gives: the value, or the failure. The readers say it with
// a variant because the clang build that fuzzes them has no std::expected;
// the program reads them through the std::expected forms below.
template <class T>
using WireResult = std::variant<T, AIProviderError>;

// A reply that is no JSON fails with AIProviderError::json and the parser's
// words; a JSON reply of the wrong shape with decoding. An empty Anthropic
// reply is a response with nothing in it; an empty OpenAI reply fails with
// emptyResponse.
WireResult<AICompletionResponse> anthropicReply(std::string_view bytes);
WireResult<AICompletionResponse> openAIReply(std::string_view bytes);

// Anthropic: the server's order. OpenAI: by modelChatRank, then by id in
// byte order, stable.
WireResult<std::vector<AIModelInfo>> anthropicModels(std::string_view bytes);
WireResult<std::vector<AIModelInfo>> openAIModels(std::string_view bytes);

#ifdef __cpp_lib_expected
template <class T>
std::expected<T, AIProviderError> asExpected(WireResult<T>&& result) {
  if (auto* failure = std::get_if<AIProviderError>(&result)) return std::unexpected(std::move(*failure));
  return std::move(std::get<T>(result));
}
inline std::expected<AICompletionResponse, AIProviderError> readAnthropicReply(std::string_view bytes) {
  return asExpected(anthropicReply(bytes));
}
inline std::expected<AICompletionResponse, AIProviderError> readOpenAIReply(std::string_view bytes) {
  return asExpected(openAIReply(bytes));
}
inline std::expected<std::vector<AIModelInfo>, AIProviderError> readAnthropicModels(std::string_view bytes) {
  return asExpected(anthropicModels(bytes));
}
inline std::expected<std::vector<AIModelInfo>, AIProviderError> readOpenAIModels(std::string_view bytes) {
  return asExpected(openAIModels(bytes));
}
#endif

// How fit a model id looks for chat, lower first (the rule of chatRank).
int modelChatRank(std::string_view modelID);

}  // namespace orvane::assistant::wire
