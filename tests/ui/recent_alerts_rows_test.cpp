#include "ui/alerts/recent_alerts_rows.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

// A list control in little does what it is told; it must then show the newest alerts, newest first. Between two looks come alerts
// before a clearing elsewhere, whether there is one, and alerts after it.
TEST(RecentAlertsRows, FollowsTheListThroughEveryKindOfChange) {
  constexpr int kCounts[] = {0, 1, 6, 19, 20, 21, 999, 1500};
  RecentAlerts alerts;
  RecentAlertsRows rows(alerts);
  rows.OnViewOpened();
  std::vector<AlertRecord> shown;
  const auto add = [&alerts](int count, std::uint32_t pid) {
    for (; count > 0; --count) alerts.Append({{}, pid++, L"", 0, L""});
  };
  for (int way = 0; way < 8 * 2 * 8; ++way) {
    const auto first = static_cast<std::uint32_t>(way * 10'000);
    add(kCounts[way % 8], first);
    if (way / 8 % 2 != 0) alerts.Clear();
    add(kCounts[way / 16], first + 5'000);
    RecentAlertsRows::Update update;
    if (rows.Take(update)) {
      EXPECT_LE(update.alerts.size(), RecentAlertsRows::kMaxRows) << way;
      if (update.deleteAll) shown.clear();
      shown.insert(shown.begin(), update.alerts.rbegin(), update.alerts.rend());
      shown.resize(std::min(shown.size(), RecentAlertsRows::kMaxRows));
    }
    std::vector<AlertRecord> newest = alerts.Copy();
    std::reverse(newest.begin(), newest.end());
    newest.resize(std::min(newest.size(), RecentAlertsRows::kMaxRows));
    EXPECT_EQ(shown, newest) << way;
    EXPECT_FALSE(rows.Take(update)) << "nothing has changed";
  }
}

}  // namespace
