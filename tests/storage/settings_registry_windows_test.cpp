#include "storage/settings_registry.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>

#include "storage/data_folder.h"

namespace {

constexpr wchar_t kOldKey[] = L"Software\\Halvern";

std::string Bytes(const void* data, std::size_t sizeBytes) { return {static_cast<const char*>(data), sizeBytes}; }

/// In the prefix of the test, which is thrown away.
class SettingsRegistry : public testing::Test {
 protected:
  SettingsRegistry() { Clean(); }
  ~SettingsRegistry() override { Clean(); }

  void Clean() {
    for (const wchar_t* key : {kSettingsKey, kOldKey}) ::RegDeleteTreeW(HKEY_CURRENT_USER, key);
    for (const wchar_t* name : {L"Halvern", L"Vantora"}) ::RegDeleteKeyValueW(HKEY_CURRENT_USER, kRunKey, name);
    for (const auto& folder : {oldFolder_, newFolder_}) std::filesystem::remove_all(folder);
  }
  static void Write(const wchar_t* key, const wchar_t* name, DWORD type, const std::string& data) {
    ::RegSetKeyValueW(HKEY_CURRENT_USER, key, name, type, data.data(), static_cast<DWORD>(data.size()));
  }
  /// The first characters of the value; "none" when there is no such value.
  static std::wstring Read(const wchar_t* key, const wchar_t* name) {
    wchar_t text[16]{};
    DWORD sizeBytes = sizeof text;
    return ::RegGetValueW(HKEY_CURRENT_USER, key, name, RRF_RT_ANY, nullptr, text, &sizeBytes) == ERROR_SUCCESS ? text : L"none";
  }

  const std::filesystem::path oldFolder_ = RoamingFolder() + L"\\Halvern";
  const std::filesystem::path newFolder_ = RoamingFolder() + L"\\Vantora";
};

TEST_F(SettingsRegistry, ValuesOfTheWrongKindLeaveTheirFieldAloneAndExclusionsEndAtTheFirstEmptyOne) {
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
    Clean();
    Write(kSettingsKey, each.name, each.type, each.data);
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
TEST_F(SettingsRegistry, TheEarlierProductsNeverReplaceWhatThisProgramHas) {
  Write(kOldKey, L"PollIntervalSec", REG_DWORD, std::string(4, '\7'));
  Write(kSettingsKey, L"AlertActions", REG_DWORD, std::string(4, '\1'));
  Write(kRunKey, L"Halvern", REG_SZ, Bytes(L"old", 8));
  Write(kRunKey, L"Vantora", REG_SZ, Bytes(L"new", 8));
  for (const auto& folder : {oldFolder_, newFolder_}) std::filesystem::create_directories(folder);
  MigrateLegacySettings();
  EXPECT_EQ(Read(kSettingsKey, L"PollIntervalSec"), L"none");
  EXPECT_EQ(Read(kRunKey, L"Halvern"), L"none");
  EXPECT_EQ(Read(kRunKey, L"Vantora"), L"new");
  EXPECT_TRUE(std::filesystem::exists(oldFolder_));
}

}  // namespace
