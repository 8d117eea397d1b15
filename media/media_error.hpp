#pragma once
// Why opening or decoding a media file failed, for the engine's own callers
// (decoders, the asset cache). Import turns these into MediaImportError's
// sentences; the composition reader reports the file as unreadable. Plain
// value; any thread.

#include <string_view>

namespace orvane::media {

enum class MediaError {
  missingFile,    // nothing readable at the path
  unreadable,     // not a container FFmpeg can open, or damaged
  noVideoStream,  // the file has no video stream with a decoder here
  noAudioStream,  // the file has no audio stream with a decoder here
  decodeFailed,   // the codec refused the data
  outOfMemory     // buffers or pictures could not be allocated
};

// One sentence for people.
std::string_view message(MediaError error);

}  // namespace orvane::media
