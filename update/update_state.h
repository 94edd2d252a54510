#pragma once

// What is known about newer versions: the last check's answer, whether it offers an update, and whether an installation is under
// way. Shared by the update threads, the tray window and the main window.

#include <atomic>
#include <mutex>
#include <string>

#include "platform/event.h"
#include "update/version.h"

class UpdateState {
 public:
  /// "0.0.0.0" until a check has answered. Any thread.
  [[nodiscard]] std::wstring LatestVersion() const {
    std::lock_guard lock(mutex_);
    return latestVersion_;
  }
  void SetLatestVersion(std::wstring version) {
    std::lock_guard lock(mutex_);
    latestVersion_ = std::move(version);
  }

  /// Set while the last check found a newer version. Created by start-up; empty before.
  Event UpdateAvailableEvent;
  /// Whether there is something to install. Any thread.
  [[nodiscard]] bool IsUpdateKnown() {
    return UpdateAvailableEvent.Wait(0) == WaitResult::kSignaled && IsNewerVersion(LatestVersion());
  }

  /// One installation at a time: true when the caller may go on and owes EndInstallation.
  [[nodiscard]] bool BeginInstallation() { return !installing_.exchange(true); }
  void EndInstallation() { installing_ = false; }

 private:
  mutable std::mutex mutex_;
  std::wstring latestVersion_ = L"0.0.0.0";
  std::atomic<bool> installing_{false};
};
