#pragma once

// The program's alert sink: moves each alert from the engine's worker thread to the tray window's thread by a posted message. Any
// process may post that message's number with any address, so the sink remembers which copies it has posted and hands out only
// those.

#include <windows.h>

#include <memory>
#include <mutex>
#include <unordered_map>

#include "core/alert_sink.h"

class GUIAlertSink final : public IAlertSink {
 public:
  /// The window that gets UWM_ALERT from now on; null: alerts are dropped. Any thread.
  void SetTarget(HWND window);

  /// Posts a copy of the record and never waits. A copy that could not be posted is released at once and the alert is lost.
  void OnAlert(const AlertRecord& record) override;

  /// The copy behind a received UWM_ALERT's lParam, now the caller's. Null for anything that is not an outstanding copy of this
  /// sink; such an address is never looked at. Any thread.
  [[nodiscard]] std::unique_ptr<AlertRecord> TakeAlert(LPARAM address);

  /// Copies posted and not yet taken.
  [[nodiscard]] std::size_t OutstandingCount() const;

 private:
  mutable std::mutex mutex_;
  HWND target_ = nullptr;
  std::unordered_map<LPARAM, std::unique_ptr<AlertRecord>> outstanding_;
};
