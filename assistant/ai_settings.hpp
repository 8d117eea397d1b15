#pragma once
// The user's choice of provider, model and address (in the settings store
// under "ai.provider", "ai.model", "ai.baseURL"), and one API key per
// provider kind in a key store: the desktop's secret service, or where none
// answers a file readable by the user alone. A key is never written into a
// project, a log or an error message. Main thread.

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "assistant/ai_types.hpp"
#include "core/settings_store.hpp"

namespace orvane::assistant {

enum class AIProviderKind { claude, openAI, custom };

inline constexpr AIProviderKind allAIProviderKinds[] = {AIProviderKind::claude, AIProviderKind::openAI,
                                                       AIProviderKind::custom};

std::string_view rawValue(AIProviderKind kind);
std::optional<AIProviderKind> aiProviderKindFromRaw(std::string_view raw);
std::string_view displayName(AIProviderKind kind);
std::string_view defaultModel(AIProviderKind kind);
// "https://api.anthropic.com", "https://api.openai.com/v1", "http://localhost:11434/v1".
std::string_view defaultBaseURL(AIProviderKind kind);
const std::vector<AIModelInfo>& suggestedModels(AIProviderKind kind);

// Where secrets live, by service and account.
class KeyStore {
 public:
  virtual ~KeyStore() = default;
  virtual std::optional<std::string> read(std::string_view service, std::string_view account) const = 0;
  virtual void write(std::string_view service, std::string_view account, std::string_view secret) = 0;
  virtual void remove(std::string_view service, std::string_view account) = 0;
  // Which store this is, for the settings sheet ("System keyring", "Key file (…)").
  virtual std::string storeDescription() const = 0;
};

// The desktop's secret service when one answers on the session bus (probed
// once), else the key file in dataFolder ("ai-keys.json", mode 0600).
std::unique_ptr<KeyStore> makeDefaultKeyStore(const std::string& dataFolder);

class AIKeychain {
 public:
  static constexpr std::string_view service = "com.brightfold.orvane.ai";

  explicit AIKeychain(KeyStore& store) : store_(store) {}
  // None on any failure, for non-UTF-8 data or an empty key.
  std::optional<std::string> apiKey(AIProviderKind provider) const;
  // Trims the key; an empty one deletes the stored key.
  void setAPIKey(std::string_view key, AIProviderKind provider);
  void deleteAPIKey(AIProviderKind provider);
  const KeyStore& store() const { return store_; }

 private:
  KeyStore& store_;
};

class AISettings {
 public:
  AISettings(core::SettingsStore& store, const AIKeychain& keychain) : store_(store), keychain_(keychain) {}

  // Absent or unknown reads as claude.
  AIProviderKind provider() const;
  // Moves a default (or empty, or retired) model along to the new kind's default.
  void setProvider(AIProviderKind provider);
  // Empty or the retired default reads as the provider's default model.
  std::string model() const;
  void setModel(std::string_view model);
  // Empty or absent reads as the provider's default address.
  std::string baseURL() const;
  void setBaseURL(std::string_view url);
  // custom: baseURL(); the others: their default address. Trimmed; none when
  // it is no http(s) URL with a host.
  std::optional<std::string> resolvedBaseURL() const;
  bool hasAPIKey() const;
  // "Anthropic Claude · claude-sonnet-5"
  std::string statusLabel() const;

  const AIKeychain& keychain() const { return keychain_; }

 private:
  core::SettingsStore& store_;
  const AIKeychain& keychain_;
};

// The address rule of resolvedBaseURL on any text: trimmed, and none unless
// it is an http or https URL with a host.
std::optional<std::string> validatedBaseURL(std::string_view text);

}  // namespace orvane::assistant
