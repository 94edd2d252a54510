#include "ui/alerts/recent_alerts_rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

namespace {

// A list control in little does what it is told; it must then show the newest alerts, newest first.
TEST(RecentAlertsRows, FollowsTheListThroughEveryKindOfChange) {
  // Between two ticks: alerts before a clearing elsewhere, whether there is one, and alerts after it.
  constexpr std::tuple<int, bool, int> kSteps[] = {
      {25, false, 0},   {1, false, 0},    {0, true, 0},   {5, false, 0},   {0, true, 5},   {0, true, 6},
      {3, true, 1},     {0, true, 25},    {19, false, 0}, {20, false, 0},  {21, false, 0}, {999, false, 0},
      {1000, false, 0}, {1500, false, 0}, {1, false, 0},  {0, true, 1500}, {2, true, 20},  {1, false, 0}};
  RecentAlerts alerts;
  RecentAlertsRows rows(alerts);
  rows.OnViewOpened();
  std::vector<AlertRecord> shown;
  std::uint32_t nextPid = 1;
  const auto add = [&](int count) {
    for (; count > 0; --count) alerts.Append({{}, nextPid++, L"", 0, L""});
  };
  for (const auto& [before, clear, after] : kSteps) {
    SCOPED_TRACE(testing::Message() << before << (clear ? ", clear, " : ", ") << after);
    add(before);
    if (clear) alerts.Clear();
    add(after);
    RecentAlertsRows::Update update;
    ASSERT_TRUE(rows.Take(update));
    EXPECT_LE(update.alerts.size(), RecentAlertsRows::kMaxRows);
    if (update.deleteAll) shown.clear();
    for (const AlertRecord& alert : update.alerts) shown.insert(shown.begin(), alert);
    shown.resize(std::min(shown.size(), RecentAlertsRows::kMaxRows));

    std::vector<AlertRecord> newest = alerts.Copy();
    std::reverse(newest.begin(), newest.end());
    newest.resize(std::min(newest.size(), RecentAlertsRows::kMaxRows));
    EXPECT_EQ(shown, newest);
    EXPECT_FALSE(rows.Take(update)) << "nothing has changed";
  }
}

}  // namespace
