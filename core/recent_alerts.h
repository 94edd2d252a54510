#pragma once

// The in-memory list of the newest alerts (oldest first, at most 1000) with the flag and the running count that views poll. The
// lock is inside: nobody else can hold it while touching a control, a file or another lock.

#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <vector>

#include "core/records.h"

class RecentAlerts {
 public:
  static constexpr std::size_t kMaxAlerts = 1000;

  /// What a view lacks. `refill`: the rows it shows are no longer held, start over with `alerts`.
  struct Changes {
    bool refill = false;
    std::vector<AlertRecord> alerts;  ///< oldest first
  };
  /// What a view has shown so far. A view starts with a default one, which lacks everything.
  struct Cursor {
    std::uint64_t addedTotal = 0;
    std::uint64_t generation = 0;
  };

  void Append(AlertRecord record);
  /// Keeps the last 1000 of `records`, in their order.
  void Replace(std::vector<AlertRecord> records);
  void Clear();

  [[nodiscard]] std::vector<AlertRecord> Copy() const;
  [[nodiscard]] std::size_t Size() const;
  /// Holds the lock during the whole walk, as the CSV export is meant to.
  void ForEachLocked(const std::function<void(const AlertRecord&)>& visit) const;

  [[nodiscard]] bool AlertsChanged() const;
  void SetAlertsChanged();
  /// The poll of a view: false when nothing changed since the flag was last taken. Otherwise clears the flag, copies what lies
  /// between `cursor` and the newest alert, and advances `cursor`.
  [[nodiscard]] bool TakeChanges(Cursor& cursor, Changes& changes);

 private:
  mutable std::mutex AlertListLock_;
  std::deque<AlertRecord> alerts_;
  bool alertsChanged_ = false;
  std::uint64_t addedTotal_ = 0;
  std::uint64_t generation_ = 0;  ///< goes up whenever the list is emptied or replaced
};
