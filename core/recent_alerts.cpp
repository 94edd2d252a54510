#include "core/recent_alerts.h"

#include <algorithm>
#include <iterator>
#include <utility>

void RecentAlerts::Append(AlertRecord record) {
  std::lock_guard lock(AlertListLock_);
  if (alerts_.size() >= kMaxAlerts) alerts_.pop_front();
  alerts_.push_back(std::move(record));
  ++addedTotal_;
  alertsChanged_ = true;
}

void RecentAlerts::Replace(std::vector<AlertRecord> records) {
  const std::size_t surplus = records.size() > kMaxAlerts ? records.size() - kMaxAlerts : 0;
  const auto first = std::make_move_iterator(records.begin() + static_cast<std::ptrdiff_t>(surplus));
  std::deque<AlertRecord> alerts(first, std::make_move_iterator(records.end()));

  std::lock_guard lock(AlertListLock_);
  addedTotal_ += alerts.size();
  alerts_.swap(alerts);
  ++generation_;
  alertsChanged_ = true;
}

void RecentAlerts::Clear() { Replace({}); }

std::vector<AlertRecord> RecentAlerts::Copy() const {
  std::lock_guard lock(AlertListLock_);
  return {alerts_.begin(), alerts_.end()};
}

std::size_t RecentAlerts::Size() const {
  std::lock_guard lock(AlertListLock_);
  return alerts_.size();
}

void RecentAlerts::ForEachLocked(const std::function<void(const AlertRecord&)>& visit) const {
  std::lock_guard lock(AlertListLock_);
  for (const AlertRecord& record : alerts_) visit(record);
}

bool RecentAlerts::AlertsChanged() const {
  std::lock_guard lock(AlertListLock_);
  return alertsChanged_;
}

void RecentAlerts::SetAlertsChanged() {
  std::lock_guard lock(AlertListLock_);
  alertsChanged_ = true;
}

bool RecentAlerts::TakeChanges(Cursor& cursor, Changes& changes) {
  std::lock_guard lock(AlertListLock_);
  if (!alertsChanged_) return false;
  alertsChanged_ = false;

  const std::uint64_t added = addedTotal_ - cursor.addedTotal;
  changes.refill = cursor.generation != generation_ || added > alerts_.size();
  const std::size_t lacking = changes.refill ? alerts_.size() : static_cast<std::size_t>(added);
  changes.alerts.assign(alerts_.end() - static_cast<std::ptrdiff_t>(lacking), alerts_.end());
  cursor = {addedTotal_, generation_};
  return true;
}
