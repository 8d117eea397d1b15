#include "assistant/key_stores.hpp"

#include <QCoreApplication>
#include <QEventLoop>
#include <QThread>
#include <QTimer>
#include <qt6keychain/keychain.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <nlohmann/json.hpp>

namespace orvane::assistant {

namespace {

constexpr std::string_view kKeyFileName = "ai-keys.json";
// Far more than any file of a few keys; a larger one is not ours.
constexpr off_t kMaxKeyFileSize = 1 << 20;

std::string entryName(std::string_view service, std::string_view account) {
  std::string name(service);
  name += '/';
  name += account;
  return name;
}

// --- files ---

class FileDescriptor {
 public:
  explicit FileDescriptor(int fd) : fd_(fd) {}
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor() {
    if (fd_ >= 0) ::close(fd_);
  }
  int get() const { return fd_; }
  // Closes now, telling whether the close itself succeeded.
  bool close() {
    const int fd = fd_;
    fd_ = -1;
    return fd < 0 || ::close(fd) == 0;
  }

 private:
  int fd_;
};

std::string parentFolder(const std::string& path) {
  const std::size_t slash = path.find_last_of('/');
  if (slash == std::string::npos) return ".";
  if (slash == 0) return "/";
  return path.substr(0, slash);
}

// mkdir -p, each folder it makes readable by the user alone.
bool ensureFolder(const std::string& folder) {
  struct stat info {};
  if (::stat(folder.c_str(), &info) == 0) return S_ISDIR(info.st_mode);
  if (errno != ENOENT) return false;
  const std::string parent = parentFolder(folder);
  if (parent != folder && !ensureFolder(parent)) return false;
  if (::mkdir(folder.c_str(), 0700) == 0) return true;
  return errno == EEXIST && ::stat(folder.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool writeAll(int fd, std::string_view data) {
  while (!data.empty()) {
    const ssize_t written = ::write(fd, data.data(), data.size());
    if (written < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    data.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

// The file's bytes when it is a regular file of ours of a sane size; none
// otherwise. A file that group or others may read is tightened on the way.
std::optional<std::string> readOwnFile(const std::string& path) {
  // Non-blocking, so that a FIFO planted at the path cannot stall the open.
  FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
  if (file.get() < 0) return std::nullopt;
  struct stat info {};
  if (::fstat(file.get(), &info) != 0 || !S_ISREG(info.st_mode) || info.st_uid != ::geteuid()) return std::nullopt;
  if (info.st_size > kMaxKeyFileSize) return std::nullopt;
  if ((info.st_mode & 077) != 0) ::fchmod(file.get(), 0600);
  std::string bytes;
  char buffer[4096];
  for (;;) {
    const ssize_t got = ::read(file.get(), buffer, sizeof buffer);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return std::nullopt;
    if (got == 0) break;
    bytes.append(buffer, static_cast<std::size_t>(got));
    if (bytes.size() > static_cast<std::size_t>(kMaxKeyFileSize)) return std::nullopt;
  }
  return bytes;
}

// Replaces path whole: readers see the old file or the new one, never a
// part, and the secrets are never readable by others, not even briefly.
bool replaceFileAtomically(const std::string& path, std::string_view contents) {
  const std::string folder = parentFolder(path);
  if (!ensureFolder(folder)) return false;
  std::string temporary = path + ".XXXXXX";
  FileDescriptor file(::mkostemp(temporary.data(), O_CLOEXEC));  // mode 0600
  if (file.get() < 0) return false;
  const bool written = ::fchmod(file.get(), 0600) == 0 && writeAll(file.get(), contents) &&
                       ::fsync(file.get()) == 0 && file.close();
  if (!written || ::rename(temporary.c_str(), path.c_str()) != 0) {
    ::unlink(temporary.c_str());
    return false;
  }
  // The rename itself must reach the disk, or a crash may bring back the
  // old file (or none).
  FileDescriptor directory(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (directory.get() >= 0) ::fsync(directory.get());
  return true;
}

std::string withHomeAsTilde(const std::string& path) {
  const char* home = std::getenv("HOME");
  if (home == nullptr || *home == '\0') return path;
  std::string prefix(home);
  while (prefix.size() > 1 && prefix.back() == '/') prefix.pop_back();
  if (path.size() > prefix.size() && path.compare(0, prefix.size(), prefix) == 0 && path[prefix.size()] == '/') {
    return "~" + path.substr(prefix.size());
  }
  return path;
}

// --- secret service ---

// Long enough for the user to unlock the keyring at the prompt the probe may
// raise; a service that does not exist fails at once.
constexpr std::chrono::milliseconds kProbeTimeout{20000};
// Unlocking a keyring may ask the user for a password; give them time.
constexpr std::chrono::milliseconds kJobTimeout{60000};
constexpr std::string_view kProbeAccount = "probe";

bool onApplicationThread() {
  const QCoreApplication* application = QCoreApplication::instance();
  return application != nullptr && QThread::currentThread() == application->thread();
}

QString toQString(std::string_view text) { return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())); }

// Runs the job to its end on this thread; none when it did not end in time.
// A job that outlives the wait is left to delete itself once it ends, since
// deleting a job in flight would pull its backend out from under it.
std::optional<QKeychain::Error> runJob(std::unique_ptr<QKeychain::Job>& job, std::chrono::milliseconds timeout) {
  job->setAutoDelete(false);
  bool finished = false;
  QEventLoop loop;
  QObject::connect(job.get(), &QKeychain::Job::finished, &loop, [&finished, &loop] {
    finished = true;
    loop.quit();
  });
  QTimer::singleShot(timeout, &loop, &QEventLoop::quit);
  job->start();
  // Some backends report failure from start() itself, before any loop runs.
  if (!finished) loop.exec(QEventLoop::ExcludeUserInputEvents);
  if (!finished) {
    job->setAutoDelete(true);
    job.release();
    return std::nullopt;
  }
  return job->error();
}

struct ReadOutcome {
  std::optional<QKeychain::Error> error;
  std::string data;
};

ReadOutcome readSecret(std::string_view service, std::string_view account, std::chrono::milliseconds timeout) {
  if (!onApplicationThread()) return {};
  auto* reader = new QKeychain::ReadPasswordJob(toQString(service));
  std::unique_ptr<QKeychain::Job> job(reader);
  reader->setKey(toQString(account));
  ReadOutcome outcome{runJob(job, timeout), {}};
  if (outcome.error == QKeychain::NoError) {
    const QByteArray data = reader->binaryData();
    outcome.data.assign(data.constData(), static_cast<std::size_t>(data.size()));
  }
  return outcome;
}

}  // namespace

std::string keyFilePath(const std::string& dataFolder) {
  std::string folder = dataFolder;
  while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
  if (folder.empty()) folder = ".";
  if (folder == "/") return "/" + std::string(kKeyFileName);
  return folder + "/" + std::string(kKeyFileName);
}

std::unique_ptr<KeyStore> makeDefaultKeyStore(const std::string& dataFolder) {
  if (SecretServiceKeyStore::answers()) return std::make_unique<SecretServiceKeyStore>();
  const std::string path = keyFilePath(dataFolder);
  ensureFolder(parentFolder(path));
  return std::make_unique<FileKeyStore>(path);
}

// --- MemoryKeyStore ---

std::optional<std::string> MemoryKeyStore::read(std::string_view service, std::string_view account) const {
  const std::lock_guard lock(mutex_);
  const auto found = secrets_.find(entryName(service, account));
  if (found == secrets_.end()) return std::nullopt;
  return found->second;
}

void MemoryKeyStore::write(std::string_view service, std::string_view account, std::string_view secret) {
  const std::lock_guard lock(mutex_);
  secrets_.insert_or_assign(entryName(service, account), std::string(secret));
}

void MemoryKeyStore::remove(std::string_view service, std::string_view account) {
  const std::lock_guard lock(mutex_);
  const auto found = secrets_.find(entryName(service, account));
  if (found != secrets_.end()) secrets_.erase(found);
}

// --- FileKeyStore ---

FileKeyStore::Entries FileKeyStore::load() const {
  const std::optional<std::string> bytes = readOwnFile(path_);
  if (!bytes) return {};
  // The parser also rejects text that is no UTF-8.
  const nlohmann::json document = nlohmann::json::parse(*bytes, nullptr, false);
  if (document.is_discarded() || !document.is_object()) return {};
  Entries entries;
  for (const auto& [name, value] : document.items()) {
    if (value.is_string()) entries.insert_or_assign(name, value.get<std::string>());
  }
  return entries;
}

void FileKeyStore::save(const Entries& entries) const {
  nlohmann::json document = nlohmann::json::object();
  for (const auto& [name, secret] : entries) document[name] = secret;
  // Replacing bad bytes keeps dump from throwing; the keychain stores UTF-8 only.
  const std::string text = document.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
  replaceFileAtomically(path_, text);
}

std::optional<std::string> FileKeyStore::read(std::string_view service, std::string_view account) const {
  const std::lock_guard lock(mutex_);
  const Entries entries = load();
  const auto found = entries.find(entryName(service, account));
  if (found == entries.end()) return std::nullopt;
  return found->second;
}

void FileKeyStore::write(std::string_view service, std::string_view account, std::string_view secret) {
  const std::lock_guard lock(mutex_);
  Entries entries = load();
  entries.insert_or_assign(entryName(service, account), std::string(secret));
  save(entries);
}

void FileKeyStore::remove(std::string_view service, std::string_view account) {
  const std::lock_guard lock(mutex_);
  Entries entries = load();
  const auto found = entries.find(entryName(service, account));
  if (found == entries.end()) return;
  entries.erase(found);
  save(entries);
}

std::string FileKeyStore::storeDescription() const {
  return "Key file (" + withHomeAsTilde(path_) + ", readable only by you)";
}

// --- SecretServiceKeyStore ---

std::optional<std::string> SecretServiceKeyStore::read(std::string_view service, std::string_view account) const {
  ReadOutcome outcome = readSecret(service, account, kJobTimeout);
  if (outcome.error != QKeychain::NoError) return std::nullopt;
  return std::move(outcome.data);
}

void SecretServiceKeyStore::write(std::string_view service, std::string_view account, std::string_view secret) {
  if (!onApplicationThread()) return;
  auto* writer = new QKeychain::WritePasswordJob(toQString(service));
  std::unique_ptr<QKeychain::Job> job(writer);
  writer->setKey(toQString(account));
  writer->setBinaryData(QByteArray(secret.data(), static_cast<qsizetype>(secret.size())));
  runJob(job, kJobTimeout);
}

void SecretServiceKeyStore::remove(std::string_view service, std::string_view account) {
  if (!onApplicationThread()) return;
  auto* remover = new QKeychain::DeletePasswordJob(toQString(service));
  std::unique_ptr<QKeychain::Job> job(remover);
  remover->setKey(toQString(account));
  runJob(job, kJobTimeout);
}

bool SecretServiceKeyStore::answers() {
  // A service that finds nothing may still be unable to keep anything (no
  // keyring, and no prompt to create one), so only a stored and read-back
  // probe entry counts; the entry holds nothing secret and goes again.
  if (!onApplicationThread()) return false;
  constexpr std::string_view kProbeValue = "orvane";
  auto* writer = new QKeychain::WritePasswordJob(toQString(AIKeychain::service));
  std::unique_ptr<QKeychain::Job> writeJob(writer);
  writer->setKey(toQString(kProbeAccount));
  writer->setBinaryData(QByteArray(kProbeValue.data(), static_cast<qsizetype>(kProbeValue.size())));
  if (runJob(writeJob, kProbeTimeout) != QKeychain::NoError) return false;
  const ReadOutcome outcome = readSecret(AIKeychain::service, kProbeAccount, kProbeTimeout);
  SecretServiceKeyStore().remove(AIKeychain::service, kProbeAccount);
  return outcome.error == QKeychain::NoError && outcome.data == kProbeValue;
}

}  // namespace orvane::assistant
