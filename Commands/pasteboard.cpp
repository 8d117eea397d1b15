// The in-memory pasteboard.

#include "Commands/pasteboard.hpp"

namespace orvane::commands {

std::optional<std::string> MemoryPasteboard::data(std::string_view type) const {
  const auto it = items_.find(type);
  if (it == items_.end()) return std::nullopt;
  return it->second;
}

void MemoryPasteboard::clear() { items_.clear(); }

void MemoryPasteboard::setData(std::string_view type, std::string bytes) {
  items_.insert_or_assign(std::string(type), std::move(bytes));
}

}  // namespace orvane::commands
