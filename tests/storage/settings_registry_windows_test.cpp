#include "storage/settings_registry.h"

#include <gtest/gtest.h>

#include "storage/data_folder.h"
#include "tests/storage/registry_fixture.h"

namespace {

using namespace std::string_literals;

class SettingsRegistry : public testing::Test {
 protected:
  SettingsRegistry() { key_.DeleteTree(); }
  ~SettingsRegistry() override { key_.DeleteTree(); }

  void Load() { LoadSettings(settings_, engine_); }

  TestKey key_{kSettingsKey};
  SettingsStore settings_;
  MonitorEngine engine_{nullptr, SystemClock(), 1};
};

TEST_F(SettingsRegistry, FirstRunHasTheDefaultsAndTheLogInTheRoamingFolder) {
  Load();
  AppSettings expected;
  expected.logFilePath = RoamingFolder() + L"\\Vantora\\alerts.log";
  EXPECT_EQ(settings_.Get(), expected);
  EXPECT_EQ(engine_.IntervalMs(), 30'000U);
  EXPECT_FALSE(key_.Exists());
}

TEST_F(SettingsRegistry, WritesEveryValueAsItsReadersExpect) {
  settings_.Update([](AppSettings& settings) {
    settings = {0xFFFFFFFF, 3600, 168, false, L"C:\\l\u00E4.log", L"", {-5, 6, 700, 800}};
  });
  engine_.SetIntervalMs(1500);
  engine_.SetExclusions({L"a*", L"\u00E4"});
  SaveSettings(settings_, engine_);
  const std::int32_t placement[] = {-5, 6, 700, 800};
  EXPECT_EQ(key_.Read(L"PollIntervalSec"), TestKey::Number(1));
  EXPECT_EQ(key_.Read(L"AlertActions"), TestKey::Number(0xFFFFFFFF));
  EXPECT_EQ(key_.Read(L"NotificationThrottleSec"), TestKey::Number(3600));
  EXPECT_EQ(key_.Read(L"UpdateCheckIntervalHours"), TestKey::Number(168));
  EXPECT_EQ(key_.Read(L"IncludeBetas"), TestKey::Number(0));
  EXPECT_EQ(key_.Read(L"LogFilePath"), TestKey::Text(L"C:\\l\u00E4.log\0"s.substr(0, 10)));
  EXPECT_EQ(key_.Read(L"SoundFilePath"), TestKey::Text(L"\0"s));
  EXPECT_EQ(key_.Read(L"Exclusions"), TestKey::Text(L"a*\0\u00E4\0\0"s, REG_MULTI_SZ));
  EXPECT_EQ(key_.Read(L"MainDialogPlacement"), "3:" + TestKey::Bytes(placement, sizeof placement));
  EXPECT_EQ(key_.Read(L"PollIntervalMs"), "none");

  SettingsStore loaded;
  MonitorEngine engine(nullptr, SystemClock(), 1);
  LoadSettings(loaded, engine);
  EXPECT_EQ(loaded.Get(), settings_.Get());
  EXPECT_EQ(engine.IntervalMs(), 1000U);
  EXPECT_EQ(*engine.Exclusions(), *engine_.Exclusions());

  // No exclusions are one NUL, which reads as none; a placement without size is not written over the last one.
  engine_.SetExclusions({});
  settings_.Update([](AppSettings& settings) { settings.mainDialogPlacement = {}; });
  SaveSettings(settings_, engine_);
  EXPECT_EQ(key_.Read(L"Exclusions"), TestKey::Text(L"\0"s, REG_MULTI_SZ));
  EXPECT_EQ(key_.Read(L"MainDialogPlacement"), "3:" + TestKey::Bytes(placement, sizeof placement));
}

TEST_F(SettingsRegistry, PollIntervalFallsBackToTheLegacyValueOnce) {
  constexpr DWORD kNone = 0xFFFFFFFF;
  const struct {
    DWORD seconds;
    DWORD legacyMs;
    DWORD intervalMs;
    bool legacyStays;
  } cases[] = {{0, 5000, 5000, false},           {86401, kNone, 30'000, false}, {86400, 5000, 86'400'000, true},
               {kNone, 999, 30'000, true},       {kNone, 1500, 1500, false},    {kNone, 86'400'000, 86'400'000, false},
               {kNone, 86'400'001, 30'000, true}};
  for (const auto& each : cases) {
    key_.DeleteTree();
    key_.WriteNumber(L"Other", 1);
    if (each.seconds != kNone) key_.WriteNumber(L"PollIntervalSec", each.seconds);
    if (each.legacyMs != kNone) key_.WriteNumber(L"PollIntervalMs", each.legacyMs);
    engine_.SetIntervalMs(30'000);
    Load();
    EXPECT_EQ(engine_.IntervalMs(), each.intervalMs);
    EXPECT_EQ(key_.Read(L"PollIntervalMs") != "none", each.legacyStays);
  }
}

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

TEST_F(SettingsRegistry, TakesWhatFitsWhateverItsType) {
  key_.Write(L"AlertActions", REG_BINARY, "\5");
  key_.Write(L"IncludeBetas", REG_NONE, std::string(4, '\0'));
  key_.WriteText(L"LogFilePath", REG_SZ, L"\0"s);
  key_.WriteText(L"SoundFilePath", REG_EXPAND_SZ, std::wstring(259, L's'));
  Load();
  EXPECT_EQ(settings_.Get().alertActions, 5U);
  EXPECT_FALSE(settings_.Get().includeBetas);
  EXPECT_EQ(settings_.Get().logFilePath, DefaultLogFilePath());
  EXPECT_EQ(settings_.Get().soundFilePath, std::wstring(259, L's'));
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
