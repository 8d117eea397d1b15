#pragma once
// The provider client's HTTP layer over libcurl: one JSON request, one
// complete reply. A new transfer per call, nothing shared between calls but
// libcurl's global state (set up once), so calls may run on any thread at
// once. A stop request on the token ends a call in flight promptly with
// AIProviderError::cancelled.

#include <expected>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "assistant/ai_types.hpp"

namespace orvane::assistant {

// Header name and value, sent in order; a later name replaces an earlier one
// regardless of case.
using AIHeaders = std::vector<std::pair<std::string, std::string>>;

struct AIHTTP {
  // The body of a 2xx reply. Any other status fails with httpStatus and the
  // body shortened for the user; a transport failure (no connection, time-out
  // after 60 s for a GET and 120 s for a POST) with transport and libcurl's
  // words; a reply without a status with decoding "Missing HTTP response".
  static std::expected<std::string, AIProviderError> getJSON(const std::string& url, const AIHeaders& headers,
                                                             std::stop_token stop = {});
  // Sends Content-Type "application/json" unless the caller's headers name
  // another; a body that cannot be written as JSON fails with json.
  static std::expected<std::string, AIProviderError> postJSON(const std::string& url, const AIHeaders& headers,
                                                              const nlohmann::json& body, std::stop_token stop = {});
};

}  // namespace orvane::assistant
