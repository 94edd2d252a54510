#pragma once

// What happens to an alert on the tray window's thread: it enters the recent list, and its rule's actions are carried out. The
// throttle and the texts of balloons are decided here, without a window; the outputs do what only the system can.

#include <cstdint>
#include <string>

#include "core/recent_alerts.h"
#include "core/records.h"
#include "platform/clock.h"

/// The settings that delivery reads, copied out for each alert.
struct AlertDeliverySettings {
  std::uint32_t alertActions = ACTION_NOTIFY | ACTION_LOG;  ///< for an alert whose rule is gone
  std::uint32_t notificationThrottleSec = 30;
  std::wstring logFilePath;    ///< empty: no log
  std::wstring soundFilePath;  ///< empty: no sound
};

class AlertOutputs {
 public:
  virtual ~AlertOutputs() = default;
  [[nodiscard]] virtual AlertDeliverySettings Settings() = 0;
  virtual void ShowBalloon(const std::wstring& title, const std::wstring& text) = 0;
  virtual void AppendToLog(const std::wstring& path, const AlertRecord& record) = 0;
  virtual void PlaySoundFile(const std::wstring& path) = 0;
};

/// Tray window's thread only.
class AlertDelivery {
 public:
  AlertDelivery(RecentAlerts& recentAlerts, const RuleSource& rules, Clock& clock, AlertOutputs& outputs);
  void DeliverAlert(const AlertRecord& record);

  /// Characters that wait for the next balloon, for tests of their bound.
  [[nodiscard]] std::size_t PendingChars() const { return pendingLines_.size(); }

 private:
  void Notify(const AlertRecord& record, std::uint32_t throttleSec);

  RecentAlerts& recentAlerts_;
  const RuleSource& rules_;
  Clock& clock_;
  AlertOutputs& outputs_;
  // However many alerts wait, only their number and as much text as a balloon can show is kept.
  std::uint64_t pendingCount_ = 0;
  std::wstring pendingLines_;
  std::uint32_t lastBalloonTick_ = 0;
};
