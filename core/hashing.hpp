#pragma once
// Hashing of model values. Every model type has a free function
// `std::size_t hashValue(const T&)` found by argument-dependent look-up, so
// that equal values hash alike; `Hash` adapts it for unordered containers.

#include <bit>
#include <chrono>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace orvane::core {

inline void hashCombine(std::size_t& seed, std::size_t v) {
  // 64-bit variant of the boost combiner.
  seed ^= v + 0x9e3779b97f4a7c15ULL + (seed << 12) + (seed >> 4);
}

inline std::size_t hashValue(double v) {
  if (v == 0.0) v = 0.0;  // -0.0 equals 0.0, so both must hash alike
  return std::hash<std::uint64_t>{}(std::bit_cast<std::uint64_t>(v));
}
inline std::size_t hashValue(bool v) { return v ? 0x51ed27ULL : 0x2f9b1ULL; }
template <std::integral T>
  requires(!std::same_as<T, bool>)
std::size_t hashValue(T v) {
  return std::hash<T>{}(v);
}
inline std::size_t hashValue(std::string_view v) { return std::hash<std::string_view>{}(v); }
inline std::size_t hashValue(const std::string& v) { return std::hash<std::string_view>{}(v); }

// The container overloads call each other, so all are declared up front.
template <class T>
std::size_t hashValue(const std::optional<T>& v);
template <class T>
std::size_t hashValue(const std::vector<T>& v);
template <class K, class V>
std::size_t hashValue(const std::map<K, V>& m);

// Enumerations hash by their case.
template <class E>
  requires std::is_enum_v<E>
std::size_t hashValue(E v) {
  return std::hash<std::underlying_type_t<E>>{}(static_cast<std::underlying_type_t<E>>(v)) * 0x9e3779b1U;
}

template <class Clock, class Duration>
std::size_t hashValue(const std::chrono::time_point<Clock, Duration>& t) {
  return std::hash<typename Duration::rep>{}(t.time_since_epoch().count());
}

template <class T>
std::size_t hashValue(const std::optional<T>& v) {
  return v ? hashValue(*v) ^ 0x7f4a7c15ULL : 0x3c6ef372ULL;
}

template <class T>
std::size_t hashValue(const std::vector<T>& v) {
  std::size_t seed = v.size();
  for (const auto& e : v) hashCombine(seed, hashValue(e));
  return seed;
}

template <class K, class V>
std::size_t hashValue(const std::map<K, V>& m) {
  std::size_t seed = m.size();
  for (const auto& [k, v] : m) {
    hashCombine(seed, hashValue(k));
    hashCombine(seed, hashValue(v));
  }
  return seed;
}

// Hashes each argument in turn into one seed.
template <class... Ts>
std::size_t hashAll(const Ts&... values) {
  std::size_t seed = 0;
  (hashCombine(seed, hashValue(values)), ...);
  return seed;
}

// Hash functor for unordered containers of model values.
struct Hash {
  template <class T>
  std::size_t operator()(const T& v) const {
    return hashValue(v);
  }
};

}  // namespace orvane::core
