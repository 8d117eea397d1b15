#pragma once
// A persistent list for large lists of large values (the layers of a
// composition, the compositions of a project). Elements live in their own
// shared boxes, grouped into chunks of shared pointers under one shared root:
//   root -> chunks -> boxed elements
// Copying the list is O(1). Changing one element copies the root's chunk
// table, one chunk of pointers and that one element, so a changed snapshot of
// a 1,000-layer composition costs about as much as a 10-layer one. `==`
// returns early on a shared root, skips shared chunks and shared boxes, and
// compares elements deeply only where storage differs.
//
// Threading as for any value: one instance is touched by one thread at a time;
// copies may live on other threads.

#include <atomic>
#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "core/hashing.hpp"

namespace orvane::core {

template <class T>
class PersistentList {
  using Box = std::shared_ptr<T>;
  using Chunk = std::vector<Box>;
  using ChunkPtr = std::shared_ptr<Chunk>;
  struct Root {
    std::vector<ChunkPtr> chunks;  // never holds an empty chunk
    std::size_t size = 0;
  };

 public:
  static constexpr std::size_t kChunkSize = 32;      // chunk size when built
  static constexpr std::size_t kMaxChunkSize = 64;   // a chunk splits beyond this

  class const_iterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = T;
    using difference_type = std::ptrdiff_t;
    using pointer = const T*;
    using reference = const T&;

    const_iterator() = default;
    reference operator*() const { return *(*root_->chunks[chunk_])[offset_]; }
    pointer operator->() const { return &**this; }
    const_iterator& operator++() {
      if (++offset_ == root_->chunks[chunk_]->size()) {
        offset_ = 0;
        ++chunk_;
      }
      return *this;
    }
    const_iterator operator++(int) {
      auto old = *this;
      ++*this;
      return old;
    }
    friend bool operator==(const const_iterator& a, const const_iterator& b) {
      return a.chunk_ == b.chunk_ && a.offset_ == b.offset_;
    }

   private:
    friend class PersistentList;
    const_iterator(const Root* root, std::size_t chunk) : root_(root), chunk_(chunk) {}
    const Root* root_ = nullptr;
    std::size_t chunk_ = 0;
    std::size_t offset_ = 0;
  };

  PersistentList() = default;
  PersistentList(const std::vector<T>& items) { assign(items.begin(), items.end()); }  // NOLINT
  PersistentList(std::initializer_list<T> items) { assign(items.begin(), items.end()); }

  std::size_t size() const { return root_ ? root_->size : 0; }
  bool empty() const { return size() == 0; }
  const_iterator begin() const { return const_iterator(root_.get(), 0); }
  const_iterator end() const { return const_iterator(root_.get(), root_ ? root_->chunks.size() : 0); }

  const T& operator[](std::size_t index) const {
    const auto [c, o] = locate(index);
    return *(*root_->chunks[c])[o];
  }
  const T& front() const { return (*this)[0]; }
  const T& back() const { return (*this)[size() - 1]; }

  // Index of the first element for which pred holds, or no value.
  template <class Pred>
  std::optional<std::size_t> indexWhere(Pred pred) const {
    std::size_t i = 0;
    for (const T& item : *this) {
      if (pred(item)) return i;
      ++i;
    }
    return std::nullopt;
  }

  std::vector<T> toVector() const { return std::vector<T>(begin(), end()); }

  void push_back(T value) { insert(size(), std::move(value)); }

  // Inserts before `index`; an index past the end appends.
  void insert(std::size_t index, T value) {
    Root& root = mutableRoot();
    if (index > root.size) index = root.size;
    Box box = std::make_shared<T>(std::move(value));
    if (root.chunks.empty()) {
      root.chunks.push_back(std::make_shared<Chunk>(Chunk{std::move(box)}));
      root.size = 1;
      return;
    }
    auto [c, o] = index == root.size ? std::pair{root.chunks.size() - 1, root.chunks.back()->size()}
                                     : locate(index);
    Chunk& chunk = mutableChunk(root, c);
    chunk.insert(chunk.begin() + static_cast<std::ptrdiff_t>(o), std::move(box));
    ++root.size;
    if (chunk.size() > kMaxChunkSize) splitChunk(root, c);
  }

  void erase(std::size_t index) {
    if (index >= size()) return;
    Root& root = mutableRoot();
    const auto [c, o] = locate(index);
    Chunk& chunk = mutableChunk(root, c);
    chunk.erase(chunk.begin() + static_cast<std::ptrdiff_t>(o));
    --root.size;
    if (chunk.empty()) root.chunks.erase(root.chunks.begin() + static_cast<std::ptrdiff_t>(c));
    if (root.size == 0) root_.reset();  // an empty list never keeps a root
  }

