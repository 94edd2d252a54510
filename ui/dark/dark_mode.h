#pragma once

// The system's dark theme for classic dialogs, by the theme library's undocumented entry points. Where one is missing everything
// here does nothing and the program looks as it always does.

#include <windows.h>

inline constexpr COLORREF kDarkText = 0xE0E0E0;
inline constexpr COLORREF kDarkBackground = 0x202020;
inline constexpr COLORREF kDarkLink = RGB(110, 180, 255);

/// Once, on the start-up thread, before any window exists.
void InitDarkMode();

/// Every required entry point was found. Fixed after InitDarkMode.
[[nodiscard]] bool DarkModeAvailable();
/// Available, asked for by the system at start-up, and no high contrast. Fixed after InitDarkMode.
[[nodiscard]] bool DarkModeOn();
/// Whether the system asks for dark now, which may differ from what was decided at start-up. False where dark mode is
/// unavailable.
[[nodiscard]] bool SystemAsksForDarkNow();

[[nodiscard]] bool IsHighContrast();
[[nodiscard]] bool IsWindows10OrGreater();
/// 0 before Windows 10.
[[nodiscard]] unsigned GetWindowsBuildNumber();

/// Makes the title bar follow what the system asks for now.
void RefreshTitleBarTheme(HWND window);

/// Allows dark mode for one window that is neither a dialog nor listed with one, or forbids it while dark mode is off.
void AllowDarkMode(HWND window);
