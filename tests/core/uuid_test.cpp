// Uuid: fresh version 4 identifiers, the upper-case 8-4-4-4-12 text form and
// parsing it back in either case.

#include "core/uuid.hpp"

#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <unordered_set>

namespace orvane::core {
namespace {

TEST(UuidTest, FreshIdsAreDistinctVersion4TextThatParsesBack) {
  const std::regex version4("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}");
  std::unordered_set<Uuid> seen;
  for (int i = 0; i < 1000; ++i) {
    const Uuid id = Uuid::make();
    const std::string text = id.text();
    EXPECT_TRUE(std::regex_match(text, version4)) << text;
    EXPECT_TRUE(seen.insert(id).second) << text;
    const auto parsed = Uuid::parse(text);
    ASSERT_TRUE(parsed.has_value()) << text;
    EXPECT_EQ(*parsed, id);
    EXPECT_EQ(hashValue(*parsed), hashValue(id));
  }
}

TEST(UuidTest, ReadsAndWritesFieldsInOrderInEitherCase) {
  const auto id = Uuid::parse("00112233-4455-6677-8899-AABBCCDDEEFF");
  ASSERT_TRUE(id.has_value());
  EXPECT_EQ(id->high, 0x0011223344556677ULL);
  EXPECT_EQ(id->low, 0x8899AABBCCDDEEFFULL);
  EXPECT_EQ(id->text(), "00112233-4455-6677-8899-AABBCCDDEEFF");
  const auto lower = Uuid::parse("9f1c2b3a-4d5e-4f60-8a7b-c9D0E1F2A3B4");
  ASSERT_TRUE(lower.has_value());
  EXPECT_EQ(lower->text(), "9F1C2B3A-4D5E-4F60-8A7B-C9D0E1F2A3B4");
  EXPECT_TRUE(Uuid{}.isNil());
  EXPECT_EQ(Uuid{}.text(), "00000000-0000-0000-0000-000000000000");
}

TEST(UuidTest, ParseRejectsMalformedText) {
  const char* const malformed[] = {
      "",
      "9F1C2B3A-4D5E-4F60-8A7B-C9D0E1F2A3B",     // one digit short
      "9F1C2B3A-4D5E-4F60-8A7B-C9D0E1F2A3B45",   // one digit too many
      "9F1C2B3A-4D5E-4F60-8A7BC-9D0E1F2A3B4",    // dash moved within the length
      "9F1C2B3A_4D5E_4F60_8A7B_C9D0E1F2A3B4",    // wrong separators
      "9F1C2B3A-4D5E-4F60-8A7B-C9D0E1F2A3BG",    // not hexadecimal
      " 9F1C2B3A-4D5E-4F60-8A7B-C9D0E1F2A3B4",   // leading space
      "{9F1C2B3A-4D5E-4F60-8A7B-C9D0E1F2A3B4}",  // braces
      "9F1C2B3A4D5E4F608A7BC9D0E1F2A3B4",        // no dashes
      "+F1C2B3A-4D5E-4F60-8A7B-C9D0E1F2A3B4",    // sign
  };
  for (const char* text : malformed) EXPECT_FALSE(Uuid::parse(text).has_value()) << '"' << text << '"';
}

}  // namespace
}  // namespace orvane::core
