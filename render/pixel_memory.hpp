#pragma once
// The memory behind pictures' pixels. Pixels come uninitialised (every
// kernel writes what it makes), and large blocks are recycled: a full HD
// frame in floats is 33 MB, which the C library would otherwise map fresh
// from the system and fault in page by page for every frame. A few freed
// large blocks are kept for the next picture of about their size. Any
// thread; the lock guards only the list of kept blocks.

#include <cstddef>
#include <memory>

#include "render/rgba.hpp"

namespace orvane::render {

namespace pixel_memory {

// count pixels, 16-byte aligned, values unset; null when memory runs out.
Rgba* acquire(std::size_t count);
// Returns what acquire(count) gave.
void release(Rgba* pixels, std::size_t count) noexcept;
// Frees the kept blocks (tests, and memory warnings).
void trim() noexcept;
// Bytes held in kept blocks now.
std::size_t keptBytes() noexcept;

}  // namespace pixel_memory

struct PixelMemoryDeleter {
  std::size_t count = 0;
  void operator()(Rgba* pixels) const noexcept { pixel_memory::release(pixels, count); }
};

using PixelStorage = std::unique_ptr<Rgba[], PixelMemoryDeleter>;

// count pixels from acquire, owned; empty when memory runs out.
inline PixelStorage makePixelStorage(std::size_t count) {
  return PixelStorage(pixel_memory::acquire(count), PixelMemoryDeleter{count});
}

}  // namespace orvane::render
