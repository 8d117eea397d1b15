#pragma once
// A stand-in for a model provider in tests: an HTTP server on 127.0.0.1 at a
// free port, serving from a background thread. It records every request
// (method, path, headers, body) and answers each from a script of replies,
// in order; once the script runs out it answers 500 with "no scripted
// reply". A reply's delay is cut short by stop(), so a test that gave up on
// a slow reply does not wait for it in teardown. Thread-safe: the test
// thread scripts and reads while the server thread answers. The destructor
// stops the server.

#include <httplib.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

namespace orvane::assistant::testing_support {

struct ScriptedReply {
  int status = 200;
  std::string body;
  std::chrono::milliseconds delay{0};
  std::string contentType = "application/json";
};

struct RecordedRequest {
  std::string method;
  std::string path;
  std::vector<std::pair<std::string, std::string>> headers;  // as received
  std::string body;

  // The first header of that name, compared without case; none when absent.
  std::optional<std::string> header(std::string_view name) const {
    const auto same = [name](const std::string& key) {
      return key.size() == name.size() && std::equal(key.begin(), key.end(), name.begin(), [](char a, char b) {
               return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
             });
    };
    for (const auto& [key, value] : headers)
      if (same(key)) return value;
    return std::nullopt;
  }
  // The body parsed as JSON; a discarded value when it is no JSON.
  nlohmann::json json() const { return nlohmann::json::parse(body, nullptr, false); }
};

class ScriptedModelServer {
 public:
  explicit ScriptedModelServer(std::vector<ScriptedReply> script = {}) : script_(script.begin(), script.end()) {
    const auto handler = [this](const httplib::Request& request, httplib::Response& response) {
      answer(request, response);
    };
    server_.Get(".*", handler);
    server_.Post(".*", handler);
    server_.Put(".*", handler);
    server_.Delete(".*", handler);
    port_ = server_.bind_to_any_port("127.0.0.1");
    thread_ = std::thread([this] { server_.listen_after_bind(); });
    // stop() before the accept loop runs would be lost and leave the thread
    // listening for ever, so wait until it runs.
    while (!server_.is_running()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  ~ScriptedModelServer() { stop(); }
  ScriptedModelServer(const ScriptedModelServer&) = delete;
  ScriptedModelServer& operator=(const ScriptedModelServer&) = delete;

  int port() const { return port_; }
  // "http://127.0.0.1:PORT", with no path and no trailing slash.
  std::string baseURL() const { return "http://127.0.0.1:" + std::to_string(port_); }

  void enqueue(ScriptedReply reply) {
    std::lock_guard lock(mutex_);
    script_.push_back(std::move(reply));
  }
  void enqueueJSON(const nlohmann::json& body, int status = 200) { enqueue({status, body.dump()}); }

  std::vector<RecordedRequest> requests() const {
    std::lock_guard lock(mutex_);
    return requests_;
  }
  std::size_t requestCount() const {
    std::lock_guard lock(mutex_);
    return requests_.size();
  }

  void stop() {
    {
      std::lock_guard lock(mutex_);
      stopping_ = true;
    }
    wake_.notify_all();
    server_.stop();
    if (thread_.joinable()) thread_.join();
  }

 private:
  void answer(const httplib::Request& request, httplib::Response& response) {
    std::unique_lock lock(mutex_);
    RecordedRequest recorded{request.method, request.path, {}, request.body};
    for (const auto& header : request.headers) recorded.headers.push_back(header);
    requests_.push_back(std::move(recorded));
    if (script_.empty()) {
      response.status = 500;
      response.set_content("no scripted reply", "text/plain");
      return;
    }
    ScriptedReply reply = std::move(script_.front());
    script_.pop_front();
    if (reply.delay.count() > 0) wake_.wait_for(lock, reply.delay, [this] { return stopping_; });
    response.status = reply.status;
    response.set_content(reply.body, reply.contentType.c_str());
  }

  httplib::Server server_;
  std::thread thread_;
  int port_ = -1;
  mutable std::mutex mutex_;
  std::condition_variable wake_;
  bool stopping_ = false;
  std::deque<ScriptedReply> script_;
  std::vector<RecordedRequest> requests_;
};

}  // namespace orvane::assistant::testing_support
