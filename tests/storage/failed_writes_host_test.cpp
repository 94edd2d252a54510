#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <random>

#include "core/recent_alerts.h"
#include "platform/text_file.h"
#include "storage/alert_log.h"
#include "storage/rule_store.h"
#include "storage/rules_csv.h"
#include "tests/storage/throwaway_folder.h"

namespace {

// Linux offers a file on which every write finds the disk full.
constexpr wchar_t kFullDisk[] = L"/dev/full";

TEST(FullDisk, IsReportedAndLosesNothingInMemory) {
  RuleStore store([] { return std::wstring(kFullDisk); });
  store.Append({MakeNewRule(1)});
  EXPECT_EQ(store.Snapshot()->size(), 1U);
  EXPECT_FALSE(store.Save(kFullDisk));
  EXPECT_FALSE(store.ExportJson(kFullDisk));
  EXPECT_TRUE(store.ImportJsonString(L"\"rules\" {\"processPattern\":\"a\"}"));
  EXPECT_EQ(store.Snapshot()->size(), 2U);

  RecentAlerts alerts;
  alerts.Append({});
  AppendAlertLog(kFullDisk, {});
  EXPECT_FALSE(ExportAlertCsv(kFullDisk, L"Time", alerts));
  EXPECT_EQ(alerts.Size(), 1U);
}

TEST(KilledSave, LeavesTheOldListOrTheNewOne) {
  const ThrowawayFolder folder;
  const std::wstring path = folder.Path("rules.csv");
  const RuleList few(3, MakeNewRule(1));
  const RuleList many(500, MakeNewRule(2));
  const std::wstring texts[] = {FormatRulesCsv(few), FormatRulesCsv(many)};
  ASSERT_EQ(WriteTextFile(path, texts[0]), WriteResult::kWritten);
  std::mt19937 random(1);
  std::uniform_int_distribution<unsigned> delayUs(0, 5000);
  for (int round = 0; round < 50; ++round) {
    const pid_t saver = ::fork();
    ASSERT_GE(saver, 0);
    for (std::size_t save = 0; saver == 0; ++save) (void)WriteTextFile(path, texts[save % 2]);
    ::usleep(delayUs(random));
    ::kill(saver, SIGKILL);
    ::waitpid(saver, nullptr, 0);
    const std::optional<RuleList> rules = ParseRulesCsv(ReadTextFile(path).value_or(L""));
    ASSERT_TRUE(rules == few || rules == many) << round;
  }
}

}  // namespace
