#pragma once
// The places an API key can live: the desktop's secret service (through
// QtKeychain), a JSON file readable by the user alone for desktops without
// one, and memory for tests and one-off runs. makeDefaultKeyStore (declared
// with KeyStore) picks between the first two. No store ever writes a secret
// into a log or an error message.

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "assistant/ai_settings.hpp"

namespace orvane::assistant {

// Secrets kept in this process only. Any thread.
class MemoryKeyStore final : public KeyStore {
 public:
  std::optional<std::string> read(std::string_view service, std::string_view account) const override;
  void write(std::string_view service, std::string_view account, std::string_view secret) override;
  void remove(std::string_view service, std::string_view account) override;
  std::string storeDescription() const override { return "Memory (this session only)"; }

 private:
  mutable std::mutex mutex_;
  std::map<std::string, std::string, std::less<>> secrets_;
};

// Secrets in one JSON object {"service/account": "secret", ...} at path.
// Every write replaces the whole file atomically (a temporary file of mode
// 0600 in the same folder, synced, then renamed over it), creating the folder
// with mode 0700 when it is missing. A file that is missing, no regular file,
// another user's, or not such an object reads as holding nothing, and the
// next write replaces it. Each call reads the file afresh, so several stores
// on one path agree. Any thread; writes from two processes race, the last
// one wins whole.
class FileKeyStore final : public KeyStore {
 public:
  explicit FileKeyStore(std::string path) : path_(std::move(path)) {}

  std::optional<std::string> read(std::string_view service, std::string_view account) const override;
  void write(std::string_view service, std::string_view account, std::string_view secret) override;
  void remove(std::string_view service, std::string_view account) override;
  // "Key file (~/.local/share/Brightfold/Orvane/ai-keys.json, readable only by you)"
  std::string storeDescription() const override;

  const std::string& path() const { return path_; }

 private:
  using Entries = std::map<std::string, std::string, std::less<>>;
  Entries load() const;
  void save(const Entries& entries) const;

  std::string path_;
  mutable std::mutex mutex_;
};

// The desktop's secret service (GNOME Keyring, KWallet) through QtKeychain,
// as generic passwords by service and account. Each call runs one keychain
// job to its end on a local event loop, so it needs the QCoreApplication and
// its thread (the main thread); without them, or when the service does not
// answer in time, a read gives none and writes do nothing.
class SecretServiceKeyStore final : public KeyStore {
 public:
  std::optional<std::string> read(std::string_view service, std::string_view account) const override;
  void write(std::string_view service, std::string_view account, std::string_view secret) override;
  void remove(std::string_view service, std::string_view account) override;
  std::string storeDescription() const override { return "System keyring"; }

  // Whether a secret service keeps secrets now: a probe entry is written,
  // read back and removed. False without a QCoreApplication or off its
  // thread.
  static bool answers();
};

// The key file's place in a data folder.
std::string keyFilePath(const std::string& dataFolder);

// Text rules shared by the settings and the keychain.
namespace settings_text {
// Well-formed UTF-8: no overlong forms, surrogates or values past U+10FFFF.
bool isValidUTF8(std::string_view text);
// Without Unicode white space and line breaks at either end.
std::string_view trimWhitespaceAndNewlines(std::string_view text);
}  // namespace settings_text

}  // namespace orvane::assistant
