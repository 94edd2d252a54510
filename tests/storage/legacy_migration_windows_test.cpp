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

TEST_F(LegacyMigration, TakesEverythingOver) {
  oldKey_.WriteNumber(L"PollIntervalSec", 7);
  oldKey_.Write(L"Odd", 99, std::string(4096, 'x'));
  TestKey(L"Software\\Halvern\\Sub").WriteNumber(L"x", 1);
  runKey_.WriteText(L"Halvern", REG_SZ, L"old");
  std::filesystem::create_directories(oldFolder_);
  ThrowawayFolder::Write((oldFolder_ / "rules.csv").wstring(), "x");
  const ULONGLONG start = ::GetTickCount64();
  MigrateLegacySettings();
  EXPECT_LT(::GetTickCount64() - start, 15'000U);

  EXPECT_EQ(newKey_.Read(L"PollIntervalSec"), TestKey::Number(7));
  EXPECT_EQ(newKey_.Read(L"Odd"), "99:" + std::string(4096, 'x'));
  EXPECT_FALSE(TestKey(L"Software\\Vantora\\Sub").Exists());
  EXPECT_TRUE(oldKey_.Exists());
  EXPECT_EQ(ThrowawayFolder::Read((newFolder_ / "rules.csv").wstring()), "x");
  EXPECT_FALSE(std::filesystem::exists(oldFolder_));
  wchar_t self[MAX_PATH] = {};
  ::GetModuleFileNameW(nullptr, self, MAX_PATH);
  EXPECT_EQ(runKey_.Read(L"Halvern"), "none");
  EXPECT_EQ(runKey_.Read(L"Vantora"), TestKey::Text(L'"' + std::wstring(self) + L'"' + std::wstring(1, L'\0')));
}

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

TEST_F(LegacyMigration, WithoutTheEarlierProductNothingAppears) {
  ThrowawayFolder::Write(oldFolder_.wstring(), "a file of that name is no data folder");
  MigrateLegacySettings();
  EXPECT_FALSE(newKey_.Exists());
  EXPECT_EQ(runKey_.Read(L"Vantora"), "none");
  EXPECT_FALSE(std::filesystem::exists(newFolder_));
}

TEST_F(LegacyMigration, CopyingEndsAtAValueThatDoesNotFit) {
  oldKey_.WriteNumber(L"A", 1);
  oldKey_.Write(L"B", REG_BINARY, std::string(4097, 'x'));
  MigrateLegacySettings();
  EXPECT_EQ(newKey_.Read(L"B"), "none");
  EXPECT_TRUE(newKey_.Exists());
}

TEST_F(LegacyMigration, TheRulesFolderIsMadeWhereThePathIsAsked) {
  EXPECT_EQ(GetRulesFilePath(), (newFolder_ / "rules.csv").wstring());
  EXPECT_TRUE(std::filesystem::is_directory(newFolder_));
}

}  // namespace
