// Key stores: the key file keeps keys apart by account across instances,
// stays readable by the user alone, is replaced whole and atomically, and
// survives corruption; without a secret service the default store is the
// key file and says so.

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "assistant/ai_settings.hpp"
#include "assistant/key_stores.hpp"

namespace orvane::assistant {
namespace {

namespace fs = std::filesystem;
constexpr std::string_view kService = AIKeychain::service;

class KeyFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (fs::temp_directory_path() / "orvane-keys-XXXXXX").string();
    ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
    root = pattern;
  }
  void TearDown() override {
    std::error_code ignored;
    fs::permissions(root, fs::perms::owner_all, ignored);
    fs::remove_all(root, ignored);
  }

  static unsigned modeOf(const fs::path& path) {
    struct stat info {};
    EXPECT_EQ(::stat(path.c_str(), &info), 0) << path;
    return info.st_mode & 07777;
  }
  static void writeRaw(const fs::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
  }
  static std::string readRaw(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  std::vector<std::string> namesIn(const fs::path& folder) const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename().string());
    return names;
  }

  fs::path root;
};

TEST_F(KeyFileTest, KeysSurviveAcrossInstancesAndStayApartByAccount) {
  const fs::path file = root / "ai-keys.json";
  {
    FileKeyStore store(file.string());
    EXPECT_EQ(store.read(kService, "claude"), std::nullopt);  // no file yet
    store.write(kService, "claude", "sk-ant-1");
    store.write(kService, "openAI", "sk-oa-2");
    store.write("other.service", "claude", "elsewhere");
    store.write(kService, "claude", "sk-ant-3");
  }
  FileKeyStore again(file.string());
  EXPECT_EQ(again.read(kService, "claude"), "sk-ant-3");
  EXPECT_EQ(again.read(kService, "openAI"), "sk-oa-2");
  EXPECT_EQ(again.read("other.service", "claude"), "elsewhere");
  EXPECT_EQ(again.read(kService, "custom"), std::nullopt);

  again.remove(kService, "openAI");
  again.remove(kService, "custom");  // absent: nothing happens
  FileKeyStore third(file.string());
  EXPECT_EQ(third.read(kService, "openAI"), std::nullopt);
  EXPECT_EQ(third.read(kService, "claude"), "sk-ant-3");
}

TEST_F(KeyFileTest, FileIsReadableByTheUserAloneAndLeavesNoTemporaries) {
  const fs::path folder = root / "data" / "Orvane";
  const fs::path file = folder / "ai-keys.json";
  FileKeyStore store(file.string());
  store.write(kService, "claude", "sk-ant-1");
  EXPECT_EQ(modeOf(folder), 0700u);
  EXPECT_EQ(modeOf(file), 0600u);

  // A file loosened by hand is tightened again by the next write.
  ::chmod(file.c_str(), 0644);
  store.write(kService, "openAI", "sk-oa-2");
  EXPECT_EQ(modeOf(file), 0600u);
  store.remove(kService, "claude");
  EXPECT_EQ(modeOf(file), 0600u);
  EXPECT_EQ(namesIn(folder), std::vector<std::string>{"ai-keys.json"});
}

TEST_F(KeyFileTest, WriteReplacesTheFileRatherThanRewritingIt) {
  const fs::path file = root / "ai-keys.json";
  FileKeyStore store(file.string());
  store.write(kService, "claude", "sk-ant-1");
  // A hard link keeps the old contents if, and only if, the new file was
  // renamed into place instead of truncated and written over.
  const fs::path oldLink = root / "old-link";
  fs::create_hard_link(file, oldLink);
  const std::string before = readRaw(oldLink);
  store.write(kService, "claude", "sk-ant-2");
  EXPECT_EQ(readRaw(oldLink), before);
  EXPECT_EQ(store.read(kService, "claude"), "sk-ant-2");
}

TEST_F(KeyFileTest, CorruptFileReadsAsEmptyAndIsReplacedWhole) {
  const fs::path file = root / "ai-keys.json";
  FileKeyStore store(file.string());
  for (const std::string corrupt : {std::string("{\"com.brightfold.orvane.ai/claude\": \"sk-"),
                                    std::string("[\"com.brightfold.orvane.ai/claude\", \"sk\"]"), std::string(),
                                    std::string("\0\x01\x02garbage", 10),
                                    std::string("{\"com.brightfold.orvane.ai/claude\": 42}")}) {
    writeRaw(file, corrupt);
    EXPECT_EQ(store.read(kService, "claude"), std::nullopt);
  }
  writeRaw(file, "{not json at all");
  store.write(kService, "openAI", "sk-oa-2");
  EXPECT_EQ(store.read(kService, "openAI"), "sk-oa-2");
  EXPECT_EQ(readRaw(file).find("not json"), std::string::npos);
}

