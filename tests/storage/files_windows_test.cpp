#include <windows.h>

#include <gtest/gtest.h>

#include <clocale>

#include "platform/file.h"
#include "platform/handles.h"
#include "storage/alert_log.h"
#include "storage/rule_store.h"
#include "tests/storage/throwaway_folder.h"

namespace {

// The files' bytes are the same under every regional setting of the runtime.
TEST(FilesOnWindows, AreByteForByteTheFormats) {
  std::setlocale(LC_ALL, "German_Germany");
  const ThrowawayFolder folder;
  const std::wstring path = folder.Path("rules.csv");
  RuleStore store([&] { return path; });
  ThresholdRule rule = MakeNewRule(7);
  rule.processPattern = L"\u00E4\U0001F600*.exe";
  rule.maxWorkingSet = 512 * kBytesPerMb;
  rule.maxCpuPercent = 12.5;
  ThresholdRule half = MakeNewRule(8);
  half.processPattern = L"\xD83D,";
  store.Append({rule, half});
  const std::string expected =
      "\xEF\xBB\xBFRuleId,ProcessPattern,Enabled,MaxHandles,MaxWorkingSetMB,MaxPrivateBytesMB,MaxCPU,MaxThreads,MaxGDI,MaxUSER,"
      "AlertActions,CooldownSec\r\n"
      "7,\xC3\xA4\xF0\x9F\x98\x80*.exe,1,0,512.0,0.0,12.5,0,0,0,3,60\r\n"
      "8,\",\"\\ud83d,\",1,0,0.0,0.0,0.0,0,0,0,3,60\r\n";
  EXPECT_EQ(ThrowawayFolder::Read(path), expected);
  EXPECT_TRUE(store.Load(path));
  EXPECT_EQ(*store.Snapshot(), (RuleList{rule, half}));

  AlertRecord alert;
  alert.time = {.year = 2025, .month = 1, .day = 1, .second = 5};
  alert.pid = 4294967295U;
  alert.processName = L"\u00E4.exe";
  alert.violation = L"CPU: 12.5% > 10.0%";
  const std::wstring log = folder.Path("alerts.log");
  AppendAlertLog(log, alert);
  AppendAlertLog(log, alert);
  const std::string line = "2025-01-01 00:00:05\t4294967295\t\xC3\xA4.exe\tCPU: 12.5% > 10.0%\r\n";
  EXPECT_EQ(ThrowawayFolder::Read(log), "\xEF\xBB\xBF" + line + line);
  RecentAlerts alerts;
  LoadAlertLog(log, alerts);
  EXPECT_EQ(alerts.Copy(), (std::vector<AlertRecord>{alert, alert}));
  std::setlocale(LC_ALL, "C");
}

TEST(FilesOnWindows, ThatOthersHoldOrProtectKeepTheirBytes) {
  const ThrowawayFolder folder;
  const std::wstring path = folder.Path("rules.csv");
  ThrowawayFolder::Write(path, "old");
  RuleStore store([&] { return path; });
  const auto expectRefused = [&] {
    EXPECT_EQ(WriteWholeFile(path, "x"), WriteResult::kCannotOpen);
    EXPECT_EQ(AppendToFile(path, "x", ""), WriteResult::kCannotOpen);
    store.Append({MakeNewRule(1)});
    EXPECT_EQ(ThrowawayFolder::Read(path), "old");
  };
  {
    const UniqueHandle reader =
        OwnFileHandle(::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_NE(reader, nullptr);
    expectRefused();
  }
  ::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY);
  // Wine lets its superuser write to a read-only file.
  const auto openForWriting = [&] {
    return OwnFileHandle(::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
  };
  if (openForWriting() == nullptr) expectRefused();
  ::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
  EXPECT_TRUE(store.Save(path));
  EXPECT_TRUE(store.Load(path));
  EXPECT_FALSE(store.Snapshot()->empty());
  const UniqueHandle writer = OwnFileHandle(
      ::CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr));
  EXPECT_TRUE(ReadWholeFile(path).has_value()) << "a file that another program still writes can be read";
}

}  // namespace
