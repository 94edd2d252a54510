#pragma once

// The program's window messages and timers. A leaf: every folder that talks to a window may include it.

inline constexpr unsigned kWmUser = 0x0400;

// To the tray window.
inline constexpr unsigned UWM_TRAYICON = kWmUser + 1;
inline constexpr unsigned UWM_TERMINATE = kWmUser + 2;
inline constexpr unsigned UWM_ADD_ICON = kWmUser + 3;
inline constexpr unsigned UWM_ALERT = kWmUser + 4;
inline constexpr unsigned UWM_SHOW_POST_UPDATE_NOTIFICATION = kWmUser + 5;
inline constexpr unsigned UWM_SHOW_UPDATE_AVAILABLE_NOTIFICATION = kWmUser + 6;
inline constexpr unsigned UWM_CHECK_FOR_UPDATES = kWmUser + 7;
// Also posted by the tray window to the open main window.
inline constexpr unsigned UWM_UPDATE_AVAILABLE = kWmUser + 8;
// To the tray window: the update frequency has changed, arm IDT_UPDATE_CHECK anew from the settings.
inline constexpr unsigned UWM_UPDATE_INTERVAL_CHANGED = kWmUser + 9;

// From the in-place edit box to the main window; wParam 1 commits, 0 discards.
inline constexpr unsigned UWM_END_INPLACE_EDIT = kWmUser + 100;

// Timers of the tray window.
inline constexpr unsigned IDT_UPDATE_POLL = 33860;
inline constexpr unsigned IDT_UPDATE_CHECK = 33862;
inline constexpr unsigned IDT_ADD_ICON_RETRY = 33863;
// Timer of the main window.
inline constexpr unsigned IDT_RECENT_ALERTS = 36865;
