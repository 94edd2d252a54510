#pragma once

// What the menu bar's popups show of the settings: check marks, greyed items and the radio mark, as rows over a record of facts,
// so that the rows are seen apart from where the facts come from.

#include <windows.h>

#include "storage/settings.h"

struct SettingsMenuFacts {
  AppSettings settings;
  bool paused = false;
  bool startsWithWindows = false;
  bool elevated = false;
};

/// Sets every item that the popup has; the others are simply not found.
void ShowMenuState(HMENU popup, const SettingsMenuFacts& facts);
/// The check mark of the logon task, whose fact comes from elsewhere and may come late.
void ShowAdminTaskMark(HMENU popup, bool installed);

/// The window in which this thread shows the popup; null when it is not open.
[[nodiscard]] HWND FindPopupWindow(HMENU popup);
