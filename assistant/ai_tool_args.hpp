#pragma once
// Reading a tool call's arguments the forgiving way the model needs: numbers
// may come as numeric strings, switches as "yes"/"on"/1, colours as {r,g,b}.
// Every reader that can fail throws ToolError, whose text goes back to the
// model as the call's result. Plain values; used on the main thread with the
// executor, but nothing here touches shared state.

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "assistant/ai_number_text.hpp"
#include "core/frame_rate.hpp"
#include "core/geometry.hpp"
#include "core/ov_time.hpp"
#include "core/uuid.hpp"

namespace orvane::assistant {

// The failure of one tool: what() is the text the model reads.
class ToolError : public std::runtime_error {
 public:
  explicit ToolError(const std::string& message) : std::runtime_error(message) {}
  static ToolError unknownTool(std::string_view name) {
    return ToolError("Unknown tool '" + std::string(name) + "'.");
  }
};

// A read-only view of the call's argument object.
class Args {
 public:
  // Parses argumentsJSON: a parse failure throws the parser's own words, a
  // value that is no object, or nested deeper than wire::kMaxJSONDepth,
  // "Invalid tool arguments JSON.".
  static Args parse(std::string_view argumentsJSON);
  explicit Args(nlohmann::json object) : object_(std::move(object)) {}

  std::optional<std::string> string(std::string_view key) const;
  // Absent or empty throws "Missing string 'key'.".
  std::string requireString(std::string_view key) const;
  // A number, or a string that is entirely a finite decimal number.
  std::optional<double> double_(std::string_view key) const;
  // A boolean; a number's truth; "true"/"yes"/"on"/"1" in any case (other
  // strings are false).
  std::optional<bool> bool_(std::string_view key) const;
  std::optional<nlohmann::json> object(std::string_view key) const;
  core::Uuid uuid(std::string_view key) const;
  std::vector<core::Uuid> uuidArray(std::string_view key) const;

  const nlohmann::json& values() const { return object_; }

 private:
  const nlohmann::json* value(std::string_view key) const;
  nlohmann::json object_;
};

// The whole text as a finite decimal number ("12.5", "-3", "1e3").
std::optional<double> parseDecimal(std::string_view text);
// A JSON number, or a string parseDecimal accepts.
std::optional<double> numberFrom(const nlohmann::json& value);
// "true", "yes", "on", "1" in any case.
bool isTruthyText(std::string_view text);

// "24", "25", "30", "29.97"/"29,97", "60", "23.976"/"23.98", else any
// positive decimal the rate type can hold.
std::optional<core::FrameRate> parseFrameRate(const std::optional<std::string>& label);
// r, g, b needed; a defaults to 1; not clamped.
std::optional<core::OVColor> parseColor(const nlohmann::json& object);

// Seconds from the model as a time. Beyond a billion seconds the time could
// not be held or added safely: "Number out of range for 'key'.".
core::OVTime timeFromSeconds(double seconds, std::string_view key);

// Unicode lower case, for matching names the model typed.
std::string lowercased(std::string_view text);

}  // namespace orvane::assistant
