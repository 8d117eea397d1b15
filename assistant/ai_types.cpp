#include "assistant/ai_types.hpp"

namespace orvane::assistant {

std::string AIProviderError::message() const {
  switch (kind) {
    case Kind::httpStatus:
      return "API error (" + std::to_string(status) + "): " + text;
    case Kind::decoding:
      return "Could not read the API response: " + text;
    case Kind::missingAPIKey:
      return "Add an API key in AI Settings.";
    case Kind::invalidBaseURL:
      return "The API base URL is invalid.";
    case Kind::cancelled:
      return "Cancelled.";
    case Kind::emptyResponse:
      return "The model returned an empty response.";
    case Kind::transport:
    case Kind::json:
      return text;
  }
  return text;
}

}  // namespace orvane::assistant
