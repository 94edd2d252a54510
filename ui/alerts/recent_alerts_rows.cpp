#include "ui/alerts/recent_alerts_rows.h"

#include <iterator>
#include <utility>

void RecentAlertsRows::OnViewOpened() {
  cursor_ = {};
  recentAlerts_.SetAlertsChanged();
}

bool RecentAlertsRows::Take(Update& update) {
  RecentAlerts::Changes changes;
  if (!recentAlerts_.TakeChanges(cursor_, changes)) return false;
  if (changes.alerts.empty() && !changes.refill) return false;
  update.deleteAll = changes.refill;
  if (changes.alerts.size() >= kMaxRows) {
    // Nothing that is shown now survives: inserting what would be cut off again is saved.
    update.deleteAll = true;
    const auto kept = changes.alerts.end() - static_cast<std::ptrdiff_t>(kMaxRows);
    changes.alerts.erase(changes.alerts.begin(), kept);
  }
  update.alerts = std::move(changes.alerts);
  return true;
}
