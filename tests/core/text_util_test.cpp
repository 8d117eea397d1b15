// Trimming and splitting at white space, Unicode spaces included.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/text_util.hpp"

namespace orvane::core {
namespace {

TEST(TextUtilTest, TrimmedDropsUnicodeWhiteSpaceAtBothEndsOnly) {
  struct Case {
    std::string text, expected;
  };
  const std::vector<Case> cases{
      {"  plain  ", "plain"},
      {"\t\r\nline\n", "line"},
      {"\u00A0caf\u00E9\u00A0", "caf\u00E9"},          // no-break spaces around a two-byte letter
      {"\u2029\u3000a b\u2003", "a b"},                 // paragraph separator, ideographic and em space
      {"\u0085x\u202F", "x"},
      {"\u00E0", "\u00E0"},                             // its second byte is 0xA0, yet no space
      {"\u2029\u00A0 \n", ""},
      {"", ""},
      {"\xA0" "abc\x85", "\xA0" "abc\x85"},             // stray bytes are not spaces
  };
  for (const Case& c : cases) EXPECT_EQ(trimmed(c.text), c.expected) << c.text;
}

TEST(TextUtilTest, SplitGivesTheRunsBetweenWhiteSpace) {
  EXPECT_EQ(splitAtWhitespace("  one\u00A0two\u2029\u2029three \u3000"),
            (std::vector<std::string>{"one", "two", "three"}));
  EXPECT_EQ(splitAtWhitespace("\u00E0\u00A0\u00E0"), (std::vector<std::string>{"\u00E0", "\u00E0"}));
  EXPECT_TRUE(splitAtWhitespace(" \u2028\t").empty());
}

TEST(TextUtilTest, OrIfBlankFallsBackOnlyWhenNothingIsLeft) {
  EXPECT_EQ(orIfBlank("\u00A0\u2029", "Untitled"), "Untitled");
  EXPECT_EQ(orIfBlank(" Name\u00A0", "Untitled"), "Name");
}

}  // namespace
}  // namespace orvane::core
