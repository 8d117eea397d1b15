#include "core/settings_store.hpp"

#include <gtest/gtest.h>

namespace orvane::core {
namespace {

TEST(SettingsStoreTest, TypedReadsSeeOnlyValuesStoredWithThatType) {
  MemorySettingsStore settings;
  EXPECT_FALSE(settings.value("ai.model"));
  settings.setValue("ai.model", std::string("local-model"));
  settings.setValue("viewer.smartGuides", false);
  settings.setValue("export.quality", 0.8);
  EXPECT_EQ(settings.stringValue("ai.model"), "local-model");
  EXPECT_EQ(settings.boolValue("viewer.smartGuides"), false);
  EXPECT_EQ(settings.doubleValue("export.quality"), 0.8);
  // A value of another type reads as absent rather than converted.
  EXPECT_FALSE(settings.boolValue("ai.model"));
  EXPECT_FALSE(settings.stringValue("viewer.smartGuides"));
}

TEST(SettingsStoreTest, WritingReplacesAndRemovingForgets) {
  MemorySettingsStore settings;
  settings.setValue("ai.provider", std::string("anthropic"));
  settings.setValue("ai.provider", std::string("openai"));
  EXPECT_EQ(settings.stringValue("ai.provider"), "openai");
  settings.remove("ai.provider");
  EXPECT_FALSE(settings.value("ai.provider"));
  settings.remove("never.stored");  // nothing to forget: no harm
}

}  // namespace
}  // namespace orvane::core
