#pragma once
// Whether an open project has changes that its file lacks. Moving the
// playhead is stored in the project yet is no change worth a question at
// close, so playheads are left out of the comparison. Pure; any thread.

#include "core/project.hpp"

namespace orvane::app {

bool hasUnsavedChanges(const core::OVProject& current, const core::OVProject& saved);

}  // namespace orvane::app
