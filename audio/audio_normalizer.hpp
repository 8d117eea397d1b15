#pragma once
// Peak normalisation of one clip: the part of the source that the layer
// uses is read, its highest sample found, and the factor that brings that
// peak to targetPeak is stored in the layer's AudioProperties.normalizeGain.
// The samples themselves stay; the mix applies the gain.
//
// peakGain reads the file on the calling thread and may be called from any
// thread. normalizeAudio and normalizeAudioAsync touch the document, so the
// main thread calls them; the asynchronous one reads on the normaliser's own
// thread and writes the gain back on the main thread through the
// MainThreadPost, to the layer of that id whatever it has become meanwhile.

#include <expected>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "core/ov_time.hpp"
#include "core/uuid.hpp"
#include "document/project_document.hpp"
#include "document/undo_stack.hpp"
#include "media/serial_worker.hpp"

namespace orvane::audio {

class AudioNormalizer {
 public:
  static constexpr float targetPeak = 0.891f;  // close to -1 dBFS

  enum class NormalizeError { noAudio, silent };
  static std::string_view message(NormalizeError error);

  // The gain that brings the highest sample of the file's first audio
  // stream within [sourceStart, sourceStart + duration) to targetPeak. The
  // range is cut to the file; all channels count alike.
  static std::expected<double, NormalizeError> peakGain(const std::filesystem::path& file,
                                                        const core::OVTime& sourceStart,
                                                        const core::OVTime& duration);
  // targetPeak / peak in 32-bit floats; silent at or under 0.0001.
  static std::expected<double, NormalizeError> gainForPeak(float peak);
  // "Normalized (+1.2 dB)."
  static std::string resultText(double gain);

  // Reads and writes at once, as one undo step "Normalize Audio", and
  // returns the sentence for the user. Main thread.
  static std::string normalizeAudio(document::ProjectDocument& doc, const core::Uuid& layerID,
                                    document::UndoStack* undo);

  explicit AudioNormalizer(media::MainThreadPost post);
  ~AudioNormalizer();

  // The same with the reading on the normaliser's thread; done gets the
  // sentence on the main thread. doc and undo must outlive the normaliser.
  void normalizeAudioAsync(document::ProjectDocument& doc, const core::Uuid& layerID, document::UndoStack* undo,
                           std::function<void(std::string)> done);

 private:
  media::MainThreadPost post_;
  std::shared_ptr<int> alive_;  // posted write-backs hold it weakly
  media::SerialWorker worker_;
};

}  // namespace orvane::audio
