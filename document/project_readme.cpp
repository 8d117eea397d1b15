// README.txt of a package and the texts it is made of.

#include <cmath>
#include <cstdio>
#include <ctime>

#include "core/build_info.hpp"
#include "core/numeric.hpp"
#include "core/timestamp.hpp"
#include "document/project_packager.hpp"

namespace orvane::document {
namespace {

constexpr std::string_view kDash = " \u2014 ";

std::string plural(std::size_t count, std::string_view word) {
  return std::to_string(count) + " " + std::string(word) + (count == 1 ? "" : "s");
}

// Characters, not bytes: the underline must be as long as the heading looks.
std::size_t characterCount(std::string_view utf8) {
  std::size_t count = 0;
  for (const char c : utf8)
    if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) ++count;
  return count;
}

// A rate read from a file may be zero or negative; its display name would
// stop the program.
std::string rateText(const core::FrameRate& rate) {
  if (rate.numerator <= 0 || rate.denominator <= 0) return "invalid frame rate";
  return rate.displayName();
}

std::string compositionLine(const core::Composition& c) {
  char duration[64];
  std::snprintf(duration, sizeof duration, "%.1f", c.duration.seconds());
  return "  " + c.name + std::string(kDash) + core::numberText(c.size.width) + " \u00d7 " +
         core::numberText(c.size.height) + ", " + rateText(c.frameRate) + ", " + duration +
         " s, " + plural(c.layers.size(), "layer");
}

void appendBlock(std::string& text, const std::vector<std::string>& lines) {
  if (!text.empty()) text += '\n';
  for (const auto& line : lines) text += line + '\n';
}

std::vector<std::string> headingBlock(const core::OVProject& project, core::Timestamp date) {
  const std::string heading = project.name + std::string(kDash) + "Orvane project package";
  return {heading, std::string(characterCount(heading), '='), "",
          "Packaged " + longDateText(date) + " with Orvane " + core::buildVersion() + "."};
}

std::vector<std::string> howToOpenBlock(std::string_view name) {
  return {"HOW TO OPEN",
          "  1. Keep this folder together \u2014 the project finds its media in the Media folder "
          "next to it.",
          "  2. Double-click " + std::string(name) + ".orvane (or File \u25b8 Open in Orvane).",
          "  3. If Orvane asks for access to the package folder, choose this folder. That is a",
          "     one-time macOS permission step; the project remembers it afterwards."};
}

std::vector<std::string> contentsBlock(std::string_view name, std::size_t copiedCount,
                                       std::int64_t totalBytes) {
  return {"CONTENTS",
          "  " + std::string(name) + ".orvane" + std::string(kDash) +
              "the project (compositions, layers, keyframes, effects)",
          "  Media/" + std::string(kDash) + plural(copiedCount, "file") + ", " +
              fileByteCountText(totalBytes),
          "  README.txt" + std::string(kDash) + "this file"};
}

std::vector<std::string> mediaBlock(const std::vector<core::MediaAsset>& copied) {
  std::vector<std::string> lines{"MEDIA"};
  for (const auto& asset : copied)
    lines.push_back("  " + asset.fileName() + std::string(kDash) +
                    fileByteCountText(asset.fileSizeBytes));
  if (copied.empty()) lines.push_back("  (none)");
  return lines;
}

std::vector<std::string> missingBlock(const std::vector<core::MediaAsset>& missing) {
  std::vector<std::string> lines{
      "MISSING \u2014 these files could not be found when packaging and are NOT included:"};
  for (const auto& asset : missing)
    lines.push_back("  " + asset.name + std::string(kDash) + "was at " + asset.path);
  lines.push_back("  Layers using them will show as missing media until the files are relinked.");
  return lines;
}

// Rounds to the unit's decimals and drops trailing zeros: "1.2", "1", "3.46".
std::string decimalText(double value, int decimals) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%.*f", decimals, value);
  std::string text = buffer;
  if (text.find('.') != std::string::npos) {
    while (text.back() == '0') text.pop_back();
    if (text.back() == '.') text.pop_back();
  }
  return text;
}

}  // namespace

std::string fileByteCountText(std::int64_t bytes) {
  if (bytes < 1000) {
    const std::int64_t shown = bytes < 0 ? 0 : bytes;
    return std::to_string(shown) + (shown == 1 ? " byte" : " bytes");
  }
  struct Unit {
    const char* name;
    double divisor;
    int decimals;
  };
  static constexpr Unit kUnits[] = {
      {"KB", 1e3, 0}, {"MB", 1e6, 1}, {"GB", 1e9, 2}, {"TB", 1e12, 2}, {"PB", 1e15, 2}, {"EB", 1e18, 2}};
  for (const Unit& unit : kUnits) {
    const double scale = std::pow(10.0, unit.decimals);
    const double rounded = std::round(static_cast<double>(bytes) / unit.divisor * scale) / scale;
    if (rounded < 1000 || &unit == &kUnits[std::size(kUnits) - 1])
      return decimalText(rounded, unit.decimals) + " " + unit.name;
  }
  return {};  // not reached: the last unit always answers
}

std::string longDateText(core::Timestamp date) {
  static constexpr const char* kMonths[] = {"January", "February", "March",     "April",
                                            "May",     "June",     "July",      "August",
                                            "September", "October", "November", "December"};
  const auto seconds = std::chrono::floor<std::chrono::seconds>(date);
  const std::time_t time = static_cast<std::time_t>(seconds.time_since_epoch().count());
  std::tm local{};
  // Out of the C library's range: the plain calendar date, in UTC.
  if (localtime_r(&time, &local) == nullptr) return core::formatISO8601(date).substr(0, 10);
  return std::to_string(local.tm_mday) + " " + kMonths[local.tm_mon] + " " +
         std::to_string(local.tm_year + 1900);
}

std::string ProjectPackager::readmeText(const core::OVProject& project, std::string_view name,
                                        const std::vector<core::MediaAsset>& copied,
                                        const std::vector<core::MediaAsset>& missing,
                                        std::int64_t totalBytes, core::Timestamp date) {
  std::string text;
  appendBlock(text, headingBlock(project, date));
  appendBlock(text, howToOpenBlock(name));
  appendBlock(text, contentsBlock(name, copied.size(), totalBytes));
  std::vector<std::string> compositions{"COMPOSITIONS"};
  for (const auto& c : project.compositions) compositions.push_back(compositionLine(c));
  appendBlock(text, compositions);
  appendBlock(text, mediaBlock(copied));
  if (!missing.empty()) appendBlock(text, missingBlock(missing));
  appendBlock(text, {"Generated layers (text, shapes, solids) need no files; everything else is in "
                     "Media/."});
  return text;
}

}  // namespace orvane::document
