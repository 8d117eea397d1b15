#include "render/pixel_memory.hpp"

#include <mutex>
#include <new>
#include <vector>

namespace orvane::render::pixel_memory {

namespace {

// Blocks below this go straight to the allocator, which serves them fast.
constexpr std::size_t kRecycledMinBytes = std::size_t{1} << 20;
// At most this many blocks and bytes are kept.
constexpr std::size_t kMaxKeptBlocks = 8;
constexpr std::size_t kMaxKeptBytes = std::size_t{512} << 20;
constexpr std::align_val_t kAlignment{alignof(Rgba)};

struct Block {
  Rgba* pixels;
  std::size_t count;
};

struct Kept {
  Kept() { blocks.reserve(kMaxKeptBlocks); }
  std::mutex mutex;
  std::vector<Block> blocks;  // guarded by mutex; never past its reserve
  std::size_t bytes = 0;      // guarded by mutex
};

Kept& kept() {
  // Never destroyed: threads may free pictures while the program exits.
  static Kept* instance = new Kept;
  return *instance;
}

Rgba* allocate(std::size_t count) {
  if (count > SIZE_MAX / sizeof(Rgba)) return nullptr;
  return static_cast<Rgba*>(::operator new[](count * sizeof(Rgba), kAlignment, std::nothrow));
}

void deallocate(Rgba* pixels) noexcept { ::operator delete[](pixels, kAlignment); }

}  // namespace

Rgba* acquire(std::size_t count) {
  if (count == 0) count = 1;
  if (count * sizeof(Rgba) >= kRecycledMinBytes) {
    Kept& k = kept();
    std::lock_guard lock(k.mutex);
    // The smallest kept block that holds count pixels without wasting more
    // than half of itself.
    std::size_t best = k.blocks.size();
    for (std::size_t i = 0; i < k.blocks.size(); ++i) {
      const std::size_t c = k.blocks[i].count;
      if (c >= count && c <= count + count / 2 && (best == k.blocks.size() || c < k.blocks[best].count)) best = i;
    }
    if (best != k.blocks.size()) {
      Rgba* pixels = k.blocks[best].pixels;
      k.bytes -= k.blocks[best].count * sizeof(Rgba);
      k.blocks[best] = k.blocks.back();
      k.blocks.pop_back();
      return pixels;
    }
  }
  return allocate(count);
}

void release(Rgba* pixels, std::size_t count) noexcept {
  if (pixels == nullptr) return;
  if (count == 0) count = 1;
  const std::size_t bytes = count * sizeof(Rgba);
  if (bytes >= kRecycledMinBytes) {
    Kept& k = kept();
    std::lock_guard lock(k.mutex);
    if (k.blocks.size() < kMaxKeptBlocks && k.bytes + bytes <= kMaxKeptBytes) {
      k.blocks.push_back({pixels, count});  // capacity reserved below: no throw
      k.bytes += bytes;
      return;
    }
  }
  deallocate(pixels);
}

void trim() noexcept {
  Kept& k = kept();
  std::vector<Block> blocks;
  {
    std::lock_guard lock(k.mutex);
    blocks.swap(k.blocks);
    k.bytes = 0;
    k.blocks.reserve(kMaxKeptBlocks);
  }
  for (const Block& b : blocks) deallocate(b.pixels);
}

std::size_t keptBytes() noexcept {
  Kept& k = kept();
  std::lock_guard lock(k.mutex);
  return k.bytes;
}

}  // namespace orvane::render::pixel_memory
