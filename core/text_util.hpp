#pragma once
// Small text helpers for names and pasted text (UTF-8). White space means
// the ASCII blanks and line breaks plus the Unicode space and line
// separators (U+0085, U+00A0, U+1680, U+2000-U+200A, U+2028, U+2029,
// U+202F, U+205F, U+3000). Pure functions.

#include <string>
#include <string_view>
#include <vector>

namespace orvane::core {

// Without white space at either end.
std::string trimmed(std::string_view text);
// The runs between white space; no empty pieces.
std::vector<std::string> splitAtWhitespace(std::string_view text);
// trimmed(text), or fallback when that is empty.
std::string orIfBlank(std::string_view text, std::string_view fallback);

}  // namespace orvane::core
