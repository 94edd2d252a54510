#include "core/recent_alerts.h"

#include <gtest/gtest.h>

namespace {

std::vector<AlertRecord> Numbered(std::uint32_t first, std::uint32_t count) {
  std::vector<AlertRecord> records(count);
  for (std::uint32_t index = 0; index < count; ++index) records[index].pid = first + index;
  return records;
}

void AppendNumbered(RecentAlerts& alerts, std::uint32_t first, std::uint32_t count) {
  for (AlertRecord& record : Numbered(first, count)) alerts.Append(std::move(record));
}

TEST(RecentAlerts, KeepsTheNewestThousand) {
  RecentAlerts alerts;
  AppendNumbered(alerts, 1, 1001);
  EXPECT_EQ(alerts.Copy(), Numbered(2, 1000));
  alerts.Replace(Numbered(5000, 1003));
  EXPECT_EQ(alerts.Copy(), Numbered(5003, 1000));
  std::vector<AlertRecord> visited;
  alerts.ForEachLocked([&](const AlertRecord& record) { visited.push_back(record); });
  EXPECT_EQ(visited, Numbered(5003, 1000));
  alerts.Clear();
  EXPECT_EQ(alerts.Size(), 0u);
}

// A view that applies what it is told, whatever happened between two polls, shows the list.
TEST(RecentAlerts, ViewsFollowEveryHistory) {
  const struct {
    const char* what;
    void (*happen)(RecentAlerts&);
    bool refill;
    std::size_t copied;
  } kCases[] = {
      {"first poll", [](RecentAlerts& alerts) { AppendNumbered(alerts, 1, 3); }, false, 3},
      {"one more", [](RecentAlerts& alerts) { AppendNumbered(alerts, 4, 1); }, false, 1},
      {"more than a view shows", [](RecentAlerts& alerts) { AppendNumbered(alerts, 5, 21); }, false, 21},
      {"more than are held", [](RecentAlerts& alerts) { AppendNumbered(alerts, 100, 1001); }, true, 1000},
      {"as many as are held", [](RecentAlerts& alerts) { AppendNumbered(alerts, 2000, 1000); }, false, 1000},
      {"cleared", [](RecentAlerts& alerts) { alerts.Clear(); }, true, 0},
      {"only asked to look again", [](RecentAlerts& alerts) { alerts.SetAlertsChanged(); }, false, 0},
      {"after the clearing", [](RecentAlerts& alerts) { AppendNumbered(alerts, 3000, 5); }, false, 5},
      {"cleared and as many again",
       [](RecentAlerts& alerts) {
         alerts.Clear();
         AppendNumbered(alerts, 4000, 5);
       },
       true, 5},
      {"replaced", [](RecentAlerts& alerts) { alerts.Replace(Numbered(6000, 30)); }, true, 30},
      {"replaced after some",
       [](RecentAlerts& alerts) {
         AppendNumbered(alerts, 7000, 2);
         alerts.Replace(Numbered(8000, 2));
         AppendNumbered(alerts, 8002, 2);
       },
       true, 4},
  };
  RecentAlerts alerts;
  RecentAlerts::Cursor cursor;
  RecentAlerts::Changes changes;
  std::vector<AlertRecord> view;
  EXPECT_FALSE(alerts.TakeChanges(cursor, changes));
  for (const auto& test : kCases) {
    test.happen(alerts);
    EXPECT_TRUE(alerts.AlertsChanged()) << test.what;
    ASSERT_TRUE(alerts.TakeChanges(cursor, changes)) << test.what;
    EXPECT_EQ(changes.refill, test.refill) << test.what;
    EXPECT_EQ(changes.alerts.size(), test.copied) << test.what;
    if (changes.refill) view.clear();
    view.insert(view.end(), changes.alerts.begin(), changes.alerts.end());
    if (view.size() > RecentAlerts::kMaxAlerts) view.erase(view.begin(), view.end() - RecentAlerts::kMaxAlerts);
    EXPECT_EQ(view, alerts.Copy()) << test.what;
    EXPECT_FALSE(alerts.TakeChanges(cursor, changes)) << test.what;
  }

  // A second view starts with everything, even though the first has taken the flag.
  RecentAlerts::Cursor late;
  alerts.SetAlertsChanged();
  ASSERT_TRUE(alerts.TakeChanges(late, changes));
  EXPECT_EQ(changes.alerts, alerts.Copy());
}

}  // namespace
