#pragma once
// Text-valued enumerations. Each such enum E specialises `EnumTable<E>` with a
// constexpr array `entries` of {case, raw text, display name} in the declared
// order of the cases; the functions below then serve every enum alike.

#include <array>
#include <optional>
#include <span>
#include <string_view>

namespace orvane::core {

template <class E>
struct EnumEntry {
  E value;
  std::string_view raw;
  std::string_view display;
};

template <class E>
struct EnumTable;  // specialised next to each enum

// The raw text stored in files ("easeInOut").
template <class E>
constexpr std::string_view rawValue(E value) {
  for (const auto& e : EnumTable<E>::entries)
    if (e.value == value) return e.raw;
  return {};
}

// The text shown to users ("Ease In & Out").
template <class E>
constexpr std::string_view displayName(E value) {
  for (const auto& e : EnumTable<E>::entries)
    if (e.value == value) return e.display;
  return {};
}

// The case whose raw text is exactly `raw`, or no value.
template <class E>
constexpr std::optional<E> fromRaw(std::string_view raw) {
  for (const auto& e : EnumTable<E>::entries)
    if (e.raw == raw) return e.value;
  return std::nullopt;
}

// Every case in declared order.
template <class E>
constexpr auto allCases() {
  constexpr auto& entries = EnumTable<E>::entries;
  std::array<E, entries.size()> out{};
  for (std::size_t i = 0; i < entries.size(); ++i) out[i] = entries[i].value;
  return out;
}

}  // namespace orvane::core
