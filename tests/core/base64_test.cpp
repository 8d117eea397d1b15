// Base64 with the standard alphabet and '=' padding: the standard vectors,
// round trips of every length, and text that must be rejected.

#include "core/base64.hpp"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>

namespace orvane::core {
namespace {

Bytes bytesOf(std::string_view text) { return Bytes(text.begin(), text.end()); }

TEST(Base64Test, EncodesAndDecodesTheStandardVectors) {
  struct Row { Bytes bytes; const char* text; };
  const Row rows[] = {
      {bytesOf(""), ""},           {bytesOf("f"), "Zg=="},          {bytesOf("fo"), "Zm8="},
      {bytesOf("foo"), "Zm9v"},    {bytesOf("foob"), "Zm9vYg=="},   {bytesOf("fooba"), "Zm9vYmE="},
      {bytesOf("foobar"), "Zm9vYmFy"},
      // Both ends of the alphabet.
      {Bytes{0xFB, 0xFF, 0xBF}, "+/+/"}, {Bytes{0x00, 0x10, 0x83, 0x10, 0x51, 0x87}, "ABCDEFGH"},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.text);
    EXPECT_EQ(base64Encode(r.bytes), r.text);
    EXPECT_EQ(base64Decode(r.text), r.bytes);
  }
  // Unused low bits of the last character are ignored.
  EXPECT_EQ(base64Decode("Zh=="), bytesOf("f"));
  EXPECT_EQ(base64Decode("Zm9="), bytesOf("fo"));
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

TEST(Base64Test, RejectsForeignCharactersAndBadPadding) {
  const std::string_view rejected[] = {
      "Zm9-", "Zm9_",                     // URL-safe alphabet
      "Zm 9", "Zm9vYmFy\r\n",             // white space
      std::string_view("Zm\0v", 4), "Zm9\xC3",
      "Zg", "Zg=", "Zm9vY",               // length not a multiple of four
      "Zg===", "Z===", "====",            // too much padding
      "=Zg=", "Zm=v", "Zg==Zg==",         // padding before the end
  };
  for (std::string_view text : rejected) EXPECT_FALSE(base64Decode(text).has_value()) << text;
}

}  // namespace
}  // namespace orvane::core
