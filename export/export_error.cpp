#include "export/export_session.hpp"

namespace orvane::export_ {

std::string ExportError::message() const {
  switch (kind) {
    case Kind::readerFailed:
      return "Reading the composition failed. " + text;
    case Kind::writerFailed:
      return "Writing the output file failed. " + text;
    case Kind::nothingToRender:
      return "The composition has nothing to export.";
    case Kind::cancelled:
      return "The export was cancelled.";
  }
  return text;
}

}  // namespace orvane::export_
