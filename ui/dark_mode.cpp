#include "ui/dark_mode.h"

void InitDarkMode() {}
bool DarkModeAvailable() { return false; }
bool DarkModeOn() { return false; }
void ApplyDarkModeToDialog(HWND, COLORREF, COLORREF, std::span<const int>, DarkMenuBar) {}
void ApplyDarkModeToListView(HWND) {}
