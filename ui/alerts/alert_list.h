#pragma once

// What both list views of alerts have in common: filling a row, and filling many with one repaint.

#include <windows.h>

#include "core/records.h"

/// Holds the window's drawing back while it lives; then the whole window is drawn once, erased first.
class RedrawPause {
 public:
  explicit RedrawPause(HWND window) : window_(window) { ::SendMessageW(window_, WM_SETREDRAW, FALSE, 0); }
  ~RedrawPause() {
    ::SendMessageW(window_, WM_SETREDRAW, TRUE, 0);
    ::InvalidateRect(window_, nullptr, TRUE);
  }
  RedrawPause(const RedrawPause&) = delete;
  RedrawPause& operator=(const RedrawPause&) = delete;

 private:
  HWND window_;
};

/// Inserts a row with the alert's four cells. The list's thread.
void InsertAlertRow(HWND list, int row, const AlertRecord& alert);
