#include "app/qt_settings_store.hpp"

#include <QSettings>

#include <gtest/gtest.h>

#include "tests/app/app_test_support.hpp"

namespace orvane::app {
namespace {

using QtSettingsStoreTest = testing_support::AppTest;

TEST_F(QtSettingsStoreTest, ValuesKeepTheirTypeAcrossStores) {
  {
    QtSettingsStore store;
    store.setValue("stagePreview.gpu", true);
    store.setValue("export.bitrate", 16.5);
    store.setValue("ai.model", std::string("s:looks like a tag"));
  }
  QSettings().sync();
  QtSettingsStore reopened;
  EXPECT_EQ(reopened.boolValue("stagePreview.gpu"), true);
  EXPECT_EQ(reopened.doubleValue("export.bitrate"), 16.5);
  EXPECT_EQ(reopened.stringValue("ai.model"), "s:looks like a tag");
  // A value read with another type is absent, as in the memory store.
  EXPECT_FALSE(reopened.stringValue("stagePreview.gpu"));
}

TEST_F(QtSettingsStoreTest, RemovedAndForeignValuesReadAsAbsent) {
  QtSettingsStore store;
  store.setValue("ai.provider", std::string("openAI"));
  store.remove("ai.provider");
  EXPECT_FALSE(store.value("ai.provider"));

  QSettings().setValue(QStringLiteral("preferences/ai.baseURL"), QStringLiteral("http://no-prefix"));
  QSettings().setValue(QStringLiteral("preferences/export.n"), QStringLiteral("d:12abc"));
  EXPECT_FALSE(store.value("ai.baseURL"));
  EXPECT_FALSE(store.value("export.n"));
}

TEST(SettingValueTextTest, EncodesEachTypeAndRejectsBrokenText) {
  EXPECT_EQ(encodeSettingValue(false), "b:false");
  EXPECT_EQ(encodeSettingValue(0.1), "d:0.1");
  EXPECT_EQ(decodeSettingValue("d:0.1"), core::SettingValue(0.1));
  EXPECT_EQ(decodeSettingValue("s:"), core::SettingValue(std::string()));
  EXPECT_FALSE(decodeSettingValue("b:yes"));
  EXPECT_FALSE(decodeSettingValue("d:inf"));
  EXPECT_FALSE(decodeSettingValue("x:1"));
  EXPECT_FALSE(decodeSettingValue("d"));
}

}  // namespace
}  // namespace orvane::app
