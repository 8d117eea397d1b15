#include "assistant/ai_wire_formats.hpp"

#include <algorithm>
#include <cctype>
#include <optional>
#include <utility>

#include "core/text_util.hpp"

namespace orvane::assistant::wire {

namespace {

using nlohmann::json;

template <class... Fs>
struct Overloaded : Fs... {
  using Fs::operator()...;
};
template <class... Fs>
Overloaded(Fs...) -> Overloaded<Fs...>;

// Length of the well-formed UTF-8 sequence starting at i (no overlongs, no
// surrogates, nothing past U+10FFFF); 0 when it is not one.
std::size_t utf8SequenceLength(std::string_view s, std::size_t i) {
  const auto at = [&](std::size_t k) { return static_cast<unsigned char>(s[k]); };
  const unsigned char c = at(i);
  if (c < 0x80) return 1;
  std::size_t n;
  unsigned char low = 0x80, high = 0xBF;  // bounds of the second byte
  if (c >= 0xC2 && c <= 0xDF) n = 2;
  else if (c == 0xE0) n = 3, low = 0xA0;
  else if (c == 0xED) n = 3, high = 0x9F;
  else if (c >= 0xE1 && c <= 0xEF) n = 3;
  else if (c == 0xF0) n = 4, low = 0x90;
  else if (c >= 0xF1 && c <= 0xF3) n = 4;
  else if (c == 0xF4) n = 4, high = 0x8F;
  else return 0;
  if (i + n > s.size()) return 0;
  if (at(i + 1) < low || at(i + 1) > high) return 0;
  for (std::size_t k = 2; k < n; ++k)
    if (at(i + k) < 0x80 || at(i + k) > 0xBF) return 0;
  return n;
}

// Deepest nesting of brackets outside strings, stopping once past limit.
int textDepth(std::string_view text, int limit) {
  int depth = 0, deepest = 0;
  bool inString = false, escaped = false;
  for (char c : text) {
    if (inString) {
      if (escaped) escaped = false;
      else if (c == '\\') escaped = true;
      else if (c == '"') inString = false;
    } else if (c == '"') {
      inString = true;
    } else if (c == '[' || c == '{') {
      deepest = std::max(deepest, ++depth);
      if (deepest > limit) break;
    } else if (c == ']' || c == '}') {
      --depth;
    }
  }
  return deepest;
}

WireResult<json> parseReply(std::string_view bytes) {
  try {
    return json::parse(bytes);
  } catch (const json::exception& e) {
    return AIProviderError::json(e.what());
  }
}

const json* member(const json& object, const char* key) {
  if (!object.is_object()) return nullptr;
  const auto it = object.find(key);
  return it == object.end() ? nullptr : &*it;
}

std::optional<std::string> stringMember(const json& object, const char* key) {
  const json* value = member(object, key);
  if (value == nullptr || !value->is_string()) return std::nullopt;
  return value->get<std::string>();
}

// A list whose elements are all objects, as the readers demand of the
// lists they walk.
const json* objectList(const json& object, const char* key) {
  const json* list = member(object, key);
  if (list == nullptr || !list->is_array()) return nullptr;
  for (const auto& element : *list)
    if (!element.is_object()) return nullptr;
  return list;
}

// A tool_use input written back as argument text. Only an object or a list
// is argument text; anything else, or nesting too deep to write again safely,
// reads as "{}".
std::string argumentsText(const json* input) {
  if (input == nullptr) return "{}";
  if (!input->is_structured() || !withinDepth(*input, kMaxJSONDepth)) return "{}";
  try {
    return input->dump();
  } catch (const json::exception&) {
    return "{}";
  }
}

std::optional<std::string> nonEmpty(std::string text) {
  if (text.empty()) return std::nullopt;
  return text;
}

}  // namespace

bool withinDepth(const json& value, int limit) {
  std::vector<std::pair<const json*, int>> pending{{&value, 1}};
  while (!pending.empty()) {
    const auto [node, depth] = pending.back();
    pending.pop_back();
    if (!node->is_structured()) continue;
    if (depth > limit) return false;
    for (const auto& child : *node) pending.emplace_back(&child, depth + 1);
  }
  return true;
}

json jsonObject(std::string_view text) {
  if (textDepth(text, kMaxJSONDepth) > kMaxJSONDepth) return json::object();
  json value = json::parse(text, nullptr, false);
  if (value.is_discarded()) return json::object();
  return value;
}

std::string joinURL(std::string_view base, std::string_view path) {
  while (!base.empty() && base.back() == '/') base.remove_suffix(1);
  while (!path.empty() && path.front() == '/') path.remove_prefix(1);
  return std::string(base) + "/" + std::string(path);
}

std::string errorBodyExcerpt(std::string_view body) {
  constexpr std::size_t kLimit = 400;
  std::size_t characters = 0, cut = std::string_view::npos;
  for (std::size_t i = 0; i < body.size();) {
    const std::size_t length = utf8SequenceLength(body, i);
    if (length == 0) return {};
    if (characters == kLimit) cut = i;
    ++characters;
    i += length;
  }
  if (cut == std::string_view::npos) return std::string(body);
  return std::string(body.substr(0, cut)) + "…";
}

json anthropicRequestBody(const AICompletionRequest& request, std::string_view model) {
  json messages = json::array();
  for (const auto& item : request.items) {
    std::visit(Overloaded{
                   [&](const AIUserItem& user) { messages.push_back({{"role", "user"}, {"content", user.text}}); },
                   [&](const AIAssistantItem& assistant) {
                     json blocks = json::array();
                     if (assistant.text && !assistant.text->empty())
                       blocks.push_back({{"type", "text"}, {"text", *assistant.text}});
                     for (const auto& call : assistant.toolCalls)
                       blocks.push_back({{"type", "tool_use"},
                                         {"id", call.id},
                                         {"name", call.name},
                                         {"input", jsonObject(call.argumentsJSON)}});
                     messages.push_back({{"role", "assistant"}, {"content", std::move(blocks)}});
                   },
                   [&](const AIToolResultsItem& results) {
                     json blocks = json::array();
                     for (const auto& result : results.results)
                       blocks.push_back({{"type", "tool_result"},
                                         {"tool_use_id", result.toolCallID},
                                         {"content", result.content},
                                         {"is_error", result.isError}});
                     messages.push_back({{"role", "user"}, {"content", std::move(blocks)}});
                   },
               },
               item);
  }
  json body = {{"model", model}, {"max_tokens", 4096}, {"system", request.system}, {"messages", std::move(messages)}};
  if (!request.tools.empty()) {
    json tools = json::array();
    for (const auto& tool : request.tools)
      tools.push_back(
          {{"name", tool.name}, {"description", tool.description}, {"input_schema", jsonObject(tool.parametersJSON)}});
    body["tools"] = std::move(tools);
  }
  return body;
}

json openAIRequestBody(const AICompletionRequest& request, std::string_view model) {
  json messages = json::array({{{"role", "system"}, {"content", request.system}}});
  for (const auto& item : request.items) {
    std::visit(Overloaded{
                   [&](const AIUserItem& user) { messages.push_back({{"role", "user"}, {"content", user.text}}); },
                   [&](const AIAssistantItem& assistant) {
                     json message = {{"role", "assistant"}};
                     if (assistant.text) message["content"] = *assistant.text;
                     if (!assistant.toolCalls.empty()) {
                       json calls = json::array();
                       for (const auto& call : assistant.toolCalls)
                         calls.push_back({{"id", call.id},
                                          {"type", "function"},
                                          {"function", {{"name", call.name}, {"arguments", call.argumentsJSON}}}});
                       message["tool_calls"] = std::move(calls);
                     }
                     messages.push_back(std::move(message));
                   },
                   [&](const AIToolResultsItem& results) {
                     // The error flag has no place in this format; the model
                     // reads the failure from the text.
                     for (const auto& result : results.results)
                       messages.push_back(
                           {{"role", "tool"}, {"tool_call_id", result.toolCallID}, {"content", result.content}});
                   },
               },
               item);
  }
  json body = {{"model", model}, {"messages", std::move(messages)}};
  if (!request.tools.empty()) {
    json tools = json::array();
    for (const auto& tool : request.tools)
      tools.push_back({{"type", "function"},
                       {"function",
                        {{"name", tool.name},
                         {"description", tool.description},
                         {"parameters", jsonObject(tool.parametersJSON)}}}});
    body["tools"] = std::move(tools);
    body["tool_choice"] = "auto";
  }
  return body;
}

WireResult<AICompletionResponse> anthropicReply(std::string_view bytes) {
  auto reply = parseReply(bytes);
  if (auto* failure = std::get_if<AIProviderError>(&reply)) return std::move(*failure);
  const json& parsed = std::get<json>(reply);
  const json* content = objectList(parsed, "content");
  if (content == nullptr) return AIProviderError::decoding("Claude content missing");

  AICompletionResponse response;
  std::string text;
  bool firstPart = true;
  for (const auto& block : *content) {
    const auto type = stringMember(block, "type");
    if (type == "text") {
      if (const auto part = stringMember(block, "text")) {
        if (!firstPart) text += '\n';
        text += *part;
        firstPart = false;
      }
    } else if (type == "tool_use") {
      auto id = stringMember(block, "id");
      auto name = stringMember(block, "name");
      if (!id || !name) continue;
      response.toolCalls.push_back({std::move(*id), std::move(*name), argumentsText(member(block, "input"))});
    }
  }
  response.text = nonEmpty(core::trimmed(text));
  response.stopReason = stringMember(parsed, "stop_reason");
  return response;
}

WireResult<AICompletionResponse> openAIReply(std::string_view bytes) {
  auto reply = parseReply(bytes);
  if (auto* failure = std::get_if<AIProviderError>(&reply)) return std::move(*failure);
  const json& parsed = std::get<json>(reply);
  const json* choices = member(parsed, "choices");
  const json* choice = choices != nullptr && choices->is_array() && !choices->empty() ? &(*choices)[0] : nullptr;
  const json* message = choice != nullptr ? member(*choice, "message") : nullptr;
  if (message == nullptr || !message->is_object())
    return AIProviderError::decoding("OpenAI choices missing");

  AICompletionResponse response;
  if (const auto content = stringMember(*message, "content")) response.text = core::trimmed(*content);
  if (const json* calls = objectList(*message, "tool_calls")) {
    for (const auto& call : *calls) {
      auto id = stringMember(call, "id");
      const json* function = member(call, "function");
      if (!id || function == nullptr || !function->is_object()) continue;
      auto name = stringMember(*function, "name");
      if (!name) continue;
      response.toolCalls.push_back(
          {std::move(*id), std::move(*name), stringMember(*function, "arguments").value_or("{}")});
    }
  }
  if ((!response.text || response.text->empty()) && response.toolCalls.empty())
    return AIProviderError::emptyResponse();
  if (response.text && response.text->empty()) response.text.reset();
  response.stopReason = stringMember(*choice, "finish_reason");
  return response;
}

namespace {

// Each element of the reply's "data" list with a non-empty string id, in
// the server's order; the display name from displayNameKey when that is a
// non-blank string, else the id.
WireResult<std::vector<AIModelInfo>> modelList(std::string_view bytes, const char* missingText,
                                               const char* displayNameKey) {
  auto reply = parseReply(bytes);
  if (auto* failure = std::get_if<AIProviderError>(&reply)) return std::move(*failure);
  const json* data = objectList(std::get<json>(reply), "data");
  if (data == nullptr) return AIProviderError::decoding(missingText);
  std::vector<AIModelInfo> models;
  for (const auto& element : *data) {
    auto id = stringMember(element, "id");
    if (!id || id->empty()) continue;
    std::string name = displayNameKey ? core::trimmed(stringMember(element, displayNameKey).value_or("")) : "";
    models.push_back({*id, name.empty() ? *id : std::move(name)});
  }
  return models;
}

}  // namespace

WireResult<std::vector<AIModelInfo>> anthropicModels(std::string_view bytes) {
  return modelList(bytes, "Claude models list missing", "display_name");
}

WireResult<std::vector<AIModelInfo>> openAIModels(std::string_view bytes) {
  auto models = modelList(bytes, "OpenAI models list missing", nullptr);
  if (auto* list = std::get_if<std::vector<AIModelInfo>>(&models)) {
    std::stable_sort(list->begin(), list->end(), [](const AIModelInfo& a, const AIModelInfo& b) {
      const int rankA = modelChatRank(a.id), rankB = modelChatRank(b.id);
      return rankA != rankB ? rankA < rankB : a.id < b.id;
    });
  }
  return models;
}

int modelChatRank(std::string_view modelID) {
  std::string id(modelID);
  std::transform(id.begin(), id.end(), id.begin(), [](unsigned char c) { return std::tolower(c); });
  const auto startsWith = [&](std::string_view prefix) { return id.starts_with(prefix); };
  const auto contains = [&](std::string_view part) { return id.find(part) != std::string::npos; };
  if (startsWith("gpt-4o")) return 0;
  if (startsWith("gpt-4.1")) return 1;
  if (startsWith("gpt-4")) return 2;
  if (startsWith("o4") || startsWith("o3")) return 3;
  if (startsWith("gpt-3.5")) return 4;
  if (contains("embed") || contains("tts") || contains("whisper")) return 100;
  return 50;
}

}  // namespace orvane::assistant::wire
