#include "assistant/ai_tool_args.hpp"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include <QString>

#include "assistant/ai_wire_formats.hpp"
#include "core/text_util.hpp"

namespace orvane::assistant {

using Json = nlohmann::json;

namespace {

// A billion seconds (about 32 years) times the finest timescale stays far
// inside 64 bits, with room to add two such times.
constexpr double kMaximumSeconds = 1e9;

}  // namespace

Args Args::parse(std::string_view argumentsJSON) {
  Json parsed;
  try {
    parsed = Json::parse(argumentsJSON);
  } catch (const Json::exception& e) {
    throw ToolError(e.what());
  }
  if (!parsed.is_object() || !wire::withinDepth(parsed, wire::kMaxJSONDepth))
    throw ToolError("Invalid tool arguments JSON.");
  return Args(std::move(parsed));
}

const Json* Args::value(std::string_view key) const {
  const auto it = object_.find(key);
  return it == object_.end() ? nullptr : &*it;
}

std::optional<std::string> Args::string(std::string_view key) const {
  const Json* v = value(key);
  if (v == nullptr || !v->is_string()) return std::nullopt;
  return v->get<std::string>();
}

std::string Args::requireString(std::string_view key) const {
  std::optional<std::string> s = string(key);
  if (!s || s->empty()) throw ToolError("Missing string '" + std::string(key) + "'.");
  return *s;
}

std::optional<double> Args::double_(std::string_view key) const {
  const Json* v = value(key);
  return v == nullptr ? std::nullopt : numberFrom(*v);
}

std::optional<bool> Args::bool_(std::string_view key) const {
  const Json* v = value(key);
  if (v == nullptr) return std::nullopt;
  if (v->is_boolean()) return v->get<bool>();
  if (v->is_number()) return v->get<double>() != 0;
  if (v->is_string()) return isTruthyText(v->get_ref<const std::string&>());
  return std::nullopt;
}

std::optional<Json> Args::object(std::string_view key) const {
  const Json* v = value(key);
  if (v == nullptr || !v->is_object()) return std::nullopt;
  return *v;
}

core::Uuid Args::uuid(std::string_view key) const {
  const std::optional<core::Uuid> id = core::Uuid::parse(requireString(key));
  if (!id) throw ToolError("Invalid UUID for '" + std::string(key) + "'.");
  return *id;
}

std::vector<core::Uuid> Args::uuidArray(std::string_view key) const {
  const Json* v = value(key);
  if (v == nullptr || !v->is_array()) throw ToolError("Missing array '" + std::string(key) + "'.");
  std::vector<core::Uuid> ids;
  ids.reserve(v->size());
  for (const Json& element : *v) {
    std::optional<core::Uuid> id =
        element.is_string() ? core::Uuid::parse(element.get_ref<const std::string&>()) : std::nullopt;
    if (!id) throw ToolError("Invalid UUID in '" + std::string(key) + "'.");
    ids.push_back(*id);
  }
  return ids;
}

std::optional<double> parseDecimal(std::string_view text) {
  // from_chars takes no plus sign, which people (and models) write.
  if (text.size() > 1 && text.front() == '+' && text[1] != '-') text.remove_prefix(1);
  if (text.empty()) return std::nullopt;
  double v = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), v);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(v)) return std::nullopt;
  return v;
}

std::optional<double> numberFrom(const Json& value) {
  if (value.is_number()) {
    const double v = value.get<double>();
    return std::isfinite(v) ? std::optional<double>(v) : std::nullopt;
  }
  if (value.is_string()) return parseDecimal(value.get_ref<const std::string&>());
  return std::nullopt;
}

bool isTruthyText(std::string_view text) {
  const std::string lower = lowercased(text);
  return lower == "true" || lower == "yes" || lower == "on" || lower == "1";
}

std::optional<core::FrameRate> parseFrameRate(const std::optional<std::string>& label) {
  if (!label) return std::nullopt;
  const std::string text = core::trimmed(*label);
  if (text == "24") return core::FrameRate::fps24;
  if (text == "25") return core::FrameRate::fps25;
  if (text == "30") return core::FrameRate::fps30;
  if (text == "29.97" || text == "29,97") return core::FrameRate::fps29_97;
  if (text == "60") return core::FrameRate::fps60;
  if (text == "23.976" || text == "23.98") return core::FrameRate::fps23_976;
  const std::optional<double> fps = parseDecimal(text);
  if (!fps || *fps <= 0) return std::nullopt;
  // A rate off the standard list is held in thousandths; one that rounds to
  // no thousandth at all, or past 32 bits, is no rate.
  const double thousandths = std::round(*fps * 1000.0);
  if (thousandths < 1 || thousandths > std::numeric_limits<std::int32_t>::max()) return std::nullopt;
  return core::FrameRate::fromFPS(*fps);
}

std::optional<core::OVColor> parseColor(const Json& object) {
  if (!object.is_object()) return std::nullopt;
  const auto component = [&](const char* key) -> std::optional<double> {
    const auto it = object.find(key);
    return it == object.end() ? std::nullopt : numberFrom(*it);
  };
  const std::optional<double> r = component("r"), g = component("g"), b = component("b");
  if (!r || !g || !b) return std::nullopt;
  return core::OVColor{*r, *g, *b, component("a").value_or(1.0)};
}

core::OVTime timeFromSeconds(double seconds, std::string_view key) {
  if (!std::isfinite(seconds) || std::fabs(seconds) > kMaximumSeconds)
    throw ToolError("Number out of range for '" + std::string(key) + "'.");
  return core::OVTime::fromSeconds(seconds);
}

std::string lowercased(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())).toLower().toStdString();
}

}  // namespace orvane::assistant
