#include "autostart/legacy_migration.h"
#include "storage/settings_registry.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/profile.h"

namespace {

std::string Bytes(const void* data, std::size_t sizeBytes) { return {static_cast<const char*>(data), sizeBytes}; }

TEST(SettingsRegistry, ValuesOfTheWrongKindLeaveTheirFieldAloneAndExclusionsEndAtTheFirstEmptyOne) {
  AppSettings before;
  before.logFilePath = L"log";
  before.soundFilePath = L"sound";
  before.mainDialogPlacement = {1, 2, 3, 4};
  const std::int32_t noWidth[] = {5, 0, 5, 9};
  const ExclusionList kept = {L"kept"};
  const struct {
    const wchar_t* name;
    DWORD type;
    std::string data;
    ExclusionList exclusions;
  } cases[] = {
      {L"AlertActions", REG_QWORD, std::string(8, 'x'), kept},
      {L"AlertActions", REG_SZ, Bytes(L"12345", 12), kept},
      {L"NotificationThrottleSec", REG_DWORD, Bytes("\0\0\0", 4), kept},
      {L"NotificationThrottleSec", REG_DWORD, Bytes("\x11\x0E\0", 4), kept},
      {L"UpdateCheckIntervalHours", REG_DWORD, Bytes("\x30\0\0", 4), kept},
      {L"IncludeBetas", REG_BINARY, std::string(5, '\0'), kept},
      {L"LogFilePath", REG_SZ, std::string(522, 'x'), kept},
      {L"LogFilePath", REG_BINARY, std::string(520, 'x'), kept},
      {L"SoundFilePath", REG_MULTI_SZ, std::string(100'000, 'x'), kept},
      {L"MainDialogPlacement", REG_BINARY, std::string(12, '\1'), kept},
      {L"MainDialogPlacement", REG_BINARY, std::string(17, '\1'), kept},
      {L"MainDialogPlacement", REG_BINARY, Bytes(noWidth, sizeof noWidth), kept},
      {L"Exclusions", REG_SZ, Bytes(L"a\0b\0", 10), kept},
      {L"Exclusions", REG_MULTI_SZ, Bytes(L"", 2), kept},
      {L"Exclusions", REG_MULTI_SZ, "x", kept},
      {L"Exclusions", REG_MULTI_SZ, Bytes(L"a\0 b \0\0", 14), {L"a", L" b "}},
      {L"Exclusions", REG_MULTI_SZ, Bytes(L"a\0\0b\0", 12), {L"a"}},
      {L"Exclusions", REG_MULTI_SZ, Bytes(L"a\0bc", 8), {L"a", L"bc"}},
      {L"Exclusions", REG_MULTI_SZ, Bytes(L"a\0bc", 8) + "x", {L"a", L"bc"}},
      {L"Exclusions", REG_MULTI_SZ, Bytes(L"\0a", 6), {}},
      {L"Exclusions", REG_MULTI_SZ, Bytes(std::wstring(50'000, L'x').c_str(), 100'002), {std::wstring(50'000, L'x')}},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(testing::PrintToString(std::wstring(each.name)) + " " + std::to_string(each.data.size()));
    const e2e::Profile profile;
    profile.Set(e2e::kSettings, each.name, {each.type, {each.data.begin(), each.data.end()}});
    SettingsStore settings;
    MonitorEngine engine{nullptr, SystemClock(), 1};
    settings.Update([&](AppSettings& current) { current = before; });
    engine.SetExclusions(kept);
    LoadSettings(settings, engine);
    EXPECT_EQ(settings.Get(), before);
    EXPECT_EQ(*engine.Exclusions(), each.exclusions);
  }
}

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
