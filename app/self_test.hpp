#pragma once
// A built-in check of the workspace without a person at the screen: with
// OV_SELFTEST_WORKSPACE set to a PNG path, 1.5 seconds after launch the
// program picks "Full HD 1080p" on the welcome window, adds a text layer
// through the Layer menu, writes a picture of the document window to that
// path and quits. Main thread. A launch with the self-test asked for puts
// up no recovery question, which would hold the check up.

namespace orvane::app {

class AppDelegate;

bool selfTestAsked();
void scheduleSelfTestIfAsked(AppDelegate& delegate);

}  // namespace orvane::app
