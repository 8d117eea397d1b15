#include "media/composition_signature.hpp"

#include <charconv>
#include <cmath>

#include "core/enum_text.hpp"
#include "media/composition_assembler.hpp"

namespace orvane::media {

namespace {

constexpr int kMaxNestingDepth = 8;

// Shortest text that reads back to the same double, always with a decimal
// point for whole numbers ("10.0"), so that the text is the same on every run.
std::string number(double value) {
  char buffer[64];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  std::string text(buffer, result.ptr);
  if (std::isfinite(value) && text.find_first_of(".e") == std::string::npos) text += ".0";
  return text;
}

// A size side as a whole number; sides no picture could have read as 0.
std::string whole(double side) {
  return std::isfinite(side) && std::abs(side) < 1e15 ? std::to_string(std::llround(side)) : std::string("0");
}

std::string seconds(const core::OVTime& t) { return number(t.seconds()); }

std::string flags(const core::Layer& layer) {
  std::string text;
  for (const bool flag : {layer.isEnabled, layer.isSolo, layer.usesSourceAudio, layer.audio.isMuted}) {
    text += flag ? '1' : '0';
  }
  return text;
}

// Start, duration and source start, then the file for layers with an asset.
std::string timing(const core::Layer& layer, const core::OVProject& project, char separator) {
  std::string text = seconds(layer.timeRange.start) + separator + seconds(layer.timeRange.duration) + separator +
                     seconds(layer.sourceStart);
  if (const auto assetID = layer.content.assetID()) {
    const core::MediaAsset* asset = project.asset(*assetID);
    text += separator;
    text += asset ? asset->id.text() + separator + asset->path : std::string("missing");
  }
  return text;
}

std::string audioValues(const core::AudioProperties& audio) {
  std::string text;
  for (const double value : {audio.normalizeGain, audio.echoMix, audio.echoDelayMs, audio.echoFeedback,
                             audio.reverbMix, audio.reverbDecay, audio.pitchSemitones, audio.pitchCents}) {
    text += number(value) + ',';
  }
  return text + std::string(core::rawValue(audio.pitchMode));
}

std::string layerEntry(const core::Layer& layer, const core::OVProject& project) {
  std::string text = std::string(core::rawValue(layer.kind())) + ',' + flags(layer);
  // The pan is applied by the mix from the assembled parameters, so it is
  // structural here just as the volume is.
  text += ',' + std::to_string(hashValue(layer.audio.volume)) + ',' + std::to_string(hashValue(layer.audio.pan)) +
          ',' + seconds(layer.fadeIn) + ',' + seconds(layer.fadeOut);
  text += ',' + audioValues(layer.audio);
  if (layer.affectsCompositionStructure()) text += ',' + timing(layer, project, ',');
  if (const auto nestedID = layer.content.compositionID()) {
    text += ':' + nestedStructureFingerprint(*nestedID, project, 0);
  }
  return text;
}

}  // namespace

std::string nestedStructureFingerprint(const core::Uuid& compositionID, const core::OVProject& project, int depth) {
  if (depth >= kMaxNestingDepth) return "";
  const core::Composition* composition = project.composition(compositionID);
  if (composition == nullptr) return "missing";
  std::string text = whole(composition->size.width) + 'x' + whole(composition->size.height) + ',' +
                     seconds(composition->duration);
  for (const core::Layer& layer : composition->layers) {
    text += ',';
    text += std::string(core::rawValue(layer.kind())) + ';' + flags(layer);
    if (layer.affectsCompositionStructure()) text += ';' + timing(layer, project, ';');
    if (const auto nestedID = layer.content.compositionID()) {
      text += nestedStructureFingerprint(*nestedID, project, depth + 1) + '/';
    }
  }
  return text;
}

CompositionSignature::CompositionSignature(const core::Composition& composition, const core::OVProject& project) {
  value = seconds(assembledDuration(composition)) + '|' + whole(composition.size.width) + 'x' +
          whole(composition.size.height) + '|' +
          std::to_string(composition.frameRate.numerator) + '/' + std::to_string(composition.frameRate.denominator);
  for (const core::Layer& layer : composition.layers) value += '|' + layerEntry(layer, project);
}

}  // namespace orvane::media
