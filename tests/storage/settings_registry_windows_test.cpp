#include "storage/settings_registry.h"

#include <gtest/gtest.h>

#include "tests/storage/registry_fixture.h"

namespace {

class SettingsRegistry : public testing::Test {
 protected:
  SettingsRegistry() { key_.DeleteTree(); }
  ~SettingsRegistry() override { key_.DeleteTree(); }

  void Load() { LoadSettings(settings_, engine_); }

  TestKey key_{kSettingsKey};
  SettingsStore settings_;
  MonitorEngine engine_{nullptr, SystemClock(), 1};
};

TEST_F(SettingsRegistry, ValuesOfTheWrongKindLeaveTheirFieldAlone) {
  AppSettings before;
  before.logFilePath = L"log";
  before.soundFilePath = L"sound";
  before.mainDialogPlacement = {1, 2, 3, 4};
  const std::int32_t noWidth[] = {5, 0, 5, 9};
  const struct {
    const wchar_t* name;
    DWORD type;
    std::string data;
  } cases[] = {
      {L"AlertActions", REG_QWORD, std::string(8, 'x')},
      {L"AlertActions", REG_SZ, TestKey::Bytes(L"12345", 12)},
      {L"NotificationThrottleSec", REG_DWORD, TestKey::Bytes("\0\0\0", 4)},
      {L"NotificationThrottleSec", REG_DWORD, TestKey::Bytes("\x11\x0E\0", 4)},
      {L"UpdateCheckIntervalHours", REG_DWORD, TestKey::Bytes("\x30\0\0", 4)},
      {L"IncludeBetas", REG_BINARY, std::string(5, '\0')},
      {L"LogFilePath", REG_SZ, std::string(522, 'x')},
      {L"LogFilePath", REG_BINARY, std::string(520, 'x')},
      {L"SoundFilePath", REG_MULTI_SZ, std::string(100'000, 'x')},
      {L"MainDialogPlacement", REG_BINARY, std::string(12, '\1')},
      {L"MainDialogPlacement", REG_BINARY, std::string(17, '\1')},
      {L"MainDialogPlacement", REG_BINARY, TestKey::Bytes(noWidth, sizeof noWidth)},
      {L"Exclusions", REG_SZ, TestKey::Bytes(L"a\0b\0", 10)},
      {L"Exclusions", REG_MULTI_SZ, TestKey::Bytes(L"", 2)},
      {L"Exclusions", REG_MULTI_SZ, "x"},
  };
  for (const auto& each : cases) {
    key_.DeleteTree();
    key_.Write(each.name, each.type, each.data);
    settings_.Update([&](AppSettings& settings) { settings = before; });
    engine_.SetExclusions({L"kept"});
    Load();
    EXPECT_EQ(settings_.Get(), before) << each.name << " " << each.data.size();
    EXPECT_EQ(*engine_.Exclusions(), ExclusionList{L"kept"}) << each.data.size();
  }
}

TEST_F(SettingsRegistry, ExclusionsEndAtTheFirstEmptyOne) {
  const struct {
    std::string data;
    ExclusionList exclusions;
  } cases[] = {
      {TestKey::Bytes(L"a\0 b \0\0", 14), {L"a", L" b "}},
      {TestKey::Bytes(L"a\0\0b\0", 12), {L"a"}},
      {TestKey::Bytes(L"a\0bc", 8), {L"a", L"bc"}},
      {TestKey::Bytes(L"a\0bc", 8) + "x", {L"a", L"bc"}},
      {TestKey::Bytes(L"\0a", 6), {}},
      {TestKey::Bytes(std::wstring(50'000, L'x').c_str(), 100'002), {std::wstring(50'000, L'x')}},
  };
  for (const auto& each : cases) {
    key_.Write(L"Exclusions", REG_MULTI_SZ, each.data);
    engine_.SetExclusions({L"replaced"});
    Load();
    EXPECT_EQ(*engine_.Exclusions(), each.exclusions) << each.data.size();
  }
}

}  // namespace
