// `orvane frame PROJECT --time SECONDS [--composition NAME] [--scale S] -o
// FRAME.png`: renders one moment of a composition to an 8-bit PNG, with
// alpha when the composition is transparent. Works without a display: text
// is laid out on the offscreen platform. A composition with footage, at any
// level of nesting, is assembled and read through the media engine, so the
// frame is the one playback and export show at that time; missing footage
// fails with the engine's sentence. The PNG replaces any file at the output
// path whole or not at all.

#include <QImage>
#include <QSaveFile>
#include <QString>
#include <cmath>
#include <filesystem>
#include <memory>
#include <string>

#include "cli/commands.hpp"
#include "cli/project_input.hpp"
#include "document/media_access.hpp"
#include "document/packaged_media.hpp"
#include "media/composition_assembler.hpp"
#include "media/composition_reader.hpp"
#include "render/frame_compositor.hpp"
#include "render/gui_runtime.hpp"
#include "render/render_plan.hpp"
#include "render/rgba8.hpp"

namespace orvane::cli {

namespace {

struct FrameOptions {
  std::string project;
  double seconds = 0;
  std::string composition;
  double scale = 1;
  std::string output;
};

void checkOptions(const FrameOptions& options) {
  if (!std::isfinite(options.seconds) || options.seconds < 0 || options.seconds > 1e9) {
    throw CommandFailure("The time must be a number of seconds from 0 on.", kExitUsage);
  }
  if (!std::isfinite(options.scale) || options.scale <= 0 || options.scale > 16) {
    throw CommandFailure("The scale must be a number above 0 and at most 16.", kExitUsage);
  }
}

void writePng(const render::Image& picture, render::PixelSize size, bool withAlpha, const std::string& output) {
  auto bytes = render::toRgba8(picture, {0, 0, size.width, size.height});
  if (!bytes) throw CommandFailure("The frame could not be rendered: " + std::string(render::message(bytes.error())));
  QImage image(bytes->data(), size.width, size.height, size.width * 4, QImage::Format_RGBA8888);
  if (!withAlpha) image = image.convertToFormat(QImage::Format_RGB888);
  QSaveFile file(QString::fromStdString(output));
  if (!file.open(QIODevice::WriteOnly) || !image.save(&file, "PNG") || !file.commit()) {
    throw CommandFailure("Could not write \"" + output + "\": " + file.errorString().toStdString() + ".");
  }
}

// Whether a video layer is drawn anywhere that nesting reaches.
bool reachesFootage(const render::RenderPlan& plan) {
  for (const auto& [id, composition] : plan.compositionsByID) {
    for (const core::Layer& layer : composition.layers) {
      if (layer.isEnabled && layer.kind() == core::LayerKind::video) return true;
    }
  }
  return false;
}

render::Image footageFrame(const core::Composition& composition, const core::OVProject& project, double scale,
                           const core::OVTime& t) {
  auto assembled = media::CompositionAssembler{}.assemble(composition, project, scale);
  if (!assembled) throw CommandFailure(assembled.error().message());
  media::CompositionReader reader(std::move(*assembled));
  auto picture = reader.videoFrameAt(t);
  if (!picture) throw CommandFailure(picture.error().message());
  return std::move(*picture);
}

void renderFrame(const FrameOptions& options) {
  checkOptions(options);
  const core::OVProject project = withResolvedMedia(readProjectOrFail(options.project), options.project);
  const core::Composition& composition = chosenComposition(project, options.composition, "render");
  if (composition.frameRate.numerator <= 0 || composition.frameRate.denominator <= 0) {
    throw CommandFailure("The composition \"" + composition.name + "\" has an invalid frame rate.");
  }
  std::optional<render::RenderPlan> plan = render::stillsPlan(project, composition.id, options.scale);
  if (!plan) throw CommandFailure("The project has no composition to render.");
  if (!render::ensureGuiRuntime()) throw CommandFailure("Text cannot be laid out in this process.");
  const core::OVTime t = composition.frameRate.snapped(core::OVTime::fromSeconds(options.seconds));
  const render::Image picture = reachesFootage(*plan) ? footageFrame(composition, project, options.scale, t)
                                                     : render::FrameCompositor::composeFrame(*plan, t, {});
  writePng(picture, plan->renderSize(), composition.isTransparent, options.output);
}

}  // namespace

void addFrameCommand(CLI::App& app) {
  auto options = std::make_shared<FrameOptions>();
  CLI::App* command = app.add_subcommand("frame", "Render one frame of a composition to a PNG file");
  command->add_option("PROJECT", options->project, "The project file to read")->required();
  command->add_option("-t,--time", options->seconds, "The moment to render, in seconds")->required();
  command->add_option("-c,--composition", options->composition,
                      "The composition to render, by name (default: the active one)");
  command->add_option("-s,--scale", options->scale, "Output pixels per composition pixel (default: 1)");
  command->add_option("-o,--output", options->output, "The PNG file to write")->required();
  command->callback([options] { renderFrame(*options); });
}

}  // namespace orvane::cli
