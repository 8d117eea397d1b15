#pragma once
// A bounded map from text keys to values, dropping the least recently used
// entries once it holds more than countLimit of them or their costs add up
// past costLimit. The entry stored last always stays, however costly, so
// that a single large picture is not dropped and decoded again at every
// frame. Not thread-safe: its owner guards it with its own lock.

#include <cstddef>
#include <list>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>

namespace orvane::render {

template <class Value>
class BoundedCache {
 public:
  BoundedCache(std::size_t countLimit, std::size_t costLimit) : countLimit_(countLimit), costLimit_(costLimit) {}

  // The value under key, now the most recently used; none on a miss.
  std::optional<Value> find(const std::string& key) {
    const auto found = index_.find(key);
    if (found == index_.end()) return std::nullopt;
    entries_.splice(entries_.begin(), entries_, found->second);
    return found->second->value;
  }

  // Stores value under key (replacing what was there), then drops the least
  // recently used entries beyond the limits.
  void store(const std::string& key, Value value, std::size_t cost) {
    if (const auto found = index_.find(key); found != index_.end()) remove(found->second);
    entries_.push_front(Entry{key, std::move(value), cost});
    index_.emplace(key, entries_.begin());
    totalCost_ += cost;
    while (entries_.size() > 1 && (entries_.size() > countLimit_ || totalCost_ > costLimit_)) {
      remove(std::prev(entries_.end()));
    }
  }

  void clear() {
    entries_.clear();
    index_.clear();
    totalCost_ = 0;
  }

  std::size_t count() const { return entries_.size(); }
  std::size_t totalCost() const { return totalCost_; }

 private:
  struct Entry {
    std::string key;
    Value value;
    std::size_t cost;
  };
  using Iterator = typename std::list<Entry>::iterator;

  void remove(Iterator entry) {
    totalCost_ -= entry->cost;
    index_.erase(entry->key);
    entries_.erase(entry);
  }

  std::size_t countLimit_;
  std::size_t costLimit_;
  std::size_t totalCost_ = 0;
  // Most recently used first.
  std::list<Entry> entries_;
  std::unordered_map<std::string, Iterator> index_;
};

}  // namespace orvane::render
