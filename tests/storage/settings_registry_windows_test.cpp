#include "autostart/legacy_migration.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/profile.h"

namespace {

// What it takes over where there is nothing yet, the start of the whole program shows.
TEST(SettingsRegistry, TheEarlierProductsNeverReplaceWhatThisProgramHas) {
  const e2e::Profile profile;
  profile.Set(e2e::kLegacySettings, L"PollIntervalSec", e2e::RegistryValue::Number(7));
  profile.Set(L"AlertActions", 1);
  for (const wchar_t* name : {L"Halvern", L"Vantora"}) profile.Set(e2e::kRun, name, e2e::RegistryValue::Text(name));
  for (const auto& folder : {profile.LegacyFolder(), profile.DataFolder()}) std::filesystem::create_directories(folder);
  MigrateLegacySettings();
  EXPECT_EQ(profile.Get(e2e::kSettings, L"PollIntervalSec"), std::nullopt);
  EXPECT_EQ(profile.Get(e2e::kRun, L"Halvern"), std::nullopt);
  EXPECT_EQ(profile.Get(e2e::kRun, L"Vantora"), e2e::RegistryValue::Text(L"Vantora"));
  EXPECT_TRUE(e2e::PathExists(profile.LegacyFolder()));
}

}  // namespace
