// Provider settings: the kind table, the model that follows the defaults
// through a provider change, the retired model id, the address rules, and
// the keychain's trimming and reading of keys.

#include <gtest/gtest.h>

#include <string>

#include "assistant/ai_settings.hpp"
#include "assistant/key_stores.hpp"
#include "core/settings_store.hpp"

namespace orvane::assistant {
namespace {

using Kind = AIProviderKind;

class AISettingsTest : public ::testing::Test {
 protected:
  core::MemorySettingsStore defaults;
  MemoryKeyStore keys;
  AIKeychain keychain{keys};
  AISettings settings{defaults, keychain};
};

TEST_F(AISettingsTest, KindsRoundTripByRawValueInTableOrder) {
  std::vector<std::string> raws;
  for (const Kind kind : allAIProviderKinds) {
    raws.emplace_back(rawValue(kind));
    EXPECT_EQ(aiProviderKindFromRaw(rawValue(kind)), kind);
  }
  EXPECT_EQ(raws, (std::vector<std::string>{"claude", "openAI", "custom"}));
  EXPECT_EQ(aiProviderKindFromRaw("openai"), std::nullopt);  // raw values are case-sensitive
  EXPECT_EQ(aiProviderKindFromRaw(""), std::nullopt);
  EXPECT_EQ(displayName(Kind::custom), "Custom (OpenAI-compatible)");
  EXPECT_EQ(defaultModel(Kind::claude), "claude-sonnet-5");
  EXPECT_EQ(defaultModel(Kind::custom), "gpt-4o");
  EXPECT_EQ(defaultBaseURL(Kind::openAI), "https://api.openai.com/v1");
  EXPECT_EQ(defaultBaseURL(Kind::custom), "http://localhost:11434/v1");
}

TEST_F(AISettingsTest, SuggestedModelsKeepTheirOrderAndNames) {
  const auto& claude = suggestedModels(Kind::claude);
  ASSERT_EQ(claude.size(), 6u);
  EXPECT_EQ(claude.front(), (AIModelInfo{"claude-sonnet-5", "Claude Sonnet 5"}));
  EXPECT_EQ(claude.back(), (AIModelInfo{"claude-sonnet-4-5-20250929", "Claude Sonnet 4.5"}));
  const auto& openAI = suggestedModels(Kind::openAI);
  ASSERT_EQ(openAI.size(), 5u);
  EXPECT_EQ(openAI[1], (AIModelInfo{"gpt-4o-mini", "GPT-4o mini"}));
  EXPECT_EQ(openAI[4], (AIModelInfo{"o4-mini", "o4-mini"}));
  EXPECT_EQ(suggestedModels(Kind::custom),
            (std::vector<AIModelInfo>{{"gpt-4o", "gpt-4o"}, {"llama3.2", "llama3.2"}}));
}

TEST_F(AISettingsTest, AbsentUnknownOrMistypedProviderReadsAsClaude) {
  EXPECT_EQ(settings.provider(), Kind::claude);
  defaults.setValue("ai.provider", std::string("gemini"));
  EXPECT_EQ(settings.provider(), Kind::claude);
  defaults.setValue("ai.provider", 2.0);
  EXPECT_EQ(settings.provider(), Kind::claude);
  settings.setProvider(Kind::custom);
  EXPECT_EQ(defaults.stringValue("ai.provider"), "custom");
  EXPECT_EQ(settings.provider(), Kind::custom);
}

TEST_F(AISettingsTest, ModelFollowsTheDefaultsUntilChosenByHand) {
  EXPECT_EQ(settings.model(), "claude-sonnet-5");  // nothing stored
  settings.setProvider(Kind::openAI);
  EXPECT_EQ(defaults.stringValue("ai.model"), "gpt-4o");
  settings.setProvider(Kind::claude);
  EXPECT_EQ(settings.model(), "claude-sonnet-5");

  settings.setModel("claude-opus-5");
  settings.setProvider(Kind::openAI);
  EXPECT_EQ(settings.model(), "claude-opus-5");

  settings.setModel("llama3.2");
  settings.setProvider(Kind::custom);
  settings.setProvider(Kind::claude);
  EXPECT_EQ(settings.model(), "llama3.2");
}

TEST_F(AISettingsTest, RetiredModelHealsOnReadAndMovesWithTheProvider) {
  defaults.setValue("ai.model", std::string("claude-sonnet-4-20250514"));
  EXPECT_EQ(settings.model(), "claude-sonnet-5");
  defaults.setValue("ai.provider", std::string("custom"));
  EXPECT_EQ(settings.model(), "gpt-4o");
  settings.setProvider(Kind::openAI);
  EXPECT_EQ(defaults.stringValue("ai.model"), "gpt-4o");
  settings.setModel("");
  EXPECT_EQ(settings.model(), "gpt-4o");
}

TEST_F(AISettingsTest, BaseURLFallsBackToTheProvidersDefault) {
  EXPECT_EQ(settings.baseURL(), "https://api.anthropic.com");
  settings.setProvider(Kind::custom);
  EXPECT_EQ(settings.baseURL(), "http://localhost:11434/v1");
  settings.setBaseURL("http://127.0.0.1:8080/v1");
  EXPECT_EQ(settings.baseURL(), "http://127.0.0.1:8080/v1");
  settings.setBaseURL("");
  EXPECT_EQ(settings.baseURL(), "http://localhost:11434/v1");
}

TEST_F(AISettingsTest, ResolvedBaseURLUsesTheStoredAddressForCustomOnly) {
  settings.setBaseURL("  http://127.0.0.1:8080/v1\n");
  EXPECT_EQ(settings.resolvedBaseURL(), "https://api.anthropic.com");
  settings.setProvider(Kind::openAI);
  EXPECT_EQ(settings.resolvedBaseURL(), "https://api.openai.com/v1");
  settings.setProvider(Kind::custom);
  EXPECT_EQ(settings.resolvedBaseURL(), "http://127.0.0.1:8080/v1");
  settings.setBaseURL("not a url");
  EXPECT_EQ(settings.resolvedBaseURL(), std::nullopt);
  settings.setProvider(Kind::claude);
  EXPECT_EQ(settings.resolvedBaseURL(), "https://api.anthropic.com");
}

TEST(ValidatedBaseURLTest, AcceptsHttpAndHttpsWithAHost) {
  EXPECT_EQ(validatedBaseURL("https://api.anthropic.com"), "https://api.anthropic.com");
  EXPECT_EQ(validatedBaseURL("\t http://localhost:11434/v1 \r\n"), "http://localhost:11434/v1");
  EXPECT_EQ(validatedBaseURL("HTTP://[::1]:8080/v1"), "HTTP://[::1]:8080/v1");
  EXPECT_EQ(validatedBaseURL("\u00A0https://example.com/v1\u2028"), "https://example.com/v1");
}

TEST(ValidatedBaseURLTest, RejectsWhatIsNoWebAddress) {
  for (const char* text : {"", "   \n", "localhost:11434/v1", "api.openai.com/v1", "ftp://example.com",
                           "file:///etc/passwd", "http://", "https:///v1", "http://exa mple.com",
                           "http://example.com/a b", "http://example.com\n/v1", "http://example.com:99999",
                           "mailto:someone@example.com", "://example.com"}) {
    EXPECT_EQ(validatedBaseURL(text), std::nullopt) << '"' << text << '"';
  }
}

TEST_F(AISettingsTest, StatusLabelNamesProviderAndModel) {
  EXPECT_EQ(settings.statusLabel(), "Anthropic Claude · claude-sonnet-5");
  settings.setProvider(Kind::custom);
  settings.setModel("llama3.2");
  EXPECT_EQ(settings.statusLabel(), "Custom (OpenAI-compatible) · llama3.2");
}

TEST_F(AISettingsTest, KeysAreTrimmedAndKeptPerProvider) {
  keychain.setAPIKey("  sk-ant-123\r\n", Kind::claude);
  keychain.setAPIKey("\u00A0sk-openai\t", Kind::openAI);
  EXPECT_EQ(keychain.apiKey(Kind::claude), "sk-ant-123");
  EXPECT_EQ(keychain.apiKey(Kind::openAI), "sk-openai");
  EXPECT_EQ(keychain.apiKey(Kind::custom), std::nullopt);
  EXPECT_EQ(keys.read("com.brightfold.orvane.ai", "claude"), "sk-ant-123");
  EXPECT_TRUE(settings.hasAPIKey());
  settings.setProvider(Kind::custom);
  EXPECT_FALSE(settings.hasAPIKey());

  keychain.deleteAPIKey(Kind::openAI);
  EXPECT_EQ(keychain.apiKey(Kind::openAI), std::nullopt);
  EXPECT_EQ(keychain.apiKey(Kind::claude), "sk-ant-123");
}

TEST_F(AISettingsTest, BlankKeyDeletesTheStoredKey) {
  keychain.setAPIKey("sk-ant-123", Kind::claude);
  keychain.setAPIKey(" \n\t ", Kind::claude);
  EXPECT_EQ(keys.read("com.brightfold.orvane.ai", "claude"), std::nullopt);
  EXPECT_FALSE(settings.hasAPIKey());
}

TEST_F(AISettingsTest, EmptyOrNonUTF8StoredKeyReadsAsNone) {
  keys.write(AIKeychain::service, "claude", "");
  EXPECT_EQ(keychain.apiKey(Kind::claude), std::nullopt);
  EXPECT_FALSE(settings.hasAPIKey());
  for (const char* bad : {"sk-\xff", "sk-\xc0\xaf", "sk-\xed\xa0\x80", "sk-\xe2\x82"}) {
    keys.write(AIKeychain::service, "claude", bad);
    EXPECT_EQ(keychain.apiKey(Kind::claude), std::nullopt);
  }
  keys.write(AIKeychain::service, "claude", "sk-\u00e9\U0001F511");
  EXPECT_EQ(keychain.apiKey(Kind::claude), "sk-\u00e9\U0001F511");
}

TEST_F(AISettingsTest, NonUTF8KeyIsNotStored) {
  keychain.setAPIKey("sk-old", Kind::claude);
  keychain.setAPIKey("sk-\xff\xfe", Kind::claude);
  EXPECT_EQ(keys.read(AIKeychain::service, "claude"), std::nullopt);
}

TEST(SettingsTextTest, TrimsUnicodeBlanksButNotBrokenBytes) {
  using settings_text::trimWhitespaceAndNewlines;
  EXPECT_EQ(trimWhitespaceAndNewlines("\u3000\u2003key\u0085\u202F"), "key");
  EXPECT_EQ(trimWhitespaceAndNewlines("\xff key \xa0"), "\xff key \xa0");  // a lone continuation byte stays
  EXPECT_EQ(trimWhitespaceAndNewlines("a b"), "a b");
  EXPECT_EQ(trimWhitespaceAndNewlines(" \u00A0 "), "");
}

}  // namespace
}  // namespace orvane::assistant
