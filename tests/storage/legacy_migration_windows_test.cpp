#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>

#include "storage/data_folder.h"
#include "storage/settings_registry.h"
#include "tests/storage/registry_fixture.h"
#include "tests/storage/throwaway_folder.h"

namespace {

class LegacyMigration : public testing::Test {
 protected:
  LegacyMigration() { Clean(); }
  ~LegacyMigration() override { Clean(); }

  void Clean() {
    oldKey_.DeleteTree();
    newKey_.DeleteTree();
    runKey_.DeleteValue(L"Halvern");
    runKey_.DeleteValue(L"Vantora");
    std::filesystem::remove_all(oldFolder_);
    std::filesystem::remove_all(newFolder_);
  }

  TestKey oldKey_{L"Software\\Halvern"};
  TestKey newKey_{kSettingsKey};
  TestKey runKey_{kRunKey};
  std::filesystem::path oldFolder_ = RoamingFolder() + L"\\Halvern";
  std::filesystem::path newFolder_ = RoamingFolder() + L"\\Vantora";
};

TEST_F(LegacyMigration, NeverTouchesWhatThisProgramHas) {
  oldKey_.WriteNumber(L"PollIntervalSec", 7);
  newKey_.WriteNumber(L"AlertActions", 1);
  runKey_.WriteText(L"Halvern", REG_SZ, L"old");
  runKey_.WriteText(L"Vantora", REG_SZ, std::wstring(L"new", 4));
  std::filesystem::create_directories(oldFolder_);
  std::filesystem::create_directories(newFolder_);
  MigrateLegacySettings();
  EXPECT_EQ(newKey_.Read(L"PollIntervalSec"), "none");
  EXPECT_EQ(runKey_.Read(L"Halvern"), "none");
  EXPECT_EQ(runKey_.Read(L"Vantora"), TestKey::Text(std::wstring(L"new", 4)));
  EXPECT_TRUE(std::filesystem::exists(oldFolder_));
}

}  // namespace
