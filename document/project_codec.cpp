#include "document/project_codec.hpp"

#include "core/build_info.hpp"
#include "document/project_json.hpp"

namespace orvane::document {

std::string ProjectCodec::encode(const core::OVProject& project) {
  core::OVProject stamped = project;
  stamped.appVersion = core::buildVersion();
  stamped.modifiedAt = core::nowTimestamp();
  return encodeProjectJson(stamped);
}

std::string ProjectCodec::encodeUnstamped(const core::OVProject& project) { return encodeProjectJson(project); }

std::expected<core::OVProject, ProjectCodecError> ProjectCodec::decode(std::string_view data) {
  try {
    return decodeProjectJson(data);
  } catch (const ProjectCodecError& e) {
    return std::unexpected(e);
  } catch (const std::exception& e) {
    // The JSON library's own failures (none are expected) still end here.
    return std::unexpected(ProjectCodecError::corruptData(e.what()));
  }
}

std::expected<void, FileError> ProjectCodec::write(const core::OVProject& project,
                                                   const std::filesystem::path& path) {
  return writeFileAtomically(path, encode(project));
}

std::expected<core::OVProject, ProjectCodecError> ProjectCodec::read(const std::filesystem::path& path) {
  auto bytes = readRegularFile(path, kEmptyOrFolderSentence);
  if (!bytes) return std::unexpected(ProjectCodecError::unreadableFile(bytes.error().message));
  return decode(*bytes);
}

std::string ProjectCodec::encodeDate(core::Timestamp t) { return core::formatISO8601(t); }

std::optional<core::Timestamp> ProjectCodec::decodeDate(std::string_view text) {
  return core::parseISO8601(text);
}

}  // namespace orvane::document
