#include <gtest/gtest.h>

#include "tests/assistant/scripted_model_server.hpp"

namespace orvane::assistant {
namespace {

using testing_support::ScriptedModelServer;

TEST(ScriptedModelServerTest, AnswersFromTheScriptInOrderAndRecordsEveryRequest) {
  ScriptedModelServer server({{200, R"({"a":1})"}, {401, "denied", {}, "text/plain"}});
  httplib::Client client("127.0.0.1", server.port());
  const auto first = client.Post("/v1/messages", {{"x-api-key", "k"}}, R"({"q":2})", "application/json");
  ASSERT_TRUE(first);
  EXPECT_EQ(first->status, 200);
  EXPECT_EQ(first->body, R"({"a":1})");
  const auto second = client.Get("/v1/models");
  ASSERT_TRUE(second);
  EXPECT_EQ(second->status, 401);
  EXPECT_EQ(second->body, "denied");
  const auto third = client.Get("/models");
  ASSERT_TRUE(third);
  EXPECT_EQ(third->status, 500);

  const auto requests = server.requests();
  ASSERT_EQ(requests.size(), 3u);
  EXPECT_EQ(requests[0].method, "POST");
  EXPECT_EQ(requests[0].path, "/v1/messages");
  EXPECT_EQ(requests[0].header("X-API-Key"), "k");
  EXPECT_EQ(requests[0].json(), nlohmann::json({{"q", 2}}));
  EXPECT_EQ(requests[1].method, "GET");
  EXPECT_FALSE(requests[1].header("x-api-key"));
}

}  // namespace
}  // namespace orvane::assistant
