#pragma once
// A list shared copy-on-write: copying is O(1), and two copies that still share
// their storage compare equal without looking at the elements. For short lists
// of small values (keyframes, markers, masks, assets). Not thread-safe by
// itself: like any value, one instance is touched by one thread at a time, but
// copies may live on different threads.

#include <atomic>
#include <cstddef>
#include <initializer_list>
#include <memory>
#include <vector>

#include "core/hashing.hpp"

namespace orvane::core {

template <class T>
class SharedVector {
 public:
  using value_type = T;
  using const_iterator = typename std::vector<T>::const_iterator;

  SharedVector() = default;
  SharedVector(std::vector<T> items)  // NOLINT(google-explicit-constructor): a list is a list
      : data_(items.empty() ? nullptr : std::make_shared<std::vector<T>>(std::move(items))) {}
  SharedVector(std::initializer_list<T> items) : SharedVector(std::vector<T>(items)) {}

  const std::vector<T>& items() const { return data_ ? *data_ : emptyItems(); }
  std::size_t size() const { return data_ ? data_->size() : 0; }
  bool empty() const { return size() == 0; }
  const_iterator begin() const { return items().begin(); }
  const_iterator end() const { return items().end(); }
  const T& operator[](std::size_t i) const { return items()[i]; }
  const T& front() const { return items().front(); }
  const T& back() const { return items().back(); }

  // The storage of this copy alone, copied first if another copy shares it.
  // The reference is valid until this value is next copied or mutated.
  std::vector<T>& mutate() {
    if (!data_) {
      data_ = std::make_shared<std::vector<T>>();
    } else if (data_.use_count() != 1) {
      data_ = std::make_shared<std::vector<T>>(*data_);
    } else {
      // Pairs with the release of the last other owner, so its reads of the
      // elements happen before our writes.
      std::atomic_thread_fence(std::memory_order_acquire);
    }
    return *data_;
  }

  // True when both copies share one storage (equal without a walk).
  bool sharesStorageWith(const SharedVector& other) const { return data_ == other.data_; }

  friend bool operator==(const SharedVector& a, const SharedVector& b) {
    return a.data_ == b.data_ || a.items() == b.items();
  }
  friend std::size_t hashValue(const SharedVector& v) { return hashValue(v.items()); }

 private:
  static const std::vector<T>& emptyItems() {
    static const std::vector<T> kEmpty;
    return kEmpty;
  }

  std::shared_ptr<std::vector<T>> data_;  // null means empty
};

}  // namespace orvane::core
