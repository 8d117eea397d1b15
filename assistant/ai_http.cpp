#include "assistant/ai_http.hpp"

#include <curl/curl.h>

#include <algorithm>
#include <cctype>
#include <memory>

#include "assistant/ai_wire_formats.hpp"

namespace orvane::assistant {

namespace {

constexpr long kGetTimeoutSeconds = 60;
constexpr long kPostTimeoutSeconds = 120;
// How long one wait for the socket may last before the loop looks again;
// a stop request wakes it sooner.
constexpr int kPollMilliseconds = 1000;

struct EasyDeleter {
  void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
};
struct MultiDeleter {
  void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};
struct ListDeleter {
  void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
using Easy = std::unique_ptr<CURL, EasyDeleter>;
using Multi = std::unique_ptr<CURLM, MultiDeleter>;
using List = std::unique_ptr<curl_slist, ListDeleter>;

void initialiseCurlOnce() {
  // A function-local static runs once even when the first calls race.
  static const CURLcode initialised = curl_global_init(CURL_GLOBAL_DEFAULT);
  (void)initialised;
}

bool sameName(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
         });
}

AIHeaders merged(AIHeaders base, const AIHeaders& overrides) {
  for (const auto& [name, value] : overrides) {
    const auto it = std::find_if(base.begin(), base.end(), [&](const auto& h) { return sameName(h.first, name); });
    if (it != base.end()) it->second = value;
    else base.emplace_back(name, value);
  }
  return base;
}

List headerList(const AIHeaders& headers) {
  // "Expect:" keeps libcurl from waiting for a 100 Continue before larger
  // bodies, which some local servers never send.
  List list(curl_slist_append(nullptr, "Expect:"));
  for (const auto& [name, value] : headers) {
    // "Name;" is libcurl's way to send a header with an empty value. Line
    // breaks (say in a pasted key) would end the header early and smuggle
    // the rest in as headers of its own, so they go.
    std::string line = value.empty() ? name + ";" : name + ": " + value;
    std::erase_if(line, [](char c) { return c == '\r' || c == '\n'; });
    if (curl_slist* grown = curl_slist_append(list.get(), line.c_str())) {
      (void)list.release();
      list.reset(grown);
    }
  }
  return list;
}

std::size_t appendBody(char* data, std::size_t size, std::size_t count, void* received) {
  static_cast<std::string*>(received)->append(data, size * count);
  return size * count;
}

int abortWhenStopped(void* stop, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
  return static_cast<const std::stop_token*>(stop)->stop_requested() ? 1 : 0;
}

void configure(CURL* easy, const std::string& url, const curl_slist* headers, std::string& received,
               char* errorText, const std::stop_token& stop, long timeoutSeconds) {
  curl_easy_setopt(easy, CURLOPT_URL, url.c_str());
  curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headers);
  curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, appendBody);
  curl_easy_setopt(easy, CURLOPT_WRITEDATA, &received);
  curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, errorText);
  curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(easy, CURLOPT_TIMEOUT, timeoutSeconds);
  curl_easy_setopt(easy, CURLOPT_NOPROGRESS, 0L);
  curl_easy_setopt(easy, CURLOPT_XFERINFOFUNCTION, abortWhenStopped);
  curl_easy_setopt(easy, CURLOPT_XFERINFODATA, &stop);
  curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 1L);
  curl_easy_setopt(easy, CURLOPT_MAXREDIRS, 10L);
  curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
  // The key travels in the headers of every hop: a redirect may not take it
  // from an encrypted address to a plain one.
  const bool encrypted = url.starts_with("https:") || url.starts_with("HTTPS:");
  curl_easy_setopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, encrypted ? "https" : "http,https");
  curl_easy_setopt(easy, CURLOPT_ACCEPT_ENCODING, "");
}

