#pragma once
// The whole `orvane` command line: builds the CLI11 application with its
// global options and commands, parses the arguments and runs what they ask
// for. No exception leaves it: every failure becomes one line on `err` and a
// non-zero exit code (see commands.hpp). Main thread only.

#include <iosfwd>

namespace orvane::cli {

// Runs the program for argv[0..argc) and returns its exit code.
int runCommandLine(int argc, const char* const* argv, std::ostream& out, std::ostream& err);

}  // namespace orvane::cli
