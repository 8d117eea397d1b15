// Text from other applications: reading, shaping, and pasting into a text
// layer.

#include "Commands/text_paste.hpp"

#include "Commands/property_edits.hpp"
#include "core/composition.hpp"
#include "core/layer_content.hpp"
#include "core/text_util.hpp"

namespace orvane::commands {
namespace {

void replaceAll(std::string& s, std::string_view from, std::string_view to) {
  for (std::size_t at = s.find(from); at != std::string::npos; at = s.find(from, at + to.size()))
    s.replace(at, from.size(), to);
}

bool containsAny(std::string_view s, std::initializer_list<std::string_view> parts) {
  for (const auto part : parts)
    if (s.find(part) != std::string_view::npos) return true;
  return false;
}

}  // namespace

std::optional<TextPasteboard::Paste> TextPasteboard::read(const Pasteboard& pasteboard) {
  if (const auto html = pasteboard.data(Pasteboard::richTextType)) {
    const std::vector<Run> runs = runsOfHtml(*html);
    std::string string;
    for (const Run& r : runs) string += r.text;
    if (!string.empty()) return Paste{std::move(string), isEntirelyBold(runs)};
  }
  auto plainText = pasteboard.data(Pasteboard::plainTextType);
  if (!plainText || plainText->empty()) return std::nullopt;
  return Paste{std::move(*plainText), false};
}

std::optional<std::string> TextPasteboard::plain(const Pasteboard& pasteboard) {
  const auto paste = read(pasteboard);
  return paste ? collapsingWhitespace(paste->string) : std::nullopt;
}

std::optional<std::string> TextPasteboard::keepingLayout(const Pasteboard& pasteboard) {
  const auto paste = read(pasteboard);
  return paste ? normalizingLayout(paste->string) : std::nullopt;
}

bool TextPasteboard::has(const Pasteboard& pasteboard) { return read(pasteboard).has_value(); }

std::optional<std::string> TextPasteboard::collapsingWhitespace(std::string_view text) {
  std::string out;
  for (const std::string& piece : core::splitAtWhitespace(text)) {
    if (!out.empty()) out += ' ';
    out += piece;
  }
  if (out.empty()) return std::nullopt;
  return out;
}

std::optional<std::string> TextPasteboard::normalizingLayout(std::string_view text) {
  std::string s(text);
  replaceAll(s, "\r\n", "\n");
  replaceAll(s, "\r", "\n");
  replaceAll(s, "\u2028", "\n");
  replaceAll(s, "\u2029", "\n\n");
  std::string out = core::trimmed(s);
  if (out.empty()) return std::nullopt;
  return out;
}

bool TextPasteboard::isEntirelyBold(const std::vector<Run>& runs) {
  bool any = false;
  for (const Run& r : runs) {
    if (core::trimmed(r.text).empty()) continue;
    if (!r.bold) return false;
    any = true;
  }
  return any;
}

std::optional<std::string> TextPasteboard::boldFace(std::string_view fontName) {
  if (fontName.empty()) return std::nullopt;
  const std::size_t dash = fontName.rfind('-');
  const std::string_view family = dash == std::string_view::npos ? fontName : fontName.substr(0, dash);
  const std::string_view style = dash == std::string_view::npos ? std::string_view() : fontName.substr(dash + 1);
  if (containsAny(style, {"Bold", "Black", "Heavy"})) return std::string(fontName);
  const std::string base = std::string(family) + "-Bold";
  if (style == "Italic" || style == "Oblique") return base + std::string(style);
  return base;
}

void pasteText(document::ProjectDocument& doc, const core::Uuid& layerID, bool keepingLayout,
               const Pasteboard& pasteboard, document::UndoStack* undo) {
  const core::Composition* comp = doc.activeComposition();
  const core::Layer* layer = comp ? comp->layer(layerID) : nullptr;
  if (layer == nullptr || layer->content.textContent() == nullptr) return;
  const auto paste = TextPasteboard::read(pasteboard);
  if (!paste) return;
  const auto text = keepingLayout ? TextPasteboard::normalizingLayout(paste->string)
                                  : TextPasteboard::collapsingWhitespace(paste->string);
  if (!text) return;
  core::TextContent content = *layer->content.textContent();
  content.string = *text;
  if (keepingLayout && paste->isEntirelyBold) {
    if (auto bold = TextPasteboard::boldFace(content.fontName)) content.fontName = std::move(*bold);
  }
  setTextContent(doc, content, layerID, false, undo);
}

}  // namespace orvane::commands
