// A stand-in OpenAI-format model server for the command-line tests of
// `orvane assist`:
//
//   orvane_cli_scripted_model_server SCRIPT.json PORT_FILE LOG_FILE
//
// SCRIPT.json is a list of replies {"status": 200, "body": {...}}, answered
// in order to POST .../chat/completions; once it runs out, 500. In a body's
// text "$LAST_TOOL_ID" becomes the UUID that ends the content of the last
// tool message of the request ("Added text layer <UUID>"), so a script can
// refer to a layer made in an earlier round. Each request appends one line
// to LOG_FILE: the path and the Authorization header. The port is written to
// PORT_FILE (whole, by rename) once the server listens. It stops on SIGTERM,
// or by itself after a minute so that a broken test leaves nothing behind.

#include <httplib.h>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>

namespace {

using nlohmann::json;

httplib::Server* running = nullptr;

void stopOnSignal(int) {
  if (running) running->stop();
}

std::string lastToolID(const json& request) {
  if (!request.is_object() || !request.contains("messages") || !request["messages"].is_array()) return {};
  std::string id;
  for (const json& message : request["messages"]) {
    if (message.value("role", "") != "tool" || !message.contains("content") || !message["content"].is_string())
      continue;
    const std::string content = message["content"].get<std::string>();
    const auto space = content.rfind(' ');
    id = space == std::string::npos ? content : content.substr(space + 1);
  }
  return id;
}

std::string substituted(std::string text, const std::string& id) {
  const std::string marker = "$LAST_TOOL_ID";
  for (auto at = text.find(marker); at != std::string::npos; at = text.find(marker, at + id.size())) {
    text.replace(at, marker.size(), id);
  }
  return text;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::cerr << "usage: " << argv[0] << " SCRIPT.json PORT_FILE LOG_FILE\n";
    return 2;
  }
  std::ifstream scriptFile(argv[1]);
  const json script = json::parse(scriptFile, nullptr, false);
  if (!script.is_array()) {
    std::cerr << "the script is no JSON list\n";
    return 2;
  }
  const std::string logPath = argv[3];

  std::mutex mutex;
  std::size_t next = 0;
  httplib::Server server;
  server.Post(".*", [&](const httplib::Request& request, httplib::Response& response) {
    std::lock_guard lock(mutex);
    std::ofstream(logPath, std::ios::app) << request.path << ' ' << request.get_header_value("Authorization")
                                          << '\n';
    if (next >= script.size()) {
      response.status = 500;
      response.set_content("no scripted reply", "text/plain");
      return;
    }
    const json& reply = script[next++];
    response.status = reply.value("status", 200);
    const json body = reply.value("body", json::object());
    const std::string text = body.is_string() ? body.get<std::string>() : body.dump();
    response.set_content(substituted(text, lastToolID(json::parse(request.body, nullptr, false))),
                         "application/json");
  });

  const int port = server.bind_to_any_port("127.0.0.1");
  if (port <= 0) {
    std::cerr << "could not listen on loopback\n";
    return 1;
  }
  running = &server;
  std::signal(SIGTERM, stopOnSignal);
  std::signal(SIGINT, stopOnSignal);
  std::thread watchdog([&server] {
    for (int i = 0; i < 600 && !server.is_running(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    for (int i = 0; i < 600 && server.is_running(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(100));
    server.stop();
  });
  const std::string portFile = argv[2];
  {
    std::ofstream(portFile + ".part") << port << '\n';
  }
  std::filesystem::rename(portFile + ".part", portFile);
  server.listen_after_bind();
  watchdog.join();
  return 0;
}
