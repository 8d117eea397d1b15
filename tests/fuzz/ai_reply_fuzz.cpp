// libFuzzer target for the model reply readers of both wire formats and
// their model lists: any bytes read as a response or fail with an error,
// without crashing. What they accept keeps the readers' promises: no empty
// or untrimmed text, argument text of an Anthropic call that is JSON again,
// no model without an id, OpenAI models in rank order. A response read must
// travel back in the next request of either format.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "assistant/ai_wire_formats.hpp"

using namespace orvane::assistant;

namespace {

void require(bool condition) {
  if (!condition) __builtin_trap();
}

bool isBlank(char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r'; }

void checkResponse(const AICompletionResponse& response, bool argumentsAreJSON) {
  if (response.text) {
    require(!response.text->empty());
    require(!isBlank(response.text->front()) && !isBlank(response.text->back()));
  }
  for (const auto& call : response.toolCalls)
    if (argumentsAreJSON) require(nlohmann::json::accept(call.argumentsJSON));
  const AICompletionRequest next{"", {AIAssistantItem{response.text, response.toolCalls}}, {}};
  (void)wire::anthropicRequestBody(next, "m").dump();
  (void)wire::openAIRequestBody(next, "m").dump();
}

void checkModels(const std::vector<AIModelInfo>& models, bool ranked) {
  for (std::size_t i = 0; i < models.size(); ++i) {
    require(!models[i].id.empty() && !models[i].displayName.empty());
    if (ranked && i > 0) require(wire::modelChatRank(models[i - 1].id) <= wire::modelChatRank(models[i].id));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  if (const auto reply = wire::anthropicReply(bytes); const auto* response = std::get_if<0>(&reply))
    checkResponse(*response, true);
  if (const auto reply = wire::openAIReply(bytes); const auto* response = std::get_if<0>(&reply)) {
    require(response->text || !response->toolCalls.empty());
    checkResponse(*response, false);
  }
  if (const auto models = wire::anthropicModels(bytes); const auto* list = std::get_if<0>(&models))
    checkModels(*list, false);
  if (const auto models = wire::openAIModels(bytes); const auto* list = std::get_if<0>(&models))
    checkModels(*list, true);
  (void)wire::jsonObject(bytes).dump();
  (void)wire::errorBodyExcerpt(bytes);
  return 0;
}
