#pragma once

// The system's dark theme for classic dialogs, by the theme library's undocumented entry points. Where one is missing everything
// here does nothing and the program looks as it always does.

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

/// Whether a dialog's menu bar is drawn dark as well. It is not part of the client area: its painting goes in between the title
/// bar and the dialog's own colours.
enum class DarkMenuBar { kNone, kDraw };

/// During WM_INITDIALOG. Per-dialog data live until the dialog is destroyed.
void ApplyDarkModeToDialog(HWND dialog, COLORREF text, COLORREF background, std::span<const int> controlIds,
                           DarkMenuBar menuBar = DarkMenuBar::kNone);
/// Themes list and header, and gives the list the dark colours while dark mode is on. After the dialog itself.
void ApplyDarkModeToListView(HWND list);
