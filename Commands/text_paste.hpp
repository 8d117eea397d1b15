#pragma once
// Pasting text from other applications into a text layer. TextPasteboard
// reads the pasteboard's rich text (simple HTML, as desktop clipboards carry
// it) or plain text, tells whether the paste is entirely bold, and shapes
// the text for a one-line or a laid-out paste. Pure functions apart from the
// pasteboard reads; main thread only for those and for pasteText.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Commands/pasteboard.hpp"
#include "core/uuid.hpp"
#include "document/project_document.hpp"
#include "document/undo_stack.hpp"

namespace orvane::commands {

struct TextPasteboard {
  struct Paste {
    std::string string;
    bool isEntirelyBold = false;

    friend bool operator==(const Paste&, const Paste&) = default;
  };

  // A stretch of rich text in one weight.
  struct Run {
    std::string text;
    bool bold = false;

    friend bool operator==(const Run&, const Run&) = default;
  };

  // The rich text's string and weight when it holds any text, else the
  // plain text when not empty (never bold), else none.
  static std::optional<Paste> read(const Pasteboard& pasteboard);
  // The text on one line: every run of white space and line breaks becomes
  // one blank, none at the ends. None when nothing remains.
  static std::optional<std::string> plain(const Pasteboard& pasteboard);
  // The text with its lines: line endings made "\n" (a paragraph separator
  // gives an empty line between), white space trimmed at both ends. None
  // when nothing remains.
  static std::optional<std::string> keepingLayout(const Pasteboard& pasteboard);
  // Whether there is text to paste.
  static bool has(const Pasteboard& pasteboard);

  // The rules of plain() and keepingLayout() on a string.
  static std::optional<std::string> collapsingWhitespace(std::string_view text);
  static std::optional<std::string> normalizingLayout(std::string_view text);

  // The text of simple HTML in runs of one weight. Bold are <b>, <strong>,
  // <th>, <h1>-<h6> and any element styled font-weight bold, bolder or 600
  // and more; a weight in a style (normal, 400, lighter) overrides the tag
  // and what encloses it. <br> and the ends of blocks (p, div, li, ...)
  // break lines; other white space collapses as a browser shows it, except
  // in <pre>. The contents of head, style, script and title are dropped.
  // Knows &amp; &lt; &gt; &quot; &apos; &nbsp; and numeric references.
  static std::vector<Run> runsOfHtml(std::string_view html);
  // Every run that holds more than white space is bold, and one does.
  static bool isEntirelyBold(const std::vector<Run>& runs);
  static bool isEntirelyBold(std::string_view html) { return isEntirelyBold(runsOfHtml(html)); }

  // The bold face of a font given by its PostScript-style name "Family" or
  // "Family-Style": a face whose style already names a heavy weight (Bold,
  // Black, Heavy, also in SemiBold or BoldItalic) stays; an italic or
  // oblique style becomes "Family-BoldItalic" / "Family-BoldOblique"; any
  // other style (Regular, Light, Medium, none) gives "Family-Bold". None for
  // an empty name. Whether such a font is installed is the caller's matter.
  static std::optional<std::string> boldFace(std::string_view fontName);
};

// Replaces the string of a text layer of the active composition with the
// pasteboard's text, plain (one line) or keeping its layout; a laid-out,
// entirely bold paste also switches the font to its bold face. Nothing
// without text on the pasteboard or for another kind of layer. "Edit Text".
void pasteText(document::ProjectDocument& doc, const core::Uuid& layerID, bool keepingLayout,
               const Pasteboard& pasteboard, document::UndoStack* undo);

}  // namespace orvane::commands
