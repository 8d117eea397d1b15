#include "assistant/ai_settings.hpp"

#include <curl/curl.h>

#include <array>
#include <memory>

#include "assistant/key_stores.hpp"

namespace orvane::assistant {

namespace {

constexpr std::string_view kProviderKey = "ai.provider";
constexpr std::string_view kModelKey = "ai.model";
constexpr std::string_view kBaseURLKey = "ai.baseURL";
// The default of an earlier release; a stored copy of it is no choice the
// user made, so it heals to the current default on read.
constexpr std::string_view kRetiredDefaultModel = "claude-sonnet-4-20250514";

struct KindRow {
  std::string_view raw;
  std::string_view displayName;
  std::string_view defaultModel;
  std::string_view defaultBaseURL;
};

constexpr std::array<KindRow, 3> kRows{{
    {"claude", "Anthropic Claude", "claude-sonnet-5", "https://api.anthropic.com"},
    {"openAI", "OpenAI", "gpt-4o", "https://api.openai.com/v1"},
    {"custom", "Custom (OpenAI-compatible)", "gpt-4o", "http://localhost:11434/v1"},
}};

const KindRow& row(AIProviderKind kind) { return kRows[static_cast<std::size_t>(kind)]; }

// One code point decoded from the front of text; size 0 when the bytes are no
// well-formed UTF-8 (overlong forms, surrogates and values past U+10FFFF
// included).
struct CodePoint {
  char32_t value = 0;
  std::size_t size = 0;
};

CodePoint decodeFront(std::string_view text) {
  if (text.empty()) return {};
  const auto lead = static_cast<unsigned char>(text[0]);
  if (lead < 0x80) return {lead, 1};
  std::size_t size = 0;
  char32_t value = 0;
  char32_t minimum = 0;
  if ((lead & 0xE0) == 0xC0) {
    size = 2, value = lead & 0x1F, minimum = 0x80;
  } else if ((lead & 0xF0) == 0xE0) {
    size = 3, value = lead & 0x0F, minimum = 0x800;
  } else if ((lead & 0xF8) == 0xF0) {
    size = 4, value = lead & 0x07, minimum = 0x10000;
  } else {
    return {};
  }
  if (text.size() < size) return {};
  for (std::size_t i = 1; i < size; ++i) {
    const auto next = static_cast<unsigned char>(text[i]);
    if ((next & 0xC0) != 0x80) return {};
    value = (value << 6) | (next & 0x3F);
  }
  if (value < minimum || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) return {};
  return {value, size};
}

// Unicode white space and line breaks: what a key pasted from a web page or
// a mail may carry around it.
bool isWhitespaceOrNewline(char32_t c) {
  if ((c >= 0x09 && c <= 0x0D) || c == 0x20 || c == 0x85 || c == 0xA0 || c == 0x1680) return true;
  if (c >= 0x2000 && c <= 0x200A) return true;
  return c == 0x2028 || c == 0x2029 || c == 0x202F || c == 0x205F || c == 0x3000;
}

// The length of the last code point of text, or 0 when its tail is no UTF-8.
std::size_t lastCodePointSize(std::string_view text) {
  std::size_t start = text.size();
  while (start > 0 && text.size() - start < 4) {
    --start;
    if ((static_cast<unsigned char>(text[start]) & 0xC0) != 0x80) break;
  }
  const CodePoint last = decodeFront(text.substr(start));
  return last.size == text.size() - start ? last.size : 0;
}

struct CurlURLDeleter {
  void operator()(CURLU* handle) const { curl_url_cleanup(handle); }
};

std::optional<std::string> curlPart(CURLU* handle, CURLUPart part) {
  char* text = nullptr;
  if (curl_url_get(handle, part, &text, 0) != CURLUE_OK || text == nullptr) return std::nullopt;
  std::string result(text);
  curl_free(text);
  return result;
}

}  // namespace

namespace settings_text {

bool isValidUTF8(std::string_view text) {
  while (!text.empty()) {
    const CodePoint next = decodeFront(text);
    if (next.size == 0) return false;
    text.remove_prefix(next.size);
  }
  return true;
}

std::string_view trimWhitespaceAndNewlines(std::string_view text) {
  while (!text.empty()) {
    const CodePoint first = decodeFront(text);
    if (first.size == 0 || !isWhitespaceOrNewline(first.value)) break;
    text.remove_prefix(first.size);
  }
  while (!text.empty()) {
    const std::size_t size = lastCodePointSize(text);
    if (size == 0 || !isWhitespaceOrNewline(decodeFront(text.substr(text.size() - size)).value)) break;
    text.remove_suffix(size);
  }
  return text;
}

}  // namespace settings_text

using settings_text::isValidUTF8;
using settings_text::trimWhitespaceAndNewlines;

std::string_view rawValue(AIProviderKind kind) { return row(kind).raw; }

std::optional<AIProviderKind> aiProviderKindFromRaw(std::string_view raw) {
  for (const AIProviderKind kind : allAIProviderKinds) {
    if (row(kind).raw == raw) return kind;
  }
  return std::nullopt;
}

std::string_view displayName(AIProviderKind kind) { return row(kind).displayName; }
std::string_view defaultModel(AIProviderKind kind) { return row(kind).defaultModel; }
std::string_view defaultBaseURL(AIProviderKind kind) { return row(kind).defaultBaseURL; }

const std::vector<AIModelInfo>& suggestedModels(AIProviderKind kind) {
  static const std::vector<AIModelInfo> claude{
      {"claude-sonnet-5", "Claude Sonnet 5"},     {"claude-opus-5", "Claude Opus 5"},
      {"claude-haiku-4-5", "Claude Haiku 4.5"},   {"claude-sonnet-4-6", "Claude Sonnet 4.6"},
      {"claude-opus-4-6", "Claude Opus 4.6"},     {"claude-sonnet-4-5-20250929", "Claude Sonnet 4.5"},
  };
  static const std::vector<AIModelInfo> openAI{
      {"gpt-4o", "GPT-4o"},   {"gpt-4o-mini", "GPT-4o mini"}, {"gpt-4.1", "GPT-4.1"},
      {"gpt-4.1-mini", "GPT-4.1 mini"}, {"o4-mini", "o4-mini"},
  };
  static const std::vector<AIModelInfo> custom{{"gpt-4o", "gpt-4o"}, {"llama3.2", "llama3.2"}};
  switch (kind) {
    case AIProviderKind::claude: return claude;
    case AIProviderKind::openAI: return openAI;
    case AIProviderKind::custom: return custom;
  }
  return claude;
}

// --- AIKeychain ---

std::optional<std::string> AIKeychain::apiKey(AIProviderKind provider) const {
  std::optional<std::string> stored = store_.read(service, rawValue(provider));
  if (!stored || stored->empty() || !isValidUTF8(*stored)) return std::nullopt;
  return stored;
}

void AIKeychain::setAPIKey(std::string_view key, AIProviderKind provider) {
  const std::string_view trimmed = trimWhitespaceAndNewlines(key);
  store_.remove(service, rawValue(provider));
  // A key that is no UTF-8 text could never be read back; storing it would
  // only leave a secret behind that nothing uses.
  if (!trimmed.empty() && isValidUTF8(trimmed)) store_.write(service, rawValue(provider), trimmed);
}

void AIKeychain::deleteAPIKey(AIProviderKind provider) { store_.remove(service, rawValue(provider)); }

// --- AISettings ---

AIProviderKind AISettings::provider() const {
  const std::optional<std::string> raw = store_.stringValue(kProviderKey);
  if (!raw) return AIProviderKind::claude;
  return aiProviderKindFromRaw(*raw).value_or(AIProviderKind::claude);
}

void AISettings::setProvider(AIProviderKind provider) {
  store_.setValue(kProviderKey, std::string(rawValue(provider)));
  const std::string stored = store_.stringValue(kModelKey).value_or(std::string());
  const bool followsDefaults = stored.empty() || stored == defaultModel(AIProviderKind::claude) ||
                               stored == defaultModel(AIProviderKind::openAI) || stored == kRetiredDefaultModel;
  if (followsDefaults) store_.setValue(kModelKey, std::string(defaultModel(provider)));
}

std::string AISettings::model() const {
  std::string stored = store_.stringValue(kModelKey).value_or(std::string());
  if (stored.empty() || stored == kRetiredDefaultModel) return std::string(defaultModel(provider()));
  return stored;
}

void AISettings::setModel(std::string_view model) { store_.setValue(kModelKey, std::string(model)); }

std::string AISettings::baseURL() const {
  std::string stored = store_.stringValue(kBaseURLKey).value_or(std::string());
  if (stored.empty()) return std::string(defaultBaseURL(provider()));
  return stored;
}

void AISettings::setBaseURL(std::string_view url) { store_.setValue(kBaseURLKey, std::string(url)); }

std::optional<std::string> AISettings::resolvedBaseURL() const {
  const AIProviderKind kind = provider();
  if (kind == AIProviderKind::custom) return validatedBaseURL(baseURL());
  return validatedBaseURL(defaultBaseURL(kind));
}

bool AISettings::hasAPIKey() const { return keychain_.apiKey(provider()).has_value(); }

std::string AISettings::statusLabel() const {
  std::string label(displayName(provider()));
  label += " · ";
  label += model();
  return label;
}

// --- addresses ---

std::optional<std::string> validatedBaseURL(std::string_view text) {
  const std::string_view trimmed = trimWhitespaceAndNewlines(text);
  if (trimmed.empty()) return std::nullopt;
  // libcurl would take some of these with a flag or quietly encode them; an
  // address typed with a blank or a control character inside is a typo.
  for (const char c : trimmed) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte <= 0x20 || byte == 0x7f) return std::nullopt;
  }
  // libcurl reads "https:///v1" as the host "v1"; an address whose
  // authority is empty names no host, whatever the parser makes of it.
  const std::size_t schemeEnd = trimmed.find("://");
  if (schemeEnd == std::string_view::npos || schemeEnd + 3 >= trimmed.size() ||
      std::string_view("/?#").find(trimmed[schemeEnd + 3]) != std::string_view::npos) {
    return std::nullopt;
  }
  const std::unique_ptr<CURLU, CurlURLDeleter> handle(curl_url());
  if (!handle) return std::nullopt;
  const std::string owned(trimmed);
  if (curl_url_set(handle.get(), CURLUPART_URL, owned.c_str(), 0) != CURLUE_OK) return std::nullopt;
  const std::optional<std::string> scheme = curlPart(handle.get(), CURLUPART_SCHEME);
  if (!scheme || (*scheme != "http" && *scheme != "https")) return std::nullopt;
  const std::optional<std::string> host = curlPart(handle.get(), CURLUPART_HOST);
  if (!host || host->empty()) return std::nullopt;
  return owned;
}

}  // namespace orvane::assistant