// Drives the transfer on a multi handle so that a stop request can wake the
// wait at once instead of at libcurl's next progress call. Returns the
// transfer's result, or CURLE_ABORTED_BY_CALLBACK when stopped.
CURLcode run(CURLM* multi, CURL* easy, const std::stop_token& stop, std::string& failure) {
  if (curl_multi_add_handle(multi, easy) != CURLM_OK) {
    failure = "Could not start the HTTP request.";
    return CURLE_FAILED_INIT;
  }
  CURLcode result = CURLE_OK;
  {
    std::stop_callback wake(stop, [multi] { curl_multi_wakeup(multi); });
    int running = 1;
    while (running > 0) {
      CURLMcode code = curl_multi_perform(multi, &running);
      if (code == CURLM_OK && stop.stop_requested()) result = CURLE_ABORTED_BY_CALLBACK;
      else if (code == CURLM_OK && running > 0) code = curl_multi_poll(multi, nullptr, 0, kPollMilliseconds, nullptr);
      if (code != CURLM_OK) {
        failure = curl_multi_strerror(code);
        result = CURLE_FAILED_INIT;
      }
      if (result != CURLE_OK) break;
    }
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(multi, &left))
      if (result == CURLE_OK && message->msg == CURLMSG_DONE && message->easy_handle == easy)
        result = message->data.result;
  }
  curl_multi_remove_handle(multi, easy);
  return result;
}

std::expected<std::string, AIProviderError> perform(const std::string& url, const AIHeaders& headers,
                                                    const std::string* postBody, std::stop_token stop) {
  initialiseCurlOnce();
  if (stop.stop_requested()) return std::unexpected(AIProviderError::cancelled());
  const Easy easy(curl_easy_init());
  const Multi multi(curl_multi_init());
  if (!easy || !multi) return std::unexpected(AIProviderError::transport("Could not start the HTTP request."));

  const List list = headerList(headers);
  std::string received;
  char errorText[CURL_ERROR_SIZE] = {};
  configure(easy.get(), url, list.get(), received, errorText, stop,
            postBody != nullptr ? kPostTimeoutSeconds : kGetTimeoutSeconds);
  if (postBody != nullptr) {
    curl_easy_setopt(easy.get(), CURLOPT_POSTFIELDS, postBody->data());
    curl_easy_setopt(easy.get(), CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(postBody->size()));
  } else {
    curl_easy_setopt(easy.get(), CURLOPT_HTTPGET, 1L);
  }

  std::string failure;
  const CURLcode result = run(multi.get(), easy.get(), stop, failure);
  if (result == CURLE_ABORTED_BY_CALLBACK) return std::unexpected(AIProviderError::cancelled());
  if (result != CURLE_OK) {
    if (failure.empty()) failure = errorText[0] != '\0' ? errorText : curl_easy_strerror(result);
    return std::unexpected(AIProviderError::transport(failure));
  }
  long status = 0;
  curl_easy_getinfo(easy.get(), CURLINFO_RESPONSE_CODE, &status);
  if (status == 0) return std::unexpected(AIProviderError::decoding("Missing HTTP response"));
  if (status >= 200 && status < 300) return received;
  return std::unexpected(AIProviderError::httpStatus(static_cast<int>(status), wire::errorBodyExcerpt(received)));
}

}  // namespace

std::expected<std::string, AIProviderError> AIHTTP::getJSON(const std::string& url, const AIHeaders& headers,
                                                            std::stop_token stop) {
  return perform(url, merged({}, headers), nullptr, std::move(stop));
}

std::expected<std::string, AIProviderError> AIHTTP::postJSON(const std::string& url, const AIHeaders& headers,
                                                             const nlohmann::json& body, std::stop_token stop) {
  std::string text;
  try {
    // Text that is no UTF-8 (a file name from the disk, a parser message
    // cut mid-character) stays in the thread and would fail every later
    // request, so it travels with replacement characters instead.
    text = body.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  } catch (const nlohmann::json::exception& e) {
    return std::unexpected(AIProviderError::json(e.what()));
  }
  return perform(url, merged({{"Content-Type", "application/json"}}, headers), &text, std::move(stop));
}

}  // namespace orvane::assistant
