#include <windows.h>

#include <gtest/gtest.h>
#include <objbase.h>

#include <filesystem>

#include "autostart/legacy_migration.h"
#include "autostart/logon_task.h"
#include "tests/support/profile.h"

namespace {

TEST(LogonTask, LeavesTheThreadsComAsItWas) {
  ASSERT_EQ(::CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
  (void)IsAdminTaskInstalled();
  EXPECT_EQ(::CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_FALSE) << "the thread's own initialisation is gone";
  for (int times = 0; times < 2; ++times) ::CoUninitialize();
  (void)IsAdminTaskInstalled();
  EXPECT_EQ(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK) << "an initialisation was left behind";
  ::CoUninitialize();
}

// What it takes over where there is nothing yet, the start of the whole program shows.
TEST(LegacyMigration, NeverReplacesWhatThisProgramHas) {
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
