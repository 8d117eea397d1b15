// Reading runs of text and weight out of the simple HTML that desktop
// clipboards carry for rich text (browsers, office programs, Qt's own
// text widgets). Not a general HTML parser: tags nest or are closed by name,
// and anything unknown is read as an inline element.

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Commands/text_paste.hpp"

namespace orvane::commands {
namespace {

using Run = TextPasteboard::Run;

constexpr std::array<std::string_view, 7> kVoid{"br", "img", "meta", "link", "hr", "input", "wbr"};
constexpr std::array<std::string_view, 5> kDropped{"head", "style", "script", "title", "template"};
constexpr std::array<std::string_view, 9> kBoldTags{"b", "strong", "th", "h1", "h2", "h3", "h4", "h5", "h6"};
constexpr std::array<std::string_view, 21> kBlocks{
    "p",  "div", "li", "ul", "ol", "tr", "table", "blockquote", "pre", "section", "article",
    "h1", "h2",  "h3", "h4", "h5", "h6", "header", "footer",    "dt",  "dd"};

template <std::size_t N>
bool isIn(const std::array<std::string_view, N>& set, std::string_view name) {
  return std::find(set.begin(), set.end(), name) != set.end();
}

bool isAsciiSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f'; }

std::string lowered(std::string_view s) {
  std::string out(s);
  for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return out;
}

std::string_view trimmedAscii(std::string_view s) {
  while (!s.empty() && isAsciiSpace(s.front())) s.remove_prefix(1);
  while (!s.empty() && isAsciiSpace(s.back())) s.remove_suffix(1);
  return s;
}

void appendUtf8(std::string& out, std::uint32_t cp) {
  if (cp == 0 || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) cp = 0xFFFD;
  if (cp < 0x80) {
    out += static_cast<char>(cp);
  } else if (cp < 0x800) {
    out += static_cast<char>(0xC0 | (cp >> 6));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else if (cp < 0x10000) {
    out += static_cast<char>(0xE0 | (cp >> 12));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (cp >> 18));
    out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  }
}

// The text of the entity reference body ("amp", "#38", "#x26"), or none.
std::optional<std::string> entityText(std::string_view body) {
  static constexpr std::array<std::pair<std::string_view, std::string_view>, 6> named{{
      {"amp", "&"}, {"lt", "<"}, {"gt", ">"}, {"quot", "\""}, {"apos", "'"}, {"nbsp", "\u00A0"}}};
  for (const auto& [name, text] : named)
    if (body == name) return std::string(text);
  if (body.size() < 2 || body[0] != '#') return std::nullopt;
  const bool hex = body[1] == 'x' || body[1] == 'X';
  const std::string_view digits = body.substr(hex ? 2 : 1);
  if (digits.empty() || digits.size() > 8) return std::nullopt;
  std::uint32_t cp = 0;
  for (char c : digits) {
    const int d = std::isdigit(static_cast<unsigned char>(c)) ? c - '0'
                  : hex && std::isxdigit(static_cast<unsigned char>(c)) ? std::tolower(c) - 'a' + 10
                                                                        : -1;
    if (d < 0) return std::nullopt;
    cp = cp * (hex ? 16 : 10) + static_cast<std::uint32_t>(d);
  }
  std::string out;
  appendUtf8(out, cp);
  return out;
}

// The weight a style attribute sets: true bold, false not, none unset.
std::optional<bool> styleWeight(std::string_view style) {
  while (!style.empty()) {
    const std::size_t end = std::min(style.find(';'), style.size());
    const std::string_view declaration = style.substr(0, end);
    style.remove_prefix(std::min(end + 1, style.size()));
    const std::size_t colon = declaration.find(':');
    if (colon == std::string_view::npos) continue;
    if (lowered(trimmedAscii(declaration.substr(0, colon))) != "font-weight") continue;
    const std::string value = lowered(trimmedAscii(declaration.substr(colon + 1)));
    if (value == "bold" || value == "bolder") return true;
    const auto isDigit = [](char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; };
    if (!value.empty() && std::all_of(value.begin(), value.end(), isDigit))
      return std::stoi(value.substr(0, 4)) >= 600;
    return false;
  }
  return std::nullopt;
}

struct Tag {
  std::string name;  // lower case
  bool closing = false;
  bool selfClosing = false;
  std::string style;
};

// Reads the attributes of a tag's text after its name, keeping the style.
void readAttributes(std::string_view text, Tag& tag) {
  std::size_t i = 0;
  while (i < text.size()) {
    while (i < text.size() && (isAsciiSpace(text[i]) || text[i] == '/')) ++i;
    const std::size_t nameStart = i;
    while (i < text.size() && !isAsciiSpace(text[i]) && text[i] != '=' && text[i] != '/') ++i;
    const std::string name = lowered(text.substr(nameStart, i - nameStart));
    while (i < text.size() && isAsciiSpace(text[i])) ++i;
    if (i >= text.size() || text[i] != '=') continue;
    ++i;
    while (i < text.size() && isAsciiSpace(text[i])) ++i;
    std::size_t valueStart = i, valueEnd = i;
    if (i < text.size() && (text[i] == '"' || text[i] == '\'')) {
      const char quote = text[i];
      valueStart = ++i;
      while (i < text.size() && text[i] != quote) ++i;
      valueEnd = i++;
    } else {
      while (i < text.size() && !isAsciiSpace(text[i])) ++i;
      valueEnd = i;
    }
    if (name == "style") tag.style = std::string(text.substr(valueStart, valueEnd - valueStart));
  }
}

Tag parseTag(std::string_view text) {
  Tag tag;
  if (!text.empty() && text.front() == '/') {
    tag.closing = true;
    text.remove_prefix(1);
  }
  if (!text.empty() && text.back() == '/') tag.selfClosing = true;
  std::size_t n = 0;
  while (n < text.size() && std::isalnum(static_cast<unsigned char>(text[n]))) ++n;
  tag.name = lowered(text.substr(0, n));
  readAttributes(text.substr(n), tag);
  return tag;
}

// Where the tag that opens at i ends (after its '>'), quotes respected.
std::size_t tagEnd(std::string_view html, std::size_t i) {
  char quote = 0;
  for (++i; i < html.size(); ++i) {
    if (quote != 0) {
      if (html[i] == quote) quote = 0;
    } else if (html[i] == '"' || html[i] == '\'') {
      quote = html[i];
    } else if (html[i] == '>') {
      return i + 1;
    }
  }
  return html.size();
}

class HtmlRunReader {
 public:
  std::vector<Run> read(std::string_view html) {
    std::size_t i = 0;
    while (i < html.size()) {
      if (html.substr(i, 4) == "<!--") {
        const std::size_t end = html.find("-->", i + 4);
        i = end == std::string_view::npos ? html.size() : end + 3;
      } else if (html[i] == '<' && i + 1 < html.size() && (std::isalpha(static_cast<unsigned char>(html[i + 1])) ||
                                                           html[i + 1] == '/' || html[i + 1] == '!' ||
                                                           html[i + 1] == '?')) {
        const std::size_t end = tagEnd(html, i);
        std::string_view inner = html.substr(i + 1, end - i - 1);
        if (inner.ends_with('>')) inner.remove_suffix(1);
        if (html[i + 1] != '!' && html[i + 1] != '?') handleTag(parseTag(inner));
        i = end;
      } else if (html[i] == '&') {
        i = readEntity(html, i);
      } else {
        text(std::string_view(&html[i], 1));
        ++i;
      }
    }
    return std::move(runs_);
  }

