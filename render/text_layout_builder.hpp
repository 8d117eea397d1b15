#pragma once
// Text layout shared by the text drawing and the editing surfaces: fonts,
// the margin that holds stroke, shadow and backing, the type-on count and
// the measured size. Needs the GUI runtime (gui_runtime.hpp). Stateless;
// any thread.

#include <optional>
#include <string_view>

#include "core/geometry.hpp"
#include "core/layer_content.hpp"

namespace orvane::render {

struct TextLayoutBuilder {
  // How many user-perceived characters of string show at a reveal of value
  // percent: all from 100, none at 0 or below, else value/100 × count
  // rounded up.
  static int revealedCount(double value, std::string_view string);
  // The margin around the text box that holds the backing, stroke and
  // shadow, rounded up.
  static double padding(const core::TextContent& content);
  // The size of the laid-out text, margin included; lines wrap at maxWidth
  // when given. Fits core::TextMeasure.
  static core::OVSize measure(const core::TextContent& content, std::optional<double> maxWidth);
};

}  // namespace orvane::render
