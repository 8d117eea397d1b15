#include "assistant/ai_session.hpp"

#include <algorithm>
#include <utility>

#include "assistant/ai_project_context.hpp"
#include "assistant/key_stores.hpp"

namespace orvane::assistant {

namespace {

using Kind = AIChatDisplayMessage::Kind;

std::string trimmed(std::string_view text) { return std::string(settings_text::trimWhitespaceAndNewlines(text)); }

}  // namespace

AISession::AISession(const AISettings& settings, MainThreadExecutor& executor, AIEndpointOverrides overrides)
    : settings_(settings), executor_(executor), overrides_(std::move(overrides)) {}

AISession::~AISession() {
  // Leave the document out of the turn's interaction, as closing the chat
  // does, but tell no observer: they may be half torn down already.
  observers_.clear();
  cancel();
  alive_.reset();
  // The jthreads stop their calls and join here; a stopped call returns at
  // once, and what it posts finds the session gone.
  call_.reset();
  retired_.clear();
}

void AISession::attach(std::weak_ptr<document::ProjectDocument> document,
                       std::weak_ptr<surfaces::EditorState> editor, std::weak_ptr<document::UndoStack> undo) {
  document_ = std::move(document);
  editor_ = std::move(editor);
  undo_ = std::move(undo);
}

void AISession::setDraft(std::string text) {
  if (text == draft_) return;
  draft_ = std::move(text);
  notify(AISessionField::draft);
}

AIProviderKind AISession::provider() const { return overrides_.provider.value_or(settings_.provider()); }

bool AISession::hasAPIKey() const {
  if (overrides_.apiKey) return !overrides_.apiKey->empty();
  const std::optional<std::string> key = settings_.keychain().apiKey(provider());
  return key && !key->empty();
}

void AISession::send() {
  std::string text = trimmed(draft_);
  if (text.empty() || isBusy_) return;
  if (!hasAPIKey()) {
    append(Kind::error, AIProviderError::missingAPIKey().message());
    return;
  }
  if (document_.expired() || editor_.expired()) {
    append(Kind::error, "No project is open.");
    return;
  }
  append(Kind::user, text);
  draft_.clear();
  notify(AISessionField::draft);
  conversation_.emplace_back(std::in_place_type<AIUserItem>, std::move(text));
  const std::uint64_t generation = nextGeneration_++;
  turn_ = Turn{generation, document_, editor_, {}, false, false, 0};
  setBusy(true);
  append(Kind::status, "Thinking…");
  // The turn starts from the event loop, as a task would, so send()
  // returns before the first model call is made.
  executor_.post([alive = std::weak_ptr<int>(alive_), this, generation] {
    if (!alive.expired()) startTurn(generation);
  });
}

void AISession::cancel() {
  const bool wasBusy = isBusy_;
  if (turn_) {
    retireWorker();
    std::optional<Turn> turn = std::exchange(turn_, std::nullopt);
    if (wasBusy && turn->interactionBegun) {
      if (auto document = turn->document.lock()) document->cancelInteraction();
    }
    // The same lines a turn shows when stopped in the middle: "Cancelled.",
    // gone again with the other trailing status lines.
    append(Kind::status, "Cancelled.");
    removeTrailingStatus();
  }
  setBusy(false);
}

void AISession::clearThread() {
  cancel();
  messages_.clear();
  conversation_.clear();
  draft_.clear();
  notify(AISessionField::messages);
  notify(AISessionField::draft);
}

surfaces::Subscription AISession::onChange(Observer observer) {
  const int token = nextObserverToken_++;
  observers_.emplace_back(token, std::move(observer));
  return surfaces::Subscription([alive = std::weak_ptr<int>(alive_), this, token] {
    if (alive.expired()) return;
    std::erase_if(observers_, [token](const auto& entry) { return entry.first == token; });
  });
}

// --- The turn ---

void AISession::startTurn(std::uint64_t generation) {
  if (!isCurrent(generation)) return;
  auto document = turn_->document.lock();
  if (!document) return failTurn(generation, "No project is open.");
  document->beginInteraction();
  turn_->interactionBegun = true;
  startRound(generation);
}

void AISession::startRound(std::uint64_t generation) {
  if (!isCurrent(generation)) return;
  refreshStatus("Talking to " + std::string(displayName(provider())) + "…");
  if (!isCurrent(generation)) return;
  auto document = turn_->document.lock();
  if (!document) return failTurn(generation, "No project is open.");
  AICompletionRequest request{AIProjectContext::systemPrompt(document->project()), conversation_,
                              AIToolSchema::all()};
  auto endpoint = resolveEndpoint(settings_, overrides_);
  if (!endpoint) return failTurn(generation, endpoint.error().message());
  callModel(generation, std::move(*endpoint), std::move(request));
}

void AISession::callModel(std::uint64_t generation, AIEndpoint endpoint, AICompletionRequest request) {
  retireWorker();
  auto finished = std::make_shared<std::atomic<bool>>(false);
  MainThreadExecutor& executor = executor_;
  std::weak_ptr<int> alive = alive_;
  std::jthread thread([&executor, alive, this, generation, finished, endpoint = std::move(endpoint),
                       request = std::move(request)](std::stop_token stop) mutable {
    Reply reply = AIProviderClient::complete(endpoint, request, stop);
    // Only the posted closure touches the session, on the main thread,
    // after checking that it still lives.
    executor.post([alive, this, generation, reply = std::move(reply)]() mutable {
      if (!alive.expired()) receive(generation, std::move(reply));
    });
    finished->store(true);
  });
  call_ = Worker{std::move(thread), std::move(finished)};
}

void AISession::receive(std::uint64_t generation, Reply reply) {
  if (!isCurrent(generation)) return;
  retireWorker();
  if (!reply) {
    if (reply.error().kind == AIProviderError::Kind::cancelled) {
      append(Kind::status, "Cancelled.");
      return finishTurn();
    }
    return failTurn(generation, reply.error().message());
  }
  AICompletionResponse& response = *reply;
  conversation_.emplace_back(std::in_place_type<AIAssistantItem>, response.text, response.toolCalls);
  if (response.text) {
    std::string text = trimmed(*response.text);
    if (!text.empty()) append(Kind::assistant, std::move(text));
    if (!isCurrent(generation)) return;
  }
  if (response.toolCalls.empty()) return finishTurn();
  if (!runTools(generation, response.toolCalls)) return;
  if (turn_->round == maxToolRounds - 1) {
    append(Kind::status, "Stopped after " + std::to_string(maxToolRounds) + " tool rounds.");
    return finishTurn();
  }
  ++turn_->round;
  startRound(generation);
}

bool AISession::runTools(std::uint64_t generation, const std::vector<AIToolCall>& calls) {
  refreshStatus("Applying " + std::to_string(calls.size()) + " tool call(s)…");
  std::vector<AIToolResult> results;
  results.reserve(calls.size());
  for (const AIToolCall& call : calls) {
    if (!isCurrent(generation)) return false;
    auto document = turn_->document.lock();
    auto editor = turn_->editor.lock();
    if (!document || !editor) {
      failTurn(generation, "No project is open.");
      return false;
    }
    append(Kind::tool, "→ " + call.name);
    if (!isCurrent(generation)) return false;
    AIToolResult result = AIToolExecutor::execute(call, *document, *editor, turn_->limits);
    turn_->anyToolRan = true;
    if (result.isError) {
      append(Kind::error, "✗ " + call.name + ": " + result.content);
    } else {
      append(Kind::tool, "✓ " + result.content);
    }
    results.push_back(std::move(result));
  }
  if (!isCurrent(generation)) return false;
  conversation_.emplace_back(std::in_place_type<AIToolResultsItem>, std::move(results));
  return true;
}

void AISession::failTurn(std::uint64_t generation, const std::string& errorText) {
  if (!isCurrent(generation)) return;
  append(Kind::error, errorText);
  if (isCurrent(generation)) finishTurn();
}

void AISession::finishTurn() {
  if (!turn_) return;
  std::optional<Turn> turn = std::exchange(turn_, std::nullopt);
  retireWorker();
  if (turn->interactionBegun) {
    if (auto document = turn->document.lock()) {
      if (turn->anyToolRan) {
        auto undo = undo_.lock();
        document->endInteraction("AI Edit", undo.get());
      } else {
        document->cancelInteraction();
      }
    }
  }
  removeTrailingStatus();
  setBusy(false);
}

void AISession::retireWorker() {
  // A stopped call may still be unwinding; it is joined later, so the main
  // thread does not wait for it now.
  std::erase_if(retired_, [](const Worker& worker) { return worker.finished->load(); });
  if (!call_) return;
  call_->thread.request_stop();
  retired_.push_back(std::move(*call_));
  call_.reset();
}

// --- The thread's lines ---

void AISession::append(Kind kind, std::string text) {
  messages_.push_back(AIChatDisplayMessage{core::Uuid::make(), kind, std::move(text), core::nowTimestamp()});
  notify(AISessionField::messages);
}

void AISession::refreshStatus(std::string text) {
  removeTrailingStatus();
  append(Kind::status, std::move(text));
}

void AISession::removeTrailingStatus() {
  bool removed = false;
  while (!messages_.empty() && messages_.back().kind == Kind::status) {
    messages_.pop_back();
    removed = true;
  }
  if (removed) notify(AISessionField::messages);
}

void AISession::setBusy(bool busy) {
  if (busy == isBusy_) return;
  isBusy_ = busy;
  notify(AISessionField::isBusy);
}

void AISession::notify(AISessionField field) {
  // A copy: an observer may unsubscribe (itself or another) while called.
  const auto observers = observers_;
  for (const auto& [token, observer] : observers) {
    if (observer) observer(field);
  }
}

}  // namespace orvane::assistant