  void set(std::size_t index, T value) {
    if (index >= size()) return;
    Root& root = mutableRoot();
    const auto [c, o] = locate(index);
    mutableChunk(root, c)[o] = std::make_shared<T>(std::move(value));
  }

  // Applies change(T&) to the element at index, copying only what is shared.
  template <class Change>
  void update(std::size_t index, Change&& change) {
    if (index >= size()) return;
    Root& root = mutableRoot();
    const auto [c, o] = locate(index);
    change(mutableItem(mutableChunk(root, c)[o]));
  }

  // Applies change(T&) to every element for which pred(const T&) holds, in
  // order; elements that do not match stay shared.
  template <class Pred, class Change>
  void updateWhere(Pred pred, Change change) {
    if (!root_) return;
    for (std::size_t c = 0; c < root_->chunks.size(); ++c) {
      for (std::size_t o = 0; o < root_->chunks[c]->size(); ++o) {
        if (!pred(static_cast<const T&>(*(*root_->chunks[c])[o]))) continue;
        Root& root = mutableRoot();
        change(mutableItem(mutableChunk(root, c)[o]));
      }
    }
  }

  void clear() { root_.reset(); }

  bool sharesStorageWith(const PersistentList& other) const { return root_ == other.root_; }

  friend bool operator==(const PersistentList& a, const PersistentList& b) {
    if (a.root_ == b.root_) return true;
    if (a.size() != b.size()) return false;
    const auto& ca = a.root_->chunks;
    const auto& cb = b.root_->chunks;
    std::size_t ia = 0, oa = 0, ib = 0, ob = 0;
    while (ia < ca.size()) {
      if (oa == 0 && ob == 0 && ca[ia] == cb[ib]) {  // a shared chunk: equal as a whole
        ++ia;
        ++ib;
        continue;
      }
      const Box& x = (*ca[ia])[oa];
      const Box& y = (*cb[ib])[ob];
      if (x != y && !(*x == *y)) return false;
      if (++oa == ca[ia]->size()) oa = 0, ++ia;
      if (++ob == cb[ib]->size()) ob = 0, ++ib;
    }
    return true;
  }

  friend std::size_t hashValue(const PersistentList& list) {
    std::size_t seed = list.size();
    for (const T& item : list) hashCombine(seed, hashValue(item));
    return seed;
  }

 private:
  template <class It>
  void assign(It first, It last) {
    auto root = std::make_shared<Root>();
    for (; first != last; ++first) {
      if (root->chunks.empty() || root->chunks.back()->size() == kChunkSize) {
        root->chunks.push_back(std::make_shared<Chunk>());
        root->chunks.back()->reserve(kChunkSize);
      }
      root->chunks.back()->push_back(std::make_shared<T>(*first));
      ++root->size;
    }
    root_ = root->size ? std::move(root) : nullptr;
  }

  std::pair<std::size_t, std::size_t> locate(std::size_t index) const {
    std::size_t c = 0;
    while (index >= root_->chunks[c]->size()) index -= root_->chunks[c++]->size();
    return {c, index};
  }

  // Unique ownership is seen through use_count; the acquire fence pairs with
  // the release of the last other owner before we write in place.
  template <class P>
  static bool ownedAlone(const P& p) {
    if (p.use_count() != 1) return false;
    std::atomic_thread_fence(std::memory_order_acquire);
    return true;
  }

  Root& mutableRoot() {
    if (!root_) root_ = std::make_shared<Root>();
    else if (!ownedAlone(root_)) root_ = std::make_shared<Root>(*root_);
    return *root_;
  }

  static Chunk& mutableChunk(Root& root, std::size_t c) {
    if (!ownedAlone(root.chunks[c])) root.chunks[c] = std::make_shared<Chunk>(*root.chunks[c]);
    return *root.chunks[c];
  }

  static T& mutableItem(Box& box) {
    if (!ownedAlone(box)) box = std::make_shared<T>(*box);
    return *box;
  }

  static void splitChunk(Root& root, std::size_t c) {
    Chunk& chunk = *root.chunks[c];
    const auto half = static_cast<std::ptrdiff_t>(chunk.size() / 2);
    auto tail = std::make_shared<Chunk>(chunk.begin() + half, chunk.end());
    chunk.erase(chunk.begin() + half, chunk.end());
    root.chunks.insert(root.chunks.begin() + static_cast<std::ptrdiff_t>(c) + 1, std::move(tail));
  }

  std::shared_ptr<Root> root_;  // null exactly when empty
};

}  // namespace orvane::core
