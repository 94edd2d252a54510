#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include "platform/text_file.h"
#include "storage/alert_log.h"
#include "storage/rule_store.h"
#include "storage/rules_csv.h"
#include "tests/support/diagnostic_lines.h"
#include "tests/support/throwaway_folder.h"

namespace {

// Linux offers a file on which every write finds the disk full.
constexpr wchar_t kFullDisk[] = L"/dev/full";

TEST(FullDisk, IsReportedAndLosesNothingInMemory) {
  const DiagnosticLines lines;
  RuleStore store([] { return std::wstring(kFullDisk); });
  store.Append({MakeNewRule(1)});
  EXPECT_FALSE(store.Save(kFullDisk) || store.ExportJson(kFullDisk));
  EXPECT_TRUE(store.ImportJsonString(L"\"rules\" {\"processPattern\":\"a\"}"));
  EXPECT_EQ(store.Snapshot()->size(), 2U);
  EXPECT_FALSE(ExportAlertCsv(kFullDisk, L"Time", RecentAlerts()));
}

TEST(FullDisk, LeavesTheOldListWhole) {
  const ThrowawayFolder folder;
  const std::wstring path = folder.Path("rules.csv");
  RuleStore store([&] { return path; });
  store.Append(RuleList(60, MakeNewRule(1)));
  const std::string before = ThrowawayFolder::Read(path);
  const auto old = ::signal(SIGXFSZ, SIG_IGN);
  rlimit unlimited = {};
  ::getrlimit(RLIMIT_FSIZE, &unlimited);
  const rlimit full = {before.size(), unlimited.rlim_max};
  ::setrlimit(RLIMIT_FSIZE, &full);
  EXPECT_TRUE(store.Edit(1, [](ThresholdRule& rule) { rule.processPattern = L"longer.exe"; }));
  ::setrlimit(RLIMIT_FSIZE, &unlimited);
  ::signal(SIGXFSZ, old);
  EXPECT_EQ(ThrowawayFolder::Read(path), before);
  EXPECT_TRUE(store.SaveAndClose(path)) << "room again: the change that could not be saved is";
  EXPECT_GT(ThrowawayFolder::Read(path).size(), before.size());
}

}  // namespace
