#include <gtest/gtest.h>

#include "assistant/ai_tool_args.hpp"

namespace orvane::assistant {
namespace {

using core::FrameRate;

std::string errorOf(const std::function<void()>& read) {
  try {
    read();
  } catch (const ToolError& e) {
    return e.what();
  }
  return "(no error)";
}

TEST(AIToolArgsTest, ParseNeedsAnObject) {
  EXPECT_EQ(errorOf([] { Args::parse("[1, 2]"); }), "Invalid tool arguments JSON.");
  EXPECT_EQ(errorOf([] { Args::parse("\"text\""); }), "Invalid tool arguments JSON.");
  // The parser's own words, not ours.
  const std::string broken = errorOf([] { Args::parse("{\"a\": "); });
  EXPECT_NE(broken.find("parse error"), std::string::npos) << broken;
  EXPECT_NE(errorOf([] { Args::parse("{\"a\": \"\xff\"}"); }).find("parse error"), std::string::npos);
  EXPECT_EQ(errorOf([] { Args::parse(" {} "); }), "(no error)");
}

TEST(AIToolArgsTest, NumbersComeAsNumbersOrNumericStrings) {
  const Args args = Args::parse(R"({"n": 3, "f": -2.25, "s": "12.5", "e": "1e3", "plus": "+4", "word": "12px",
    "blank": "", "b": true, "inf": "inf", "nan": "nan", "null": null, "arr": [1]})");
  EXPECT_EQ(args.double_("n"), 3.0);
  EXPECT_EQ(args.double_("f"), -2.25);
  EXPECT_EQ(args.double_("s"), 12.5);
  EXPECT_EQ(args.double_("e"), 1000.0);
  EXPECT_EQ(args.double_("plus"), 4.0);
  for (const char* absent : {"word", "blank", "b", "inf", "nan", "null", "arr", "missing"})
    EXPECT_FALSE(args.double_(absent).has_value()) << absent;
}

TEST(AIToolArgsTest, SwitchesReadBooleansNumbersAndWords) {
  const Args args = Args::parse(R"({"t": true, "f": false, "one": 1, "zero": 0, "half": 0.5, "yes": "YES",
    "on": "On", "s1": "1", "tr": "True", "no": "no", "other": "maybe", "obj": {}})");
  for (const char* key : {"t", "one", "half", "yes", "on", "s1", "tr"}) EXPECT_EQ(args.bool_(key), true) << key;
  for (const char* key : {"f", "zero", "no", "other"}) EXPECT_EQ(args.bool_(key), false) << key;
  EXPECT_FALSE(args.bool_("obj").has_value());
  EXPECT_FALSE(args.bool_("missing").has_value());
}

TEST(AIToolArgsTest, StringsObjectsAndIds) {
  const Args args = Args::parse(R"({"s": "x", "empty": "", "n": 5, "o": {"k": 1},
    "id": "0a1b2c3d-0000-4000-8000-00000000000f", "bad": "not-a-uuid",
    "ids": ["0A1B2C3D-0000-4000-8000-00000000000F"], "mixed": ["0A1B2C3D-0000-4000-8000-00000000000F", 7],
    "notList": "0A1B2C3D-0000-4000-8000-00000000000F"})");
  EXPECT_EQ(args.string("s"), "x");
  EXPECT_FALSE(args.string("n").has_value());
  EXPECT_EQ(args.requireString("s"), "x");
  EXPECT_EQ(errorOf([&] { args.requireString("empty"); }), "Missing string 'empty'.");
  EXPECT_EQ(errorOf([&] { args.requireString("n"); }), "Missing string 'n'.");
  EXPECT_TRUE(args.object("o").has_value());
  EXPECT_FALSE(args.object("s").has_value());

  EXPECT_EQ(args.uuid("id").text(), "0A1B2C3D-0000-4000-8000-00000000000F");
  EXPECT_EQ(errorOf([&] { args.uuid("bad"); }), "Invalid UUID for 'bad'.");
  EXPECT_EQ(errorOf([&] { args.uuid("missing"); }), "Missing string 'missing'.");
  EXPECT_EQ(args.uuidArray("ids").size(), 1u);
  EXPECT_EQ(errorOf([&] { args.uuidArray("mixed"); }), "Invalid UUID in 'mixed'.");
  EXPECT_EQ(errorOf([&] { args.uuidArray("notList"); }), "Missing array 'notList'.");
  EXPECT_EQ(errorOf([&] { args.uuidArray("missing"); }), "Missing array 'missing'.");
}

