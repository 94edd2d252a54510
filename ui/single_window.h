#pragma once

// A window of which one is open at a time, whoever asks for it.

#include <windows.h>

#include <atomic>

/// Any thread.
class SingleWindow {
 public:
  /// The open window; null when none is.
  [[nodiscard]] HWND Get() const { return window_; }

  /// True: the caller is to open the window and owes Opened or GiveUp. False: it is open, and now in front, or about to be.
  [[nodiscard]] bool Claim() {
    // A double click on the tray icon asks twice within milliseconds; the second request finds the window still opening.
    if (BringForward() || opening_.exchange(true)) return false;
    if (!BringForward()) return true;
    opening_ = false;  // it has opened between the two questions
    return false;
  }
  void GiveUp() { opening_ = false; }
  void Opened(HWND window) {
    window_ = window;
    opening_ = false;
  }
  /// However the window ended: nobody finds it any more. Without effect for another window than the open one.
  void Closed(HWND window) { window_.compare_exchange_strong(window, nullptr); }

 private:
  [[nodiscard]] bool BringForward() const {
    HWND open = window_;
    if (open == nullptr) return false;
    if (::IsIconic(open)) ::ShowWindowAsync(open, SW_RESTORE);
    ::SetForegroundWindow(open);
    return true;
  }

  std::atomic<bool> opening_{false};
  std::atomic<HWND> window_{nullptr};
};
