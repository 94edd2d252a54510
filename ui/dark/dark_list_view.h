#pragma once

// Dark list views: the themed list and header, and the header's text colour, which the theme does not set by itself.

#include <windows.h>

/// Themes list and header, and gives the list the dark colours while dark mode is on. After the dialog itself.
void ApplyDarkModeToListView(HWND list);
