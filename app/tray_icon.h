#pragma once

// The program's one icon in the notification area and the balloons on it. Every call to the shell about it is made here, so that
// all of them name the same icon.

#include <windows.h>

#include <shellapi.h>

#include <string>

#include "platform/handles.h"

/// Tray window's thread only. The shell shows the icon until Remove or the process's end.
class TrayIcon {
 public:
  explicit TrayIcon(HINSTANCE instance) : instance_(instance) {}

  /// The window that owns the icon and gets its notifications; before anything else.
  void Attach(HWND window) { window_ = window; }

  /// Shows the icon, or refreshes the one shown, with its image loaded afresh at the small-icon size of the moment. False when
  /// the shell has refused, as it does while there is no taskbar.
  [[nodiscard]] bool AddOrRefresh();
  /// Shows a balloon; title and text are cut to what one holds (63 and 255 characters). A refusal is ignored.
  void ShowBalloon(const std::wstring& title, const std::wstring& text);
  void Remove();

 private:
  [[nodiscard]] NOTIFYICONDATAW Data(UINT flags) const;

  HINSTANCE instance_;
  HWND window_ = nullptr;
  UniqueIcon image_;
};
