#include "media/media_error.hpp"

namespace orvane::media {

std::string_view message(MediaError error) {
  switch (error) {
    case MediaError::missingFile: return "The media file is missing or cannot be opened.";
    case MediaError::unreadable: return "The media file could not be read.";
    case MediaError::noVideoStream: return "The media file has no video that can be decoded.";
    case MediaError::noAudioStream: return "The media file has no audio that can be decoded.";
    case MediaError::decodeFailed: return "The media file could not be decoded.";
    case MediaError::outOfMemory: return "There is not enough memory to decode the media file.";
  }
  return "The media file could not be read.";
}

}  // namespace orvane::media
