#include "core/recent_alerts.h"

#include <gtest/gtest.h>

namespace {

std::vector<AlertRecord> Numbered(std::uint32_t first, std::uint32_t count) {
  std::vector<AlertRecord> records(count);
  for (std::uint32_t index = 0; index < count; ++index) records[index].pid = first + index;
  return records;
}

// A view that applies what it is told, whatever happened between two polls, shows the list: the newest thousand.
TEST(RecentAlerts, ViewsFollowEveryHistory) {
  // Between two polls: alerts added, then the list replaced or cleared, then alerts added.
  const struct {
    std::uint32_t before;
    int replacedBy;  ///< -1: left as it is
    std::uint32_t after;
    bool refill;
    std::size_t copied;
  } kCases[] = {
      {3, -1, 0, false, 3}, {21, -1, 0, false, 21}, {1001, -1, 0, true, 1000}, {1000, -1, 0, false, 1000}, {0, 0, 0, true, 0},
      {5, -1, 0, false, 5}, {0, 0, 5, true, 5},     {0, 1003, 0, true, 1000},  {2, 2, 2, true, 4},
  };
  RecentAlerts alerts;
  RecentAlerts::Cursor cursor;
  RecentAlerts::Changes changes;
  std::vector<AlertRecord> view;
  std::uint32_t next = 1;
  const auto add = [&](std::uint32_t count) {
    for (AlertRecord& record : Numbered(next, count)) alerts.Append(std::move(record));
    next += count;
  };
  EXPECT_FALSE(alerts.TakeChanges(cursor, changes));
  for (const auto& test : kCases) {
    SCOPED_TRACE(next);
    add(test.before);
    if (test.replacedBy >= 0) alerts.Replace(Numbered(next, static_cast<std::uint32_t>(test.replacedBy)));
    if (test.replacedBy >= 0) next += static_cast<std::uint32_t>(test.replacedBy);
    add(test.after);
    EXPECT_TRUE(alerts.AlertsChanged());
    ASSERT_TRUE(alerts.TakeChanges(cursor, changes));
    EXPECT_EQ(changes.refill, test.refill);
    EXPECT_EQ(changes.alerts.size(), test.copied);
    if (changes.refill) view.clear();
    view.insert(view.end(), changes.alerts.begin(), changes.alerts.end());
    if (view.size() > RecentAlerts::kMaxAlerts) view.erase(view.begin(), view.end() - RecentAlerts::kMaxAlerts);
    const auto size = static_cast<std::uint32_t>(view.size());
    EXPECT_EQ(view, Numbered(next - size, size));
    EXPECT_EQ(view, alerts.Copy());
    EXPECT_FALSE(alerts.TakeChanges(cursor, changes));
  }
  // A second view starts with everything, even though the first has taken the flag.
  RecentAlerts::Cursor late;
  alerts.SetAlertsChanged();
  ASSERT_TRUE(alerts.TakeChanges(late, changes));
  EXPECT_EQ(changes.alerts, alerts.Copy());
}

}  // namespace