TEST(AIToolArgsTest, FrameRateLabels) {
  EXPECT_FALSE(parseFrameRate(std::nullopt).has_value());
  EXPECT_EQ(parseFrameRate("24"), FrameRate::fps24);
  EXPECT_EQ(parseFrameRate(" 25\n"), FrameRate::fps25);
  EXPECT_EQ(parseFrameRate("30"), FrameRate::fps30);
  EXPECT_EQ(parseFrameRate("29.97"), FrameRate::fps29_97);
  EXPECT_EQ(parseFrameRate("29,97"), FrameRate::fps29_97);
  EXPECT_EQ(parseFrameRate("60"), FrameRate::fps60);
  EXPECT_EQ(parseFrameRate("23.98"), FrameRate::fps23_976);
  EXPECT_EQ(parseFrameRate("23.976"), FrameRate::fps23_976);
  EXPECT_EQ(parseFrameRate("50"), FrameRate::fps50);
  EXPECT_EQ(parseFrameRate("12.5"), FrameRate(12500, 1000));
  for (const char* bad : {"fast", "0", "-24", "", "24 fps", "0.0001", "1e12"})
    EXPECT_FALSE(parseFrameRate(std::string(bad)).has_value()) << bad;
}

TEST(AIToolArgsTest, ColoursNeedRedGreenAndBlue) {
  const auto color = [](const char* text) { return parseColor(nlohmann::json::parse(text)); };
  EXPECT_EQ(color(R"({"r": 1, "g": "0.5", "b": 0})"), (core::OVColor{1, 0.5, 0, 1}));
  EXPECT_EQ(color(R"({"r": 2, "g": -1, "b": 0, "a": 0.25})"), (core::OVColor{2, -1, 0, 0.25}));
  EXPECT_FALSE(color(R"({"r": 1, "g": 1})").has_value());
  EXPECT_FALSE(color(R"({"r": 1, "g": 1, "b": "blue"})").has_value());
  EXPECT_FALSE(color(R"([1, 1, 1])").has_value());
}

TEST(AIToolArgsTest, DecimalTextIsShortestWithAPointOnWholeNumbers) {
  EXPECT_EQ(decimalText(10), "10.0");
  EXPECT_EQ(decimalText(2.5), "2.5");
  EXPECT_EQ(decimalText(0.1), "0.1");
  EXPECT_EQ(decimalText(1.004), "1.004");
  EXPECT_EQ(decimalText(-3), "-3.0");
  EXPECT_EQ(decimalText(0), "0.0");
  EXPECT_EQ(decimalText(0.1 + 0.2), "0.30000000000000004");
  EXPECT_EQ(decimalText(100000000), "100000000.0");
  EXPECT_EQ(decimalText(0.00001), "1e-05");
}

TEST(AIToolArgsTest, TimesBeyondABillionSecondsAreRefused) {
  EXPECT_EQ(timeFromSeconds(1.5, "t"), core::OVTime::fromSeconds(1.5));
  EXPECT_EQ(errorOf([] { timeFromSeconds(1e300, "start_seconds"); }), "Number out of range for 'start_seconds'.");
  EXPECT_EQ(errorOf([] { timeFromSeconds(-2e9, "t"); }), "Number out of range for 't'.");
}

TEST(AIToolArgsTest, LowercasingIsUnicode) {
  EXPECT_EQ(lowercased("Intro CLIP"), "intro clip");
  EXPECT_EQ(lowercased("ÉTÉ"), "été");
}

}  // namespace
}  // namespace orvane::assistant
