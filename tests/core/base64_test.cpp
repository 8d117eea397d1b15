#include "core/base64.hpp"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>

namespace orvane::core {
namespace {

Bytes bytesOf(std::string_view text) { return Bytes(text.begin(), text.end()); }

TEST(Base64Test, EncodesTheStandardTestVectors) {
  // The examples of RFC 4648, section 10: every padding case.
  EXPECT_EQ(base64Encode(bytesOf("")), "");
  EXPECT_EQ(base64Encode(bytesOf("f")), "Zg==");
  EXPECT_EQ(base64Encode(bytesOf("fo")), "Zm8=");
  EXPECT_EQ(base64Encode(bytesOf("foo")), "Zm9v");
  EXPECT_EQ(base64Encode(bytesOf("foob")), "Zm9vYg==");
  EXPECT_EQ(base64Encode(bytesOf("fooba")), "Zm9vYmE=");
  EXPECT_EQ(base64Encode(bytesOf("foobar")), "Zm9vYmFy");
}

TEST(Base64Test, DecodesTheStandardTestVectors) {
  EXPECT_EQ(base64Decode(""), bytesOf(""));
  EXPECT_EQ(base64Decode("Zg=="), bytesOf("f"));
  EXPECT_EQ(base64Decode("Zm8="), bytesOf("fo"));
  EXPECT_EQ(base64Decode("Zm9v"), bytesOf("foo"));
  EXPECT_EQ(base64Decode("Zm9vYg=="), bytesOf("foob"));
  EXPECT_EQ(base64Decode("Zm9vYmE="), bytesOf("fooba"));
  EXPECT_EQ(base64Decode("Zm9vYmFy"), bytesOf("foobar"));
}

TEST(Base64Test, UsesTheStandardAlphabetAtBothEnds) {
  EXPECT_EQ(base64Encode(Bytes{0xFB, 0xFF, 0xBF}), "+/+/");
  EXPECT_EQ(base64Encode(Bytes{0x00, 0x00, 0x00}), "AAAA");
  EXPECT_EQ(base64Encode(Bytes{0xFF, 0xFF, 0xFF}), "////");
  EXPECT_EQ(base64Encode(Bytes{0x00, 0x10, 0x83, 0x10, 0x51, 0x87}), "ABCDEFGH");
  EXPECT_EQ(base64Decode("+/+/"), (Bytes{0xFB, 0xFF, 0xBF}));
  EXPECT_EQ(base64Decode("////"), (Bytes{0xFF, 0xFF, 0xFF}));
}

TEST(Base64Test, RoundTripsEveryByteValueAndLength) {
  Bytes all(256);
  for (int i = 0; i < 256; ++i) all[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(i);
  EXPECT_EQ(base64Decode(base64Encode(all)), all);

  std::mt19937 engine(12345);
  std::uniform_int_distribution<int> byte(0, 255);
  for (std::size_t length = 0; length <= 100; ++length) {
    Bytes data(length);
    for (auto& b : data) b = static_cast<std::uint8_t>(byte(engine));
    const std::string text = base64Encode(data);
    EXPECT_EQ(text.size(), (length + 2) / 3 * 4);
    EXPECT_EQ(base64Decode(text), data) << text;
  }
}

TEST(Base64Test, RejectsCharactersOutsideTheAlphabet) {
  EXPECT_FALSE(base64Decode("Zm9-").has_value());   // URL-safe alphabet
  EXPECT_FALSE(base64Decode("Zm9_").has_value());
  EXPECT_FALSE(base64Decode("Zm 9").has_value());   // white space inside
  EXPECT_FALSE(base64Decode("Zm9v\n").has_value());  // line break
  EXPECT_FALSE(base64Decode("Zm9vYmFy\r\n").has_value());
  EXPECT_FALSE(base64Decode("Zm9*").has_value());
  EXPECT_FALSE(base64Decode(std::string_view("Zm\0v", 4)).has_value());
  EXPECT_FALSE(base64Decode("Zm9\xC3").has_value());
}

TEST(Base64Test, RejectsBadPadding) {
  EXPECT_FALSE(base64Decode("Zg").has_value());       // padding left out
  EXPECT_FALSE(base64Decode("Zg=").has_value());      // padding cut short
  EXPECT_FALSE(base64Decode("Zm9vY").has_value());    // length not a multiple of four
  EXPECT_FALSE(base64Decode("Zg===").has_value());    // too much padding
  EXPECT_FALSE(base64Decode("Z===").has_value());     // one character cannot make a byte
  EXPECT_FALSE(base64Decode("====").has_value());
  EXPECT_FALSE(base64Decode("=Zg=").has_value());     // padding in front
  EXPECT_FALSE(base64Decode("Zm=v").has_value());     // padding inside a group
  EXPECT_FALSE(base64Decode("Zg==Zg==").has_value());  // padding before the end
  EXPECT_FALSE(base64Decode("Zm8=Zm9v").has_value());
}

TEST(Base64Test, IgnoresUnusedLowBitsOfTheLastCharacter) {
  // "Zh==" differs from "Zg==" only in bits that no byte uses.
  EXPECT_EQ(base64Decode("Zh=="), bytesOf("f"));
  EXPECT_EQ(base64Decode("Zm9="), bytesOf("fo"));
}

}  // namespace
}  // namespace orvane::core
