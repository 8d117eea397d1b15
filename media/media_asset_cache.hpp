#pragma once
// The opened media files of the process, by path: the file's probed facts
// and its decoders, so that rebuilding a composition, thumbnails and the
// mix reuse what is open instead of opening and probing the file again.
//
// A decoder is handed out as a lease (a shared_ptr whose release gives it
// back). A returned decoder waits, idle, for the next lease of the same file
// (and, for audio, the same output format); at most `idleLimitPerFile` wait
// per file and kind, the others are closed at once. Leases outlive the cache
// safely: a decoder given back to a cache that is gone, or after `remove`
// of its path, is closed. `remove(path)` and `removeAll()` serve relinking
// and replacement: a file changed on disk is opened anew.
//
// One shared instance (shared()); tests may make their own. Any thread; the
// lock is never held while a file is opened or decoded.

#include <cstddef>
#include <expected>
#include <filesystem>
#include <memory>
#include <string>

#include "media/audio_decoder.hpp"
#include "media/media_error.hpp"
#include "media/media_probe.hpp"
#include "media/video_decoder.hpp"

namespace orvane::media {

using VideoDecoderLease = std::shared_ptr<VideoDecoder>;
using AudioDecoderLease = std::shared_ptr<AudioDecoder>;

class MediaAssetCache {
 public:
  static constexpr std::size_t idleLimitPerFile = 4;

  MediaAssetCache();
  ~MediaAssetCache();
  MediaAssetCache(const MediaAssetCache&) = delete;
  MediaAssetCache& operator=(const MediaAssetCache&) = delete;

  static MediaAssetCache& shared();

  // The file's facts, probed once per path.
  std::expected<MediaProbe, MediaError> probe(const std::filesystem::path& path);
  // A decoder of the file's first video stream: an idle one when there is
  // one, else a newly opened one.
  std::expected<VideoDecoderLease, MediaError> videoDecoder(const std::filesystem::path& path);
  // A decoder of the file's first audio stream at the output format.
  std::expected<AudioDecoderLease, MediaError> audioDecoder(const std::filesystem::path& path,
                                                            AudioFormat output = {});

  // Forgets the file: its facts and idle decoders go; leased ones are closed
  // when given back.
  void remove(const std::filesystem::path& path);
  void removeAll();

  // Idle decoders waiting, for all files (tests, diagnostics).
  std::size_t idleDecoderCount() const;

  struct Store;  // defined in the source

 private:
  std::shared_ptr<Store> store_;
};

}  // namespace orvane::media
