#pragma once
// Text layout and font look-up need Qt's GUI runtime (a QGuiApplication).
// The desktop application makes its own; programs without a window (the
// command line, tests, render workers) call ensureGuiRuntime() once on the
// main thread before rendering, which starts one on the offscreen platform
// unless QT_QPA_PLATFORM names another. Drawing into images works from any
// thread once it runs.

namespace orvane::render {

// Starts the GUI runtime when none runs. False when a non-GUI Qt
// application object already exists, so that text cannot be laid out.
bool ensureGuiRuntime();

}  // namespace orvane::render
