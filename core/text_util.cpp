#include "core/text_util.hpp"

#include <cstdint>
#include <utility>

namespace orvane::core {
namespace {

// U+FFFD REPLACEMENT CHARACTER: what a malformed byte decodes to. It must
// not read as its own value, or a stray 0x85 or 0xA0 would count as a space.
constexpr std::uint32_t kMalformed = 0xFFFD;

// Decodes the code point at i (a malformed byte alone, as U+FFFD) and its
// length in bytes.
std::pair<std::uint32_t, std::size_t> codePointAt(std::string_view s, std::size_t i) {
  const auto b = static_cast<unsigned char>(s[i]);
  if (b < 0x80) return {b, 1};
  const std::size_t n = (b >> 5) == 0x6 ? 2 : (b >> 4) == 0xE ? 3 : (b >> 3) == 0x1E ? 4 : 1;
  if (n == 1 || i + n > s.size()) return {kMalformed, 1};
  std::uint32_t cp = b & (0x7F >> n);
  for (std::size_t k = 1; k < n; ++k) {
    const auto c = static_cast<unsigned char>(s[i + k]);
    if ((c >> 6) != 0x2) return {kMalformed, 1};
    cp = (cp << 6) | (c & 0x3F);
  }
  return {cp, n};
}

bool isWhitespace(std::uint32_t c) {
  return c == ' ' || (c >= 0x09 && c <= 0x0D) || c == 0x85 || c == 0xA0 || c == 0x1680 ||
         (c >= 0x2000 && c <= 0x200A) || c == 0x2028 || c == 0x2029 || c == 0x202F || c == 0x205F ||
         c == 0x3000;
}

// Calls piece(begin, end) for each run of non-white space.
template <class F>
void forEachRun(std::string_view s, F piece) {
  std::size_t i = 0, runStart = std::string_view::npos;
  while (i < s.size()) {
    const auto [cp, n] = codePointAt(s, i);
    if (isWhitespace(cp)) {
      if (runStart != std::string_view::npos) piece(runStart, i);
      runStart = std::string_view::npos;
    } else if (runStart == std::string_view::npos) {
      runStart = i;
    }
    i += n;
  }
  if (runStart != std::string_view::npos) piece(runStart, s.size());
}

}  // namespace

std::string trimmed(std::string_view text) {
  std::size_t first = std::string_view::npos, last = 0;
  forEachRun(text, [&](std::size_t b, std::size_t e) {
    if (first == std::string_view::npos) first = b;
    last = e;
  });
  return first == std::string_view::npos ? std::string() : std::string(text.substr(first, last - first));
}

std::vector<std::string> splitAtWhitespace(std::string_view text) {
  std::vector<std::string> out;
  forEachRun(text, [&](std::size_t b, std::size_t e) { out.emplace_back(text.substr(b, e - b)); });
  return out;
}

std::string orIfBlank(std::string_view text, std::string_view fallback) {
  std::string t = trimmed(text);
  return t.empty() ? std::string(fallback) : t;
}

}  // namespace orvane::core
