// Picture memory: large blocks come back for the next picture of about
// their size; small ones and a surplus go back to the system.

#include "render/pixel_memory.hpp"

#include <gtest/gtest.h>

namespace orvane::render {
namespace {

constexpr std::size_t kLarge = 1 << 17;  // 2 MB of pixels

TEST(PixelMemoryTest, AFreedLargeBlockServesTheNextPictureOfAboutItsSize) {
  pixel_memory::trim();
  Rgba* first = pixel_memory::acquire(kLarge);
  ASSERT_NE(first, nullptr);
  pixel_memory::release(first, kLarge);
  EXPECT_EQ(pixel_memory::keptBytes(), kLarge * sizeof(Rgba));
  // Far smaller: it would waste most of the block, so a new one is made.
  Rgba* small = pixel_memory::acquire(kLarge / 4);
  EXPECT_NE(small, first);
  pixel_memory::release(small, kLarge / 4);
  // A little smaller: the kept block serves, and is no longer kept.
  Rgba* again = pixel_memory::acquire(kLarge - 100);
  EXPECT_EQ(again, first);
  pixel_memory::release(again, kLarge);
  pixel_memory::trim();
  EXPECT_EQ(pixel_memory::keptBytes(), 0u);
}

TEST(PixelMemoryTest, SmallBlocksAndASurplusAreNotKept) {
  pixel_memory::trim();
  pixel_memory::release(pixel_memory::acquire(16), 16);
  EXPECT_EQ(pixel_memory::keptBytes(), 0u);
  std::vector<Rgba*> blocks;
  for (int i = 0; i < 20; ++i) blocks.push_back(pixel_memory::acquire(kLarge));
  for (Rgba* block : blocks) pixel_memory::release(block, kLarge);
  // A few blocks at most are kept, however many were freed.
  EXPECT_GT(pixel_memory::keptBytes(), 0u);
  EXPECT_LE(pixel_memory::keptBytes(), 8 * kLarge * sizeof(Rgba));
  pixel_memory::trim();
  EXPECT_EQ(pixel_memory::keptBytes(), 0u);
}

}  // namespace
}  // namespace orvane::render
