#pragma once
// One assistant thread of one document window: the lines the user sees, the
// conversation the model is sent, and the turn loop that alternates model
// calls and tool calls until the model answers without tools (at most eight
// rounds). A whole turn is one interaction of the document, so it ends as
// one "AI Edit" undo step, or is rolled back when cancelled.
//
// Lives on the main thread with all its fields. Each model call blocks a
// worker thread of its own; its result comes back through the
// MainThreadExecutor, so tools run on the main thread and the main thread
// never waits. The executor and the settings must outlive the session; the
// destructor stops and joins the workers, and results still queued for a
// session that is gone, or for a turn that was cancelled, are dropped.
//
// The window holds the document and the undo stack as shared pointers and
// the EditorState as a member; it hands the session an editor reference
// whose expiry follows the window, e.g. a shared_ptr aliasing a lifetime
// token the window owns: std::shared_ptr<EditorState>(token, &editorState_).

#include <atomic>
#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "assistant/ai_provider_client.hpp"
#include "assistant/ai_settings.hpp"
#include "assistant/ai_tools.hpp"
#include "assistant/ai_types.hpp"
#include "assistant/main_thread_executor.hpp"
#include "core/timestamp.hpp"
#include "core/uuid.hpp"
#include "document/project_document.hpp"
#include "document/undo_stack.hpp"
#include "surfaces/editor_state.hpp"

namespace orvane::assistant {

// One line of the thread as shown.
struct AIChatDisplayMessage {
  enum class Kind { user, assistant, tool, error, status };

  core::Uuid id = core::Uuid::make();
  Kind kind = Kind::status;
  std::string text;
  core::Timestamp createdAt = core::nowTimestamp();
};

// What an observer is told changed.
enum class AISessionField { messages, isBusy, draft };

class AISession {
 public:
  static constexpr int maxToolRounds = 8;
  using Observer = std::function<void(AISessionField)>;

  // overrides (the command line's provider, model, address, key) apply to
  // every call of every turn; they are never stored.
  AISession(const AISettings& settings, MainThreadExecutor& executor, AIEndpointOverrides overrides = {});
  ~AISession();
  AISession(const AISession&) = delete;
  AISession& operator=(const AISession&) = delete;

  void attach(std::weak_ptr<document::ProjectDocument> document, std::weak_ptr<surfaces::EditorState> editor,
              std::weak_ptr<document::UndoStack> undo);

  const std::vector<AIChatDisplayMessage>& messages() const { return messages_; }
  const std::vector<AIConversationItem>& conversation() const { return conversation_; }
  bool isBusy() const { return isBusy_; }
  const std::string& draft() const { return draft_; }
  void setDraft(std::string text);

  // A key is given by the overrides (non-empty), or stored for the provider
  // the session talks to.
  bool hasAPIKey() const;
  // The provider of the session's calls: the override, else the saved one.
  AIProviderKind provider() const;

  // Starts a turn from the draft; blanks, a busy session, a missing key or a
  // closed project leave the draft as it is.
  void send();
  // Stops the turn: the call in flight is abandoned, the turn's edits are
  // rolled back, and the session is idle at once.
  void cancel();
  // Cancels, then forgets the thread and the draft. The project stays.
  void clearThread();

  // Called after each change, synchronously, on the main thread. An
  // observer may call cancel() but must not destroy the session.
  [[nodiscard]] surfaces::Subscription onChange(Observer observer);

 private:
  struct Turn {
    std::uint64_t generation = 0;
    std::weak_ptr<document::ProjectDocument> document;
    std::weak_ptr<surfaces::EditorState> editor;
    AIToolExecutor::TurnLimits limits;
    bool interactionBegun = false;
    bool anyToolRan = false;
    int round = 0;
  };
  struct Worker {
    std::jthread thread;
    std::shared_ptr<std::atomic<bool>> finished;
  };
  using Reply = std::expected<AICompletionResponse, AIProviderError>;

  bool isCurrent(std::uint64_t generation) const { return turn_ && turn_->generation == generation; }
  void startTurn(std::uint64_t generation);
  void startRound(std::uint64_t generation);
  void callModel(std::uint64_t generation, AIEndpoint endpoint, AICompletionRequest request);
  void receive(std::uint64_t generation, Reply reply);
  // Runs the calls of one reply; false when the turn ended meanwhile.
  bool runTools(std::uint64_t generation, const std::vector<AIToolCall>& calls);
  void failTurn(std::uint64_t generation, const std::string& errorText);
  void finishTurn();
  void retireWorker();

  void append(AIChatDisplayMessage::Kind kind, std::string text);
  void refreshStatus(std::string text);
  void removeTrailingStatus();
  void setBusy(bool busy);
  void notify(AISessionField field);

  const AISettings& settings_;
  MainThreadExecutor& executor_;
  AIEndpointOverrides overrides_;

  std::weak_ptr<document::ProjectDocument> document_;
  std::weak_ptr<surfaces::EditorState> editor_;
  std::weak_ptr<document::UndoStack> undo_;

  std::vector<AIChatDisplayMessage> messages_;
  std::vector<AIConversationItem> conversation_;
  std::string draft_;
  bool isBusy_ = false;

  std::optional<Turn> turn_;
  std::uint64_t nextGeneration_ = 1;
  std::optional<Worker> call_;
  std::vector<Worker> retired_;

  std::vector<std::pair<int, Observer>> observers_;
  int nextObserverToken_ = 1;
  // Closures posted to the executor and subscriptions hold it weakly: once
  // the session is gone they find it expired and do nothing.
  std::shared_ptr<int> alive_ = std::make_shared<int>(0);
};

}  // namespace orvane::assistant
