#include "document/project_codec_error.hpp"

namespace orvane::document {

ProjectCodecError ProjectCodecError::unsupportedFormatVersion(std::int64_t version) {
  return {Kind::unsupportedFormatVersion, version, {}};
}

ProjectCodecError ProjectCodecError::corruptData(std::string detail) {
  return {Kind::corruptData, 0, std::move(detail)};
}

ProjectCodecError ProjectCodecError::unreadableFile(std::string sentence) {
  return {Kind::unreadableFile, 0, std::move(sentence)};
}

std::string ProjectCodecError::message() const {
  switch (kind) {
    case Kind::unsupportedFormatVersion:
      return "This project was created by a newer version of Orvane (format " + std::to_string(version) + ").";
    case Kind::corruptData: return "The project file could not be read. " + detail;
    case Kind::unreadableFile: return detail;
  }
  return detail;
}

}  // namespace orvane::document
