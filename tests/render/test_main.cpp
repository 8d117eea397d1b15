// The render tests draw text, which needs the GUI runtime; it is started on
// the offscreen platform before any test runs.

#include <gtest/gtest.h>

#include "render/gui_runtime.hpp"

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  if (!orvane::render::ensureGuiRuntime()) return 1;
  return RUN_ALL_TESTS();
}
