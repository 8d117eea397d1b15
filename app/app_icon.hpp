#pragma once
// The program's icon: the installed theme icon "orvane" when the desktop
// has it, else the same picture built into the program. Main thread, with a
// QGuiApplication running.

#include <QIcon>

namespace orvane::app {

QIcon applicationIcon();

}  // namespace orvane::app
