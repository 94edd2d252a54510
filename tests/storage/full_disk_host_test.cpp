#include <gtest/gtest.h>

#include "core/recent_alerts.h"
#include "storage/alert_log.h"
#include "storage/rule_store.h"

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

}  // namespace
