#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <thread>
#include <string>
#include <vector>

#include "assistant/ai_project_context.hpp"
#include "assistant/ai_session.hpp"
#include "assistant/key_stores.hpp"
#include "assistant/main_thread_executor.hpp"
#include "core/settings_store.hpp"
#include "tests/assistant/scripted_model_server.hpp"

namespace orvane::assistant {
namespace {

using nlohmann::json;
using testing_support::ScriptedModelServer;
using testing_support::ScriptedReply;
using Kind = AIChatDisplayMessage::Kind;

// How long a test waits for a turn before it fails instead of hanging.
constexpr std::chrono::milliseconds kWait{30000};

struct Call {
  std::string name;
  json arguments;
};

json openAIReply(std::optional<std::string> text, const std::vector<Call>& calls = {}) {
  json message = {{"role", "assistant"}, {"content", text ? json(*text) : json(nullptr)}};
  if (!calls.empty()) {
    json list = json::array();
    for (std::size_t i = 0; i < calls.size(); ++i) {
      list.push_back({{"id", "call_" + std::to_string(i)},
                      {"type", "function"},
                      {"function", {{"name", calls[i].name}, {"arguments", calls[i].arguments.dump()}}}});
    }
    message["tool_calls"] = list;
  }
  return {{"choices", {{{"index", 0}, {"message", message}, {"finish_reason", calls.empty() ? "stop" : "tool_calls"}}}}};
}

json anthropicReply(std::optional<std::string> text, const std::vector<Call>& calls = {}) {
  json content = json::array();
  if (text) content.push_back({{"type", "text"}, {"text", *text}});
  for (std::size_t i = 0; i < calls.size(); ++i) {
    content.push_back({{"type", "tool_use"}, {"id", "toolu_" + std::to_string(i)}, {"name", calls[i].name},
                       {"input", calls[i].arguments}});
  }
  return {{"content", content}, {"stop_reason", calls.empty() ? "end_turn" : "tool_use"}};
}

// The id in a tool line such as "✓ Added text layer 0F1E…".
std::string lastWord(const std::string& text) { return text.substr(text.rfind(' ') + 1); }

const core::Layer* layerNamed(const core::OVProject& project, std::string_view text) {
  const core::Composition* composition = project.activeComposition();
  if (!composition) return nullptr;
  for (const core::Layer& layer : composition->layers) {
    if (const auto* content = layer.content.textContent(); content && content->string == text) return &layer;
  }
  return nullptr;
}

// One session on a starter project, talking to a scripted server in the
// given format, with the test thread as its main thread.
class AISessionTest : public ::testing::Test {
 public:
  void SetUp() override { useProvider(AIProviderKind::openAI); }

  void useProvider(AIProviderKind kind, bool storeKey = true) {
    session.reset();
    settings.setProvider(kind);
    if (storeKey) keychain.setAPIKey("sk-test", kind);
    const std::string base = kind == AIProviderKind::claude ? server.baseURL() : server.baseURL() + "/v1";
    session = std::make_unique<AISession>(settings, loop, AIEndpointOverrides{.baseURL = base});
    session->attach(document, editor, undo);
    subscription = session->onChange([this](AISessionField field) {
      if (field == AISessionField::messages && !session->messages().empty()) {
        const AIChatDisplayMessage& last = session->messages().back();
        if (seen.empty() || seen.back() != last.text) seen.push_back(last.text);
        if (onMessage) onMessage(last);
      }
    });
  }

  // Sends text and runs the event loop until the turn is over.
  void sendAndFinish(const std::string& text) {
    session->setDraft(text);
    session->send();
    ASSERT_TRUE(session->isBusy());
    ASSERT_TRUE(loop.runUntil([this] { return !session->isBusy(); }, kWait));
  }

