#pragma once
// The way into the desktop application from main: checks for a display,
// makes the QApplication with the program's identity (settings under
// "Brightfold"/"Orvane", the desktop file "orvane"), runs the application
// delegate and the event loop. Main thread.

#include <filesystem>
#include <string_view>
#include <vector>

namespace orvane::app {

// The sentence printed when the desktop application cannot start.
inline constexpr std::string_view kNoDisplaySentence =
    "No display is available; use a command such as info, frame, export or assist, or see --help.";

// Whether windows can be shown: an X11 or Wayland display is named, or Qt
// is told to use a platform that needs none (offscreen, vnc, ...).
bool displayAvailable();

// Whether these command-line arguments (without the program name) ask for
// the desktop application: none at all, or project files only.
bool argumentsAskForDesktop(const std::vector<std::string_view>& arguments);

// Runs the desktop application until it quits, opening files at launch.
// Returns the exit code.
int runDesktopApplication(int& argc, char** argv, const std::vector<std::filesystem::path>& files);

}  // namespace orvane::app
