#pragma once

// The system's dark theme for classic dialogs, by the theme library's undocumented entry points. Where one is missing everything here
// does nothing and the program looks as it always does.

#include <windows.h>

#include <span>

inline constexpr COLORREF kDarkText = 0xE0E0E0;
inline constexpr COLORREF kDarkBackground = 0x202020;

/// Once, on the start-up thread, before any window exists.
void InitDarkMode();

/// Every required entry point was found. Fixed after InitDarkMode.
[[nodiscard]] bool DarkModeAvailable();
/// Available, asked for by the system at start-up, and no high contrast. Fixed after InitDarkMode.
[[nodiscard]] bool DarkModeOn();

[[nodiscard]] bool IsHighContrast();
[[nodiscard]] bool IsWindows10OrGreater();
/// 0 before Windows 10.
[[nodiscard]] unsigned GetWindowsBuildNumber();

void RefreshTitleBarTheme(HWND window);
/// During WM_INITDIALOG. Per-dialog data live until the dialog is destroyed.
void ApplyDarkModeToDialog(HWND dialog, COLORREF text, COLORREF background, std::span<const int> controlIds);
/// Themes list and header, and gives the list the dark colours while dark mode is on.
void ApplyDarkModeToListView(HWND list);
/// Draws the window's menu bar dark while dark mode is on.
void InstallDarkMenuBar(HWND window);
