#pragma once

// A dialog's dark colours: the subclass that answers its controls' colour questions and gives each listed control its theme.

#include <windows.h>

#include <span>

/// Whether a dialog's menu bar is drawn dark as well. It is not part of the client area: its painting goes in between the title
/// bar and the dialog's own colours.
enum class DarkMenuBar { kNone, kDraw };

/// During WM_INITDIALOG. Per-dialog data live until the dialog is destroyed.
void ApplyDarkModeToDialog(HWND dialog, COLORREF text, COLORREF background, std::span<const int> controlIds,
                           DarkMenuBar menuBar = DarkMenuBar::kNone);
