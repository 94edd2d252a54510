#pragma once

// Which alerts the short list of the newest ones shows, and what it lacks after a change. The list control only carries out what
// is decided here.

#include <cstddef>
#include <vector>

#include "core/recent_alerts.h"

/// One view's bookkeeping; used on the view's thread.
class RecentAlertsRows {
 public:
  static constexpr std::size_t kMaxRows = 20;

  /// What brings the view up to date: delete every row when `deleteAll`, put each alert on top of the others in turn, then cut
  /// the view to kMaxRows from below. The view is then the newest alerts, newest first, each once.
  struct Update {
    bool deleteAll = false;
    std::vector<AlertRecord> alerts;  ///< oldest first, at most kMaxRows
  };

  explicit RecentAlertsRows(RecentAlerts& recentAlerts) : recentAlerts_(recentAlerts) {}

  /// A view without rows has opened: the next Take brings all that there is, whether anything has changed lately or not.
  void OnViewOpened();

  /// False when the view is up to date already. Costs one lock and a test when nothing has changed.
  [[nodiscard]] bool Take(Update& update);

 private:
  RecentAlerts& recentAlerts_;
  RecentAlerts::Cursor cursor_;
};