 private:
  struct Open {
    std::string name;
    bool bold = false;
  };

  bool bold() const { return !stack_.empty() && stack_.back().bold; }

  void handleTag(const Tag& tag) {
    if (tag.name.empty()) return;
    if (isIn(kDropped, tag.name)) {
      if (!tag.selfClosing) dropDepth_ = std::max(0, dropDepth_ + (tag.closing ? -1 : 1));
      return;
    }
    if (tag.name == "br" && !tag.closing) return lineBreak();
    if (isIn(kBlocks, tag.name) || tag.name == "hr") blockBreak();
    if (tag.closing) return close(tag.name);
    if (tag.selfClosing || isIn(kVoid, tag.name)) return;
    const bool isBold = styleWeight(tag.style).value_or(isIn(kBoldTags, tag.name) || bold());
    stack_.push_back({tag.name, isBold});
    if (tag.name == "pre") ++preDepth_;
  }

  void close(const std::string& name) {
    const auto it = std::find_if(stack_.rbegin(), stack_.rend(), [&](const Open& o) { return o.name == name; });
    if (it == stack_.rend()) return;
    for (auto o = stack_.rbegin(); o != std::next(it); ++o)
      if (o->name == "pre") --preDepth_;
    stack_.erase(std::next(it).base(), stack_.end());
  }

  std::size_t readEntity(std::string_view html, std::size_t i) {
    const std::size_t semicolon = html.find(';', i);
    if (semicolon != std::string_view::npos && semicolon - i <= 10) {
      if (const auto decoded = entityText(html.substr(i + 1, semicolon - i - 1))) {
        text(*decoded);
        return semicolon + 1;
      }
    }
    text("&");
    return i + 1;
  }

  // Text as it shows: outside <pre> a run of white space is one blank,
  // and none at the start of a line.
  void text(std::string_view s) {
    if (dropDepth_ > 0) return;
    if (preDepth_ == 0 && s.size() == 1 && isAsciiSpace(s[0])) {
      pendingSpace_ = true;
      return;
    }
    if (pendingSpace_ && !atLineStart()) append(" ");
    pendingSpace_ = false;
    append(s);
  }

  void lineBreak() {
    if (dropDepth_ > 0) return;
    pendingSpace_ = false;
    append("\n");
  }

  void blockBreak() {
    if (dropDepth_ > 0 || atLineStart()) return;
    lineBreak();
  }

  bool atLineStart() const { return runs_.empty() || runs_.back().text.ends_with('\n'); }

  void append(std::string_view s) {
    if (runs_.empty() || runs_.back().bold != bold()) runs_.push_back({"", bold()});
    runs_.back().text += s;
  }

  std::vector<Run> runs_;
  std::vector<Open> stack_;
  int dropDepth_ = 0;
  int preDepth_ = 0;
  bool pendingSpace_ = false;
};

}  // namespace

std::vector<Run> TextPasteboard::runsOfHtml(std::string_view html) { return HtmlRunReader().read(html); }

}  // namespace orvane::commands
