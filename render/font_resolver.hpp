#pragma once
// Fonts by the names projects store: families ("Helvetica", "Avenir Next")
// and PostScript-style "Family-Style" names ("Helvetica-Bold",
// "Arial-BoldItalicMT", "AvenirNext-Heavy"), found through Qt's font
// database over fontconfig. A family is present when the database lists it
// or fontconfig aliases it to a font of its own (Helvetica to Nimbus Sans);
// a name that only reaches fontconfig's catch-all default is missing.
// Resolved names are remembered for the process. Any thread, once the GUI
// runtime runs.

#include <QFont>
#include <string>

namespace orvane::render {

// The font name asks for, at an em size of pixelSize layer pixels (at any
// screen resolution); the system font in bold when no such family exists.
// Letter spacing is left at 0, hinting off so that advances scale exactly.
QFont fontNamed(const std::string& name, double pixelSize);

// Whether name resolves to a family that exists (not to the bold fallback).
bool fontNameResolves(const std::string& name);

}  // namespace orvane::render
