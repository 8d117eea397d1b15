// `orvane assist PROJECT --prompt "..." [-o OUT] [--provider claude|openAI|custom]
// [--model ID] [--base-url URL] [--api-key KEY]`: one assistant turn without
// a window. The provider, model and address come from the desktop's
// settings unless given; the key from --api-key, else ORVANE_API_KEY, else
// the key store, and a given key is used for this run only. The thread's
// lines are printed as they come (status lines only on a terminal); when the
// turn ends without an error the edited project is written, whole or not at
// all, to OUT or back over PROJECT. A failed turn leaves the files alone.

#include <unistd.h>

#include <QCoreApplication>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "app/qt_settings_store.hpp"
#include "assistant/ai_session.hpp"
#include "assistant/key_stores.hpp"
#include "assistant/main_thread_executor.hpp"
#include "cli/commands.hpp"
#include "cli/project_input.hpp"
#include "document/autosave_service.hpp"
#include "document/project_codec.hpp"
#include "document/project_document.hpp"
#include "render/gui_runtime.hpp"

namespace orvane::cli {

namespace {

using assistant::AIChatDisplayMessage;

struct AssistOptions {
  std::string project;
  std::string prompt;
  std::string output;
  std::optional<std::string> provider;
  std::optional<std::string> model;
  std::optional<std::string> baseURL;
  std::optional<std::string> apiKey;
};

std::optional<assistant::AIProviderKind> providerNamed(std::string_view text) {
  const auto lower = [](std::string_view s) {
    std::string out(s);
    for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return out;
  };
  for (assistant::AIProviderKind kind : assistant::allAIProviderKinds) {
    if (lower(assistant::rawValue(kind)) == lower(text)) return kind;
  }
  return std::nullopt;
}

// The command line's choices, checked before anything is read or sent.
assistant::AIEndpointOverrides overridesFrom(const AssistOptions& options) {
  assistant::AIEndpointOverrides overrides;
  if (options.provider) {
    overrides.provider = providerNamed(*options.provider);
    if (!overrides.provider) {
      throw CommandFailure("Unknown provider \"" + *options.provider + "\": use claude, openAI or custom.",
                           kExitUsage);
    }
  }
  if (options.model) {
    const std::string model(assistant::settings_text::trimWhitespaceAndNewlines(*options.model));
    if (model.empty()) throw CommandFailure("The model id is empty.", kExitUsage);
    overrides.model = model;
  }
  if (options.baseURL) {
    overrides.baseURL = assistant::validatedBaseURL(*options.baseURL);
    if (!overrides.baseURL) throw CommandFailure("The base URL must be an http or https address.", kExitUsage);
  }
  if (options.apiKey) {
    overrides.apiKey = *options.apiKey;
  } else if (const char* key = std::getenv("ORVANE_API_KEY"); key && *key) {
    overrides.apiKey = key;
  }
  return overrides;
}

void checkArguments(const AssistOptions& options) {
  if (assistant::settings_text::trimWhitespaceAndNewlines(options.prompt).empty()) {
    throw CommandFailure("The prompt is empty.", kExitUsage);
  }
  std::error_code error;
  if (!std::filesystem::exists(options.project, error)) {
    throw CommandFailure("The project file \"" + options.project + "\" does not exist.", kExitUsage);
  }
}

// Settings live where the desktop keeps them, which QSettings finds from
// these names.
void startRuntime() {
  render::ensureGuiRuntime();  // text tools measure with the GUI runtime
  QCoreApplication::setOrganizationName(QStringLiteral("Brightfold"));
  QCoreApplication::setApplicationName(QStringLiteral("Orvane"));
}

// Prints each line of the thread once, as it appears. A provider's error
// is kept as the command's failure instead; a tool's ("✗ name: ...") is a
// line of the thread like the others, for the model works around it.
class ThreadPrinter {
 public:
  explicit ThreadPrinter(const assistant::AISession& session)
      : session_(session), statusShown_(isatty(STDERR_FILENO) == 1) {}

  void print() {
    for (const AIChatDisplayMessage& message : session_.messages()) {
      if (!printed_.insert(message.id).second) continue;
      switch (message.kind) {
        case AIChatDisplayMessage::Kind::user: std::cout << "> " << message.text << '\n'; break;
        case AIChatDisplayMessage::Kind::assistant:
        case AIChatDisplayMessage::Kind::tool: std::cout << message.text << '\n'; break;
        case AIChatDisplayMessage::Kind::error:
          if (message.text.starts_with("✗ ")) {
            std::cout << message.text << '\n';
          } else if (!failure_) {
            failure_ = message.text;
          }
          break;
        case AIChatDisplayMessage::Kind::status:
          if (statusShown_) std::cerr << message.text << '\n';
          break;
      }
    }
    std::cout.flush();
  }

  const std::optional<std::string>& failure() const { return failure_; }

 private:
  const assistant::AISession& session_;
  bool statusShown_;
  std::set<core::Uuid> printed_;
  std::optional<std::string> failure_;
};

void runAssist(const AssistOptions& options) {
  checkArguments(options);
  const assistant::AIEndpointOverrides overrides = overridesFrom(options);
  auto document = std::make_shared<document::ProjectDocument>(readProjectOrFail(options.project));
  startRuntime();
  if (document->hasPackagedMedia()) document->resolvePackagedMedia(options.project);

  app::QtSettingsStore settingsStore;
  // A given key needs no store: the secret service is not even asked.
  std::unique_ptr<assistant::KeyStore> keyStore;
  if (overrides.apiKey) {
    keyStore = std::make_unique<assistant::MemoryKeyStore>();
  } else {
    // The desktop's own data folder, where its autosave lives too.
    keyStore = assistant::makeDefaultKeyStore(document::defaultSupportDirectory().string());
  }
  const assistant::AIKeychain keychain(*keyStore);
  const assistant::AISettings settings(settingsStore, keychain);

  assistant::LoopExecutor loop;
  auto editor = std::make_shared<surfaces::EditorState>();
  auto undo = std::make_shared<document::UndoStack>();
  assistant::AISession session(settings, loop, overrides);
  session.attach(document, editor, undo);
  ThreadPrinter printer(session);
  const surfaces::Subscription subscription = session.onChange([&printer](assistant::AISessionField field) {
    if (field == assistant::AISessionField::messages) printer.print();
  });

  session.setDraft(options.prompt);
  session.send();
  loop.runUntil([&session] { return !session.isBusy(); });
  if (printer.failure()) throw CommandFailure(*printer.failure());

  const std::string output = options.output.empty() ? options.project : options.output;
  if (auto written = document::ProjectCodec::write(document->project(), output); !written) {
    throw CommandFailure(written.error().message);
  }
}

}  // namespace

void addAssistCommand(CLI::App& app) {
  auto options = std::make_shared<AssistOptions>();
  CLI::App* command = app.add_subcommand("assist", "Let the assistant edit a project from one prompt");
  command->add_option("PROJECT", options->project, "The project file to edit")->required();
  command->add_option("-p,--prompt", options->prompt, "What the assistant should do")->required();
  command->add_option("-o,--output", options->output, "Where to write the edited project (default: PROJECT)");
  command->add_option("--provider", options->provider, "claude, openAI or custom (default: the saved one)");
  command->add_option("--model", options->model, "The model id (default: the saved one)");
  command->add_option("--base-url", options->baseURL, "The API address (default: the provider's)");
  command->add_option("--api-key", options->apiKey,
                      "The API key for this run only (default: ORVANE_API_KEY, then the stored key)");
  command->callback([options] { runAssist(*options); });
}

}  // namespace orvane::cli