TEST_F(KeyFileTest, NonUTF8BytesInTheFileGiveNoKey) {
  const fs::path file = root / "ai-keys.json";
  writeRaw(file, "{\"com.brightfold.orvane.ai/claude\": \"sk-\xff\xfe\"}");
  FileKeyStore store(file.string());
  AIKeychain keychain(store);
  EXPECT_EQ(keychain.apiKey(AIProviderKind::claude), std::nullopt);
}

TEST_F(KeyFileTest, OnlyARegularFileIsRead) {
  const fs::path target = root / "elsewhere.json";
  writeRaw(target, "{\"com.brightfold.orvane.ai/claude\": \"sk-planted\"}");
  const fs::path link = root / "ai-keys.json";
  fs::create_symlink(target, link);
  EXPECT_EQ(FileKeyStore(link.string()).read(kService, "claude"), std::nullopt);

  const fs::path folderInstead = root / "folder.json";
  fs::create_directory(folderInstead);
  EXPECT_EQ(FileKeyStore(folderInstead.string()).read(kService, "claude"), std::nullopt);

  const fs::path fifo = root / "fifo.json";
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  EXPECT_EQ(FileKeyStore(fifo.string()).read(kService, "claude"), std::nullopt);  // and does not block
}

TEST_F(KeyFileTest, UnwritableFolderLosesTheWriteQuietly) {
  if (::geteuid() == 0) GTEST_SKIP() << "root writes anywhere";
  const fs::path folder = root / "locked";
  fs::create_directory(folder);
  const fs::path file = folder / "ai-keys.json";
  FileKeyStore store(file.string());
  store.write(kService, "claude", "sk-ant-1");
  ::chmod(folder.c_str(), 0500);
  store.write(kService, "claude", "sk-ant-2");
  EXPECT_EQ(store.read(kService, "claude"), "sk-ant-1");
}

TEST_F(KeyFileTest, DescriptionNamesTheFileUnderHomeWithATilde) {
  const char* oldHome = std::getenv("HOME");
  const std::optional<std::string> saved = oldHome ? std::optional<std::string>(oldHome) : std::nullopt;
  ::setenv("HOME", root.c_str(), 1);
  const std::string inside = FileKeyStore((root / "share" / "ai-keys.json").string()).storeDescription();
  const std::string outside = FileKeyStore("/var/keys/ai-keys.json").storeDescription();
  if (saved) ::setenv("HOME", saved->c_str(), 1); else ::unsetenv("HOME");
  EXPECT_EQ(inside, "Key file (~/share/ai-keys.json, readable only by you)");
  EXPECT_EQ(outside, "Key file (/var/keys/ai-keys.json, readable only by you)");
}

TEST_F(KeyFileTest, WithoutASecretServiceTheDefaultStoreIsTheKeyFile) {
  // The tests run without a QCoreApplication; a bus address that leads
  // nowhere also keeps a keyring of the machine out of it.
  const char* oldBus = std::getenv("DBUS_SESSION_BUS_ADDRESS");
  const std::optional<std::string> saved = oldBus ? std::optional<std::string>(oldBus) : std::nullopt;
  ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/orvane-test-bus", 1);
  const fs::path folder = root / "new" / "Orvane";
  const std::unique_ptr<KeyStore> store = makeDefaultKeyStore(folder.string());
  if (saved) ::setenv("DBUS_SESSION_BUS_ADDRESS", saved->c_str(), 1); else ::unsetenv("DBUS_SESSION_BUS_ADDRESS");

  EXPECT_FALSE(SecretServiceKeyStore::answers());
  ASSERT_NE(store, nullptr);
  EXPECT_NE(dynamic_cast<FileKeyStore*>(store.get()), nullptr);
  EXPECT_EQ(modeOf(folder), 0700u);
  EXPECT_NE(store->storeDescription().find("ai-keys.json, readable only by you)"), std::string::npos);

  AIKeychain keychain(*store);
  keychain.setAPIKey(" sk-ant-1 ", AIProviderKind::claude);
  EXPECT_EQ(FileKeyStore((folder / "ai-keys.json").string()).read(kService, "claude"), "sk-ant-1");
}

TEST(SecretServiceKeyStoreTest, WithoutAnApplicationReadsNothingAndWritesNothing) {
  SecretServiceKeyStore store;
  store.write(kService, "orvane-test", "sk-never");
  EXPECT_EQ(store.read(kService, "orvane-test"), std::nullopt);
  store.remove(kService, "orvane-test");
  EXPECT_EQ(store.storeDescription(), "System keyring");
}

TEST(KeyFilePathTest, JoinsTheDataFolderOnce) {
  EXPECT_EQ(keyFilePath("/home/u/.local/share/Orvane"), "/home/u/.local/share/Orvane/ai-keys.json");
  EXPECT_EQ(keyFilePath("/home/u/.local/share/Orvane//"), "/home/u/.local/share/Orvane/ai-keys.json");
  EXPECT_EQ(keyFilePath(""), "./ai-keys.json");
}

}  // namespace
}  // namespace orvane::assistant
