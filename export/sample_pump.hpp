#pragma once
// The two pull-and-append loops of an export. Each pulls its next sample
// from its reader only once the encoder has taken the last one (the encoder
// hands back its packets first when it is full), and stops early when told
// to. The video pump composes frame after frame of the range at the export
// rate; the audio pump mixes the range block by block. Each runs on one
// thread, with a reader, an encoder and a sink of its own.

#include <functional>
#include <optional>
#include <string>

#include "core/frame_rate.hpp"
#include "core/ov_time.hpp"
#include "export/encoders.hpp"
#include "media/composition_reader.hpp"

namespace orvane::export_ {

// How a pump ended early; both empty when it ran to the end (or was stopped).
struct PumpFailure {
  std::optional<std::string> reading;  // the reader's sentence
  std::optional<std::string> writing;  // the encoder's or the muxer's sentence
  bool failed() const { return reading || writing; }
};

struct PumpControl {
  // Asked before each sample: true ends the pump without finishing its stream.
  std::function<bool()> shouldStop;
  // After each sample is appended, with its composition time in seconds.
  std::function<void(double)> onSample;
};

// Frames of range at rate: frame n at range.start + n frames, as many as the
// range holds (at least one).
std::int64_t frameCountFor(const core::OVTimeRange& range, core::FrameRate rate);

PumpFailure runVideoPump(media::CompositionReader& reader, VideoEncoder& encoder, const core::OVTimeRange& range,
                         core::FrameRate rate, const PacketSink& sink, const PumpControl& control);

PumpFailure runAudioPump(media::CompositionReader& reader, AudioEncoder& encoder, const core::OVTimeRange& range,
                         const PacketSink& sink, const PumpControl& control);

}  // namespace orvane::export_
