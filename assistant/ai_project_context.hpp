#pragma once
// The text the model reads about the open project at each request: fixed
// instructions, then the project's state in Markdown-like sections with the
// exact ids the tools take. Built afresh before every model call of a turn,
// on the main thread.

#include <string>

#include "core/project.hpp"

namespace orvane::assistant {

struct AIProjectContext {
  static std::string systemPrompt(const core::OVProject& project);
  static std::string build(const core::OVProject& project);
};

}  // namespace orvane::assistant
