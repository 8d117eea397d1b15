#include "document/json_reading.hpp"

#include <cmath>
#include <limits>

namespace orvane::document::json_reading {

std::string Where::text() const {
  std::vector<const Where*> chain;
  for (const Where* w = this; w != nullptr; w = w->parent) chain.push_back(w);
  std::string out;
  for (auto it = chain.rbegin(); it != chain.rend(); ++it) {
    const Where& w = **it;
    if (w.isIndex) {
      out += "[" + std::to_string(w.index) + "]";
    } else if (!w.key.empty()) {
      if (!out.empty()) out += '.';
      out += w.key;
    }
  }
  return out.empty() ? "the top level" : "\"" + out + "\"";
}

void fail(const Where& where, std::string_view problem) {
  throw ProjectCodecError::corruptData("The value at " + where.text() + " " + std::string(problem) + ".");
}

Object::Object(const json& j, const Where& where) : json_(j), where_(where) {
  if (!j.is_object()) fail(where, "is not an object");
}

const json& Object::required(std::string_view key) const {
  const json* j = optional(key);
  if (j == nullptr) {
    const Where w = where_.child(key);
    throw ProjectCodecError::corruptData("The key " + w.text() + " is missing.");
  }
  return *j;
}

const json* Object::optional(std::string_view key) const {
  const auto it = json_.find(key);
  if (it == json_.end() || it->is_null()) return nullptr;
  return &*it;
}

double readDouble(const json& j, const Where& where) {
  if (!j.is_number()) fail(where, "is not a number");
  const double v = j.get<double>();
  if (!std::isfinite(v)) fail(where, "is out of range");
  return v;
}

std::int64_t readInt(const json& j, const Where& where) {
  if (j.is_number_integer() && !j.is_number_unsigned()) return j.get<std::int64_t>();
  if (j.is_number_unsigned()) {
    const std::uint64_t u = j.get<std::uint64_t>();
    if (u > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) fail(where, "is out of range");
    return static_cast<std::int64_t>(u);
  }
  if (j.is_number_float()) {
    // 3.0 is read as 3, as any JSON reader does; 3.5 is not an integer.
    const double v = j.get<double>();
    constexpr double kExactLimit = 9007199254740992.0;  // 2^53
    if (std::isfinite(v) && v == std::trunc(v) && std::fabs(v) <= kExactLimit) return static_cast<std::int64_t>(v);
  }
  fail(where, "is not an integer");
}

std::int32_t readInt32(const json& j, const Where& where) {
  const std::int64_t v = readInt(j, where);
  if (v < std::numeric_limits<std::int32_t>::min() || v > std::numeric_limits<std::int32_t>::max()) {
    fail(where, "is out of range");
  }
  return static_cast<std::int32_t>(v);
}

bool readBool(const json& j, const Where& where) {
  if (!j.is_boolean()) fail(where, "is not true or false");
  return j.get<bool>();
}

std::string readString(const json& j, const Where& where) {
  if (!j.is_string()) fail(where, "is not text");
  return j.get<std::string>();
}

}  // namespace orvane::document::json_reading
