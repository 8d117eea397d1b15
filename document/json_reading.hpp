#pragma once
// A small toolkit for reading model records out of parsed JSON with the file
// format's rules: required keys, defaults for missing or null optional keys,
// strict types, and an error that says where in the file the problem lies.
// Every failure throws ProjectCodecError (corruptData); callers inside this
// library catch it. Where-chains are built on the stack and turned into text
// only when something fails, so reading a large file costs no strings.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "document/project_codec_error.hpp"

namespace orvane::document::json_reading {

using nlohmann::json;

// A position in the file: a key of the parent, or an index in a list.
struct Where {
  const Where* parent = nullptr;
  std::string_view key;
  std::size_t index = 0;
  bool isIndex = false;

  Where child(std::string_view k) const { return Where{this, k}; }
  Where element(std::size_t i) const { return Where{this, {}, i, true}; }
  // "comps[0].l[2].tf", or "the top level".
  std::string text() const;
};

[[noreturn]] void fail(const Where& where, std::string_view problem);

// An object at a place in the file.
class Object {
 public:
  Object(const json& j, const Where& where);
  const Where& where() const { return where_; }
  // The value of a key that must be there and not be null.
  const json& required(std::string_view key) const;
  // The value of a key, or null when it is missing or JSON null.
  const json* optional(std::string_view key) const;

 private:
  const json& json_;
  const Where& where_;
};

double readDouble(const json& j, const Where& where);
std::int64_t readInt(const json& j, const Where& where);
std::int32_t readInt32(const json& j, const Where& where);
bool readBool(const json& j, const Where& where);
std::string readString(const json& j, const Where& where);

// Reads a required key with read(json, where).
template <class Read>
auto required(const Object& o, std::string_view key, Read&& read) {
  const Where w = o.where().child(key);
  return read(o.required(key), w);
}

// Reads an optional key, or gives fallback when it is missing or null.
template <class Read, class T>
auto optional(const Object& o, std::string_view key, Read&& read, T fallback) -> T {
  const json* j = o.optional(key);
  if (j == nullptr) return fallback;
  const Where w = o.where().child(key);
  return read(*j, w);
}

template <class Read>
auto readList(const json& j, const Where& where, Read&& read) {
  using T = decltype(read(j, where));
  if (!j.is_array()) fail(where, "is not a list");
  std::vector<T> out;
  out.reserve(j.size());
  for (std::size_t i = 0; i < j.size(); ++i) {
    const Where w = where.element(i);
    out.push_back(read(j[i], w));
  }
  return out;
}

// A reader of a list of elements read by read, for required/optional.
template <class Read>
auto listOf(Read read) {
  return [read](const json& j, const Where& where) { return readList(j, where, read); };
}

}  // namespace orvane::document::json_reading
