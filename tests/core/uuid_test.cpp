#include "core/uuid.hpp"

#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <unordered_set>

namespace orvane::core {
namespace {

const std::regex kVersion4Text(
    "[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}");

TEST(UuidTest, MakeGivesVersion4UpperCaseTextThatParsesBack) {
  for (int i = 0; i < 200; ++i) {
    const Uuid id = Uuid::make();
    const std::string text = id.text();
    EXPECT_TRUE(std::regex_match(text, kVersion4Text)) << text;
    EXPECT_EQ((id.high >> 12) & 0xF, 4u) << text;
    EXPECT_EQ(id.low >> 62, 2u) << text;  // RFC 4122 variant bits 10
    EXPECT_FALSE(id.isNil());
    const auto parsed = Uuid::parse(text);
    ASSERT_TRUE(parsed.has_value()) << text;
    EXPECT_EQ(*parsed, id);
  }
}

TEST(UuidTest, ReadsAndWritesFieldsInOrder) {
  const auto id = Uuid::parse("00112233-4455-6677-8899-AABBCCDDEEFF");
  ASSERT_TRUE(id.has_value());
  EXPECT_EQ(id->high, 0x0011223344556677ULL);
  EXPECT_EQ(id->low, 0x8899AABBCCDDEEFFULL);
  EXPECT_EQ(id->text(), "00112233-4455-6677-8899-AABBCCDDEEFF");

  const Uuid nil{};
  EXPECT_TRUE(nil.isNil());
  EXPECT_EQ(nil.text(), "00000000-0000-0000-0000-000000000000");
  EXPECT_EQ(Uuid::parse(nil.text()), nil);
}

TEST(UuidTest, ParseIgnoresCase) {
  const auto upper = Uuid::parse("9F1C2B3A-4D5E-4F60-8A7B-C9D0E1F2A3B4");
  const auto lower = Uuid::parse("9f1c2b3a-4d5e-4f60-8a7b-c9d0e1f2a3b4");
  const auto mixed = Uuid::parse("9f1C2b3A-4d5E-4F60-8a7B-c9D0e1F2a3B4");
  ASSERT_TRUE(upper.has_value());
  ASSERT_TRUE(lower.has_value());
  ASSERT_TRUE(mixed.has_value());
  EXPECT_EQ(*upper, *lower);
  EXPECT_EQ(*upper, *mixed);
  EXPECT_EQ(lower->text(), "9F1C2B3A-4D5E-4F60-8A7B-C9D0E1F2A3B4");
}

TEST(UuidTest, ParseRejectsMalformedText) {
  const char* const malformed[] = {
      "",
      "9F1C2B3A-4D5E-4F60-8A7B-C9D0E1F2A3B",     // one digit short
      "9F1C2B3A-4D5E-4F60-8A7B-C9D0E1F2A3B45",   // one digit too many
      "9F1C2B3A4D5E-4F60-8A7B-C9D0E1F2A3B4-",    // dash moved
      "9F1C2B3A-4D5E-4F60-8A7BC-9D0E1F2A3B4",    // dash moved within the length
      "9F1C2B3A_4D5E_4F60_8A7B_C9D0E1F2A3B4",    // wrong separators
      "9F1C2B3A-4D5E-4F60-8A7B-C9D0E1F2A3BG",    // not hexadecimal
      "9F1C2B3A-4D5E-4F60-8A7B-C9D0E1F2A3 4",    // space inside
      " 9F1C2B3A-4D5E-4F60-8A7B-C9D0E1F2A3B4",   // leading space
      "{9F1C2B3A-4D5E-4F60-8A7B-C9D0E1F2A3B4}",  // braces
      "9F1C2B3A4D5E4F608A7BC9D0E1F2A3B4",        // no dashes at all
      "+F1C2B3A-4D5E-4F60-8A7B-C9D0E1F2A3B4",    // sign
  };
  for (const char* text : malformed) {
    EXPECT_FALSE(Uuid::parse(text).has_value()) << '"' << text << '"';
  }
}

TEST(UuidTest, FreshIdsAreDistinctAndHashLikeEqualOnes) {
  std::unordered_set<Uuid> seen;
  std::unordered_set<std::string> texts;
  for (int i = 0; i < 10000; ++i) {
    const Uuid id = Uuid::make();
    EXPECT_TRUE(seen.insert(id).second) << id.text();
    EXPECT_TRUE(texts.insert(id.text()).second) << id.text();
  }
  const Uuid id = Uuid::make();
  const Uuid copy = *Uuid::parse(id.text());
  EXPECT_EQ(hashValue(copy), hashValue(id));
  EXPECT_NE(Uuid::make(), Uuid::make());
}

}  // namespace
}  // namespace orvane::core