  std::vector<Kind> kinds() const {
    std::vector<Kind> result;
    for (const auto& message : session->messages()) result.push_back(message.kind);
    return result;
  }
  bool sawLine(std::string_view text) const { return std::ranges::find(seen, text) != seen.end(); }
  // Waits for the server to have received a request, so that a stop cuts a
  // call in flight rather than one not yet sent.
  void awaitRequests(std::size_t count) const {
    for (int i = 0; i < 10000 && server.requestCount() < count; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    ASSERT_EQ(server.requestCount(), count);
  }

  ScriptedModelServer server;
  core::MemorySettingsStore store;
  MemoryKeyStore keys;
  AIKeychain keychain{keys};
  AISettings settings{store, keychain};
  LoopExecutor loop;
  std::shared_ptr<document::ProjectDocument> document = std::make_shared<document::ProjectDocument>();
  std::shared_ptr<surfaces::EditorState> editor = std::make_shared<surfaces::EditorState>();
  std::shared_ptr<document::UndoStack> undo = std::make_shared<document::UndoStack>();
  std::unique_ptr<AISession> session;
  surfaces::Subscription subscription;
  std::vector<std::string> seen;  // every line the thread showed, in order
  std::function<void(const AIChatDisplayMessage&)> onMessage;
};

TEST_F(AISessionTest, SendRefusesBlanksABusySessionAMissingKeyAndAClosedProject) {
  session->setDraft("  \n\t ");
  session->send();
  EXPECT_TRUE(session->messages().empty());
  EXPECT_EQ(session->draft(), "  \n\t ");
  EXPECT_FALSE(session->isBusy());

  server.enqueueJSON(openAIReply("Done."));
  session->setDraft("first");
  session->send();
  ASSERT_TRUE(session->isBusy());
  session->setDraft("second");
  session->send();
  EXPECT_EQ(session->draft(), "second");
  ASSERT_TRUE(loop.runUntil([this] { return !session->isBusy(); }, kWait));
  EXPECT_EQ(server.requestCount(), 1u);
  EXPECT_EQ(std::get<AIUserItem>(session->conversation()[0]).text, "first");

  session->clearThread();
  keychain.deleteAPIKey(AIProviderKind::openAI);
  EXPECT_FALSE(session->hasAPIKey());
  session->setDraft("make a title");
  session->send();
  ASSERT_EQ(session->messages().size(), 1u);
  EXPECT_EQ(session->messages()[0].kind, Kind::error);
  EXPECT_EQ(session->messages()[0].text, "Add an API key in AI Settings.");
  EXPECT_EQ(session->draft(), "make a title");
  EXPECT_FALSE(session->isBusy());
  EXPECT_TRUE(session->conversation().empty());
  EXPECT_EQ(loop.runPending(), 0);
  EXPECT_EQ(server.requestCount(), 1u);

  keychain.setAPIKey("sk-test", AIProviderKind::openAI);
  document.reset();
  session->send();
  EXPECT_EQ(session->messages().back().text, "No project is open.");
  EXPECT_EQ(session->draft(), "make a title");
  EXPECT_FALSE(session->isBusy());
}

TEST_F(AISessionTest, AGivenKeyStandsInForTheStoredOneOfTheGivenProvider) {
  AISession withKey(settings, loop, {.provider = AIProviderKind::custom, .apiKey = "given"});
  EXPECT_EQ(withKey.provider(), AIProviderKind::custom);
  EXPECT_TRUE(withKey.hasAPIKey());
  AISession emptyKey(settings, loop, {.apiKey = ""});
  EXPECT_FALSE(emptyKey.hasAPIKey());
  // The saved provider is openAI with a key; custom has none stored.
  AISession otherProvider(settings, loop, {.provider = AIProviderKind::custom});
  EXPECT_FALSE(otherProvider.hasAPIKey());
}

TEST_F(AISessionTest, TextReplyEndsTheTurnAfterOneCallLeavingProjectAndUndoAlone) {
  const core::OVProject before = document->project();
  server.enqueueJSON(openAIReply("  Hello there.\n"));
  sendAndFinish("  hi  ");

  ASSERT_EQ(server.requestCount(), 1u);
  const auto request = server.requests()[0];
  EXPECT_EQ(request.path, "/v1/chat/completions");
  EXPECT_EQ(request.header("Authorization"), "Bearer sk-test");
  const json body = request.json();
  EXPECT_EQ(body["messages"][0]["content"], AIProjectContext::systemPrompt(before));
  EXPECT_EQ(body["messages"][1], json({{"role", "user"}, {"content", "hi"}}));
  EXPECT_EQ(body["tools"].size(), AIToolSchema::all().size());

  // "Thinking…" gives way to the round's status, which stays once a reply
  // stands behind it.
  EXPECT_EQ(kinds(), (std::vector{Kind::user, Kind::status, Kind::assistant}));
  EXPECT_EQ(session->messages()[1].text, "Talking to OpenAI…");
  EXPECT_EQ(session->messages()[2].text, "Hello there.");
  EXPECT_TRUE(sawLine("Thinking…"));
  EXPECT_EQ(session->draft(), "");
  ASSERT_EQ(session->conversation().size(), 2u);
  EXPECT_EQ(std::get<AIAssistantItem>(session->conversation()[1]).text, "Hello there.");
  EXPECT_EQ(document->project(), before);
  EXPECT_FALSE(document->isInteracting());
  EXPECT_EQ(undo->undoCount(), 0u);
}

// The title that fades in, in both wire formats: the second round refers to
// the layer that the first made, so it is scripted when that layer's id
// shows in the thread.
void runTitleTurn(AISessionTest& test, ScriptedModelServer& server, json (*reply)(std::optional<std::string>,
                                                                                  const std::vector<Call>&)) {
  server.enqueueJSON(reply(std::nullopt, {{"add_text_layer", {{"text", "Welcome"}}}}));
  test.onMessage = [&server, reply](const AIChatDisplayMessage& message) {
    if (message.text.starts_with("✓ Added text layer ")) {
      const std::string layerID = lastWord(message.text);
      server.enqueueJSON(reply(std::nullopt, {{"add_keyframe", {{"layer_id", layerID}, {"property", "opacity"},
                                                                {"time_seconds", 0}, {"value", 0}}},
                                              {"add_keyframe", {{"layer_id", layerID}, {"property", "opacity"},
                                                                {"time_seconds", 1}, {"value", 100}}}}));
      server.enqueueJSON(reply("Added a title that fades in.", {}));
    }
  };
}

class AISessionToolTurnTest : public AISessionTest, public ::testing::WithParamInterface<AIProviderKind> {};

TEST_P(AISessionToolTurnTest, ToolRoundsMakeOneAIEditStepThatUndoAndRedoCross) {
  useProvider(GetParam());
  const bool claude = GetParam() == AIProviderKind::claude;
  runTitleTurn(*this, server, claude ? &anthropicReply : &openAIReply);
  const core::OVProject before = document->project();
  sendAndFinish("add a title and fade it in");

  ASSERT_EQ(server.requestCount(), 3u);
  const auto requests = server.requests();
  EXPECT_EQ(requests[0].path, claude ? "/v1/messages" : "/v1/chat/completions");
  if (claude) {
    EXPECT_EQ(requests[0].header("x-api-key"), "sk-test");
  }
  const core::Layer* title = layerNamed(document->project(), "Welcome");
  ASSERT_NE(title, nullptr);
  const std::string id = title->id.text();
  // The second call's context already holds the first round's layer.
  const json second = requests[1].json();
  const std::string system = claude ? second["system"].get<std::string>()
                                    : second["messages"][0]["content"].get<std::string>();
  EXPECT_EQ(requests[0].json().dump().find(id), std::string::npos);
  EXPECT_NE(system.find(id), std::string::npos);

  const auto& keys = title->transform.opacity.keyframes();
  ASSERT_EQ(keys.size(), 2u);
  EXPECT_EQ(keys[0].time.seconds(), 0);
  EXPECT_EQ(keys[0].value.doubleValue(), 0);
  EXPECT_EQ(keys[1].time.seconds(), 1);
  EXPECT_EQ(keys[1].value.doubleValue(), 100);

  std::vector<std::string> lines;
  for (const auto& message : session->messages()) lines.push_back(message.text);
  const std::string keyed = "✓ Keyframed opacity at ";
  EXPECT_EQ(lines, (std::vector<std::string>{"add a title and fade it in", "Applying 1 tool call(s)…",
                                             "→ add_text_layer", "✓ Added text layer " + id,
                                             "Applying 2 tool call(s)…", "→ add_keyframe",
                                             keyed + "0.0s on layer " + id + ".", "→ add_keyframe",
                                             keyed + "1.0s on layer " + id + ".", "Talking to " +
                                             std::string(displayName(GetParam())) + "…",
                                             "Added a title that fades in."}));
  EXPECT_EQ(kinds(), (std::vector{Kind::user, Kind::status, Kind::tool, Kind::tool, Kind::status, Kind::tool,
                                  Kind::tool, Kind::tool, Kind::tool, Kind::status, Kind::assistant}));
  // user, then assistant and results twice, then the closing reply.
  EXPECT_EQ(session->conversation().size(), 6u);

  EXPECT_FALSE(document->isInteracting());
  ASSERT_EQ(undo->undoCount(), 1u);
  EXPECT_EQ(undo->undoActionName(), "AI Edit");
  const core::OVProject after = document->project();
  undo->undo();
  EXPECT_EQ(document->project(), before);
  undo->redo();
  EXPECT_EQ(document->project(), after);
}

INSTANTIATE_TEST_SUITE_P(BothFormats, AISessionToolTurnTest,
                         ::testing::Values(AIProviderKind::openAI, AIProviderKind::claude));

TEST_F(AISessionTest, ATurnWhereOnlyAFailedToolRanStillEndsTheInteractionAsAIEdit) {
  // Whatever changed the project during the turn falls into its interaction;
  // a tool ran, so the turn keeps it as its step instead of rolling it back.
  const std::string ghost = core::Uuid::make().text();
  server.enqueueJSON(openAIReply(std::nullopt, {{"add_keyframe", {{"layer_id", ghost}, {"property", "opacity"},
                                                                   {"time_seconds", 0}, {"value", 0}}}}));
  server.enqueueJSON(openAIReply("That layer does not exist."));
  const core::OVProject before = document->project();
  onMessage = [this](const AIChatDisplayMessage& message) {
    if (message.kind == Kind::error) document->updateInteraction([](core::OVProject& p) { p.name = "Renamed"; });
  };
  sendAndFinish("fade the ghost");
  EXPECT_TRUE(sawLine("✗ add_keyframe: No layer with id " + ghost + "."));
  EXPECT_EQ(document->project().name, "Renamed");
  ASSERT_EQ(undo->undoCount(), 1u);
  EXPECT_EQ(undo->undoActionName(), "AI Edit");
  undo->undo();
  EXPECT_EQ(document->project(), before);

  // With no tool run the same change is rolled back with the turn.
  server.enqueueJSON(openAIReply("Nothing to do."));
  onMessage = [this](const AIChatDisplayMessage& message) {
    if (message.text.starts_with("Talking to")) document->updateInteraction([](core::OVProject& p) { p.name = "Renamed"; });
  };
  sendAndFinish("never mind");
  EXPECT_EQ(document->project(), before);
  EXPECT_EQ(undo->undoCount(), 0u);
}

TEST_F(AISessionTest, EightToolRoundsMakeEightCallsAndNoNinth) {
  for (int round = 0; round < 8; ++round) {
    server.enqueueJSON(openAIReply(std::nullopt, {{"add_solid_layer", {{"name", "S" + std::to_string(round)}}}}));
  }
  server.enqueueJSON(openAIReply("never read"));
  sendAndFinish("fill it");

  EXPECT_EQ(server.requestCount(), 8u);
  EXPECT_TRUE(sawLine("Stopped after 8 tool rounds."));
  EXPECT_NE(session->messages().back().kind, Kind::status);
  EXPECT_EQ(document->activeComposition()->layers.size(), 8u);
  EXPECT_EQ(undo->undoCount(), 1u);
  // The last results stand in the conversation with no reply behind them.
  ASSERT_EQ(session->conversation().size(), 17u);
  EXPECT_TRUE(std::holds_alternative<AIToolResultsItem>(session->conversation().back()));
}

TEST_F(AISessionTest, AFailedCallShowsTheErrorAndKeepsTheUserItemForTheNextSend) {
  server.enqueue({500, "boom", {}, "text/plain"});
  sendAndFinish("first try");
  EXPECT_EQ(kinds(), (std::vector{Kind::user, Kind::status, Kind::error}));
  EXPECT_EQ(session->messages()[2].text, "API error (500): boom");
  ASSERT_EQ(session->conversation().size(), 1u);
  EXPECT_EQ(std::get<AIUserItem>(session->conversation()[0]).text, "first try");
  EXPECT_FALSE(document->isInteracting());

  server.enqueueJSON(openAIReply("Now it works."));
  sendAndFinish("again");
  const json messages = server.requests()[1].json()["messages"];
  ASSERT_EQ(messages.size(), 3u);
  EXPECT_EQ(messages[1]["content"], "first try");
  EXPECT_EQ(messages[2]["content"], "again");
}

TEST_F(AISessionTest, CancelDuringASlowReplyRollsTheTurnBackAndDropsTheLateResult) {
  const core::OVProject before = document->project();
  server.enqueueJSON(openAIReply(std::nullopt, {{"add_solid_layer", {{"name", "Early"}}}}));
  server.enqueue({200, openAIReply("too late").dump(), std::chrono::milliseconds(20000)});
  session->setDraft("slowly");
  session->send();
  ASSERT_TRUE(loop.runUntil([this] {
    return std::ranges::any_of(seen, [](const std::string& line) { return line.starts_with("✓ Added solid layer"); });
  }, kWait));
  EXPECT_EQ(document->activeComposition()->layers.size(), 1u);
  awaitRequests(2);
  session->cancel();
  EXPECT_FALSE(session->isBusy());
  EXPECT_FALSE(document->isInteracting());
  EXPECT_EQ(document->project(), before);
  EXPECT_EQ(undo->undoCount(), 0u);
  EXPECT_NE(session->messages().back().kind, Kind::status);
  EXPECT_TRUE(sawLine("Cancelled."));

  // A new turn right away is not disturbed by the old call's result.
  server.enqueueJSON(openAIReply("Fresh answer."));
  sendAndFinish("quickly");
  EXPECT_EQ(session->messages().back().text, "Fresh answer.");
  // Destroying the session joins the stopped call; what it posted finds
  // the session gone.
  session.reset();
  loop.runPending();
  EXPECT_EQ(document->project(), before);
}

TEST_F(AISessionTest, DestroyingTheSessionMidTurnLeavesTheDocumentOutOfTheTurn) {
  server.enqueueJSON(openAIReply(std::nullopt, {{"add_solid_layer", json::object()}}));
  server.enqueue({200, openAIReply("too late").dump(), std::chrono::milliseconds(20000)});
  const core::OVProject before = document->project();
  session->setDraft("go");
  session->send();
  ASSERT_TRUE(loop.runUntil([this] { return document->activeComposition()->layers.size() == 1; }, kWait));
  awaitRequests(2);
  session.reset();
  EXPECT_FALSE(document->isInteracting());
  EXPECT_EQ(document->project(), before);
  EXPECT_GE(loop.runPending(), 1);
}

TEST_F(AISessionTest, ClearThreadForgetsTheThreadButNotTheProject) {
  server.enqueueJSON(openAIReply(std::nullopt, {{"add_solid_layer", json::object()}}));
  server.enqueueJSON(openAIReply("One solid."));
  sendAndFinish("a solid please");
  const core::OVProject after = document->project();
  session->setDraft("unsent");
  session->clearThread();
  EXPECT_TRUE(session->messages().empty());
  EXPECT_TRUE(session->conversation().empty());
  EXPECT_EQ(session->draft(), "");
  EXPECT_EQ(document->project(), after);
  EXPECT_EQ(undo->undoCount(), 1u);
}

TEST(LoopExecutorTest, RunsPostsFromOtherThreadsInOrderOnTheCallingThread) {
  LoopExecutor loop;
  std::vector<int> order;
  std::vector<std::thread::id> threads;
  std::thread poster([&] {
    for (int i = 0; i < 3; ++i) {
      loop.post([&, i] {
        order.push_back(i);
        threads.push_back(std::this_thread::get_id());
      });
    }
  });
  EXPECT_TRUE(loop.runUntil([&] { return order.size() == 3; }, kWait));
  poster.join();
  EXPECT_EQ(order, (std::vector{0, 1, 2}));
  for (const auto& id : threads) EXPECT_EQ(id, std::this_thread::get_id());

  // What a closure posts waits for the next run.
  loop.post([&] { loop.post([&] { order.push_back(4); }); });
  EXPECT_EQ(loop.runPending(), 1);
  EXPECT_EQ(loop.pendingCount(), 1u);
  EXPECT_EQ(loop.runPending(), 1);
  EXPECT_EQ(order.back(), 4);
  // Nothing arrives: the wait ends with the answer of the predicate.
  EXPECT_FALSE(loop.runUntil([] { return false; }, std::chrono::milliseconds(5)));
}

}  // namespace
}  // namespace orvane::assistant
