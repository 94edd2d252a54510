#include "ui/recent_alerts_rows.h"

#include <gtest/gtest.h>

#include <random>

namespace {

AlertRecord Alert(std::uint32_t number) {
  AlertRecord alert;
  alert.pid = number;
  return alert;
}

/// A list control in little: does to its rows what an update says, and knows what they should be afterwards.
class View {
 public:
  explicit View(RecentAlerts& alerts) : alerts_(alerts), rows_(alerts) { rows_.OnViewOpened(); }

  /// The timer. True when there was anything to do.
  bool Tick() {
    RecentAlertsRows::Update update;
    if (!rows_.Take(update)) return false;
    EXPECT_LE(update.alerts.size(), RecentAlertsRows::kMaxRows);
    if (update.deleteAll) shown_.clear();
    for (const AlertRecord& alert : update.alerts) shown_.insert(shown_.begin(), alert.pid);
    if (shown_.size() > RecentAlertsRows::kMaxRows) shown_.resize(RecentAlertsRows::kMaxRows);
    return true;
  }

  /// Clear Log of this very view.
  void Clear() {
    alerts_.Clear();
    shown_.clear();
  }

  void ExpectNewestFirst() const {
    const std::vector<AlertRecord> all = alerts_.Copy();
    std::vector<std::uint32_t> newest;
    for (auto alert = all.rbegin(); alert != all.rend() && newest.size() < RecentAlertsRows::kMaxRows; ++alert) {
      newest.push_back(alert->pid);
    }
    EXPECT_EQ(shown_, newest);
  }

 private:
  RecentAlerts& alerts_;
  RecentAlertsRows rows_;
  std::vector<std::uint32_t> shown_;
};

class RecentAlertsRowsTest : public ::testing::Test {
 protected:
  void Add(int count) {
    for (int i = 0; i < count; ++i) alerts_.Append(Alert(next_++));
  }

  RecentAlerts alerts_;
  std::uint32_t next_ = 1;
};

TEST_F(RecentAlertsRowsTest, FollowsTheListThroughEveryKindOfChange) {
  // Between two ticks: alerts before a clearing elsewhere, whether there is one, and alerts after it.
  const struct {
    int before;
    bool clear;
    int after;
  } kSteps[] = {{25, false, 0}, {1, false, 0},  {0, true, 0},    {5, false, 0},    {0, true, 5},     {0, true, 6},
                {3, true, 1},   {0, true, 25},  {990, false, 0}, {1, false, 0},    {1, false, 0},    {19, false, 0},
                {20, false, 0}, {21, false, 0}, {999, false, 0}, {1000, false, 0}, {1500, false, 0}, {0, true, 1500},
                {2, true, 20},  {0, true, 0},   {1, false, 0}};
  View view(alerts_);
  for (const auto& step : kSteps) {
    Add(step.before);
    if (step.clear) alerts_.Clear();
    Add(step.after);
    EXPECT_TRUE(view.Tick());
    view.ExpectNewestFirst();
    EXPECT_FALSE(view.Tick()) << "nothing has changed";
  }
}

TEST_F(RecentAlertsRowsTest, AnyMixOfChangesEndsInTheNewestRows) {
  std::mt19937 random(4711);
  View view(alerts_);
  for (int i = 0; i < 2'000; ++i) {
    switch (random() % 8) {
      case 0:
        alerts_.Clear();
        break;
      case 1:
        view.Clear();
        break;
      case 2:
        Add(static_cast<int>(random() % 60));
        break;
      case 3:
        view.Tick();
        view.ExpectNewestFirst();
        break;
      default:
        Add(static_cast<int>(random() % 4));
    }
  }
}

}  // namespace
