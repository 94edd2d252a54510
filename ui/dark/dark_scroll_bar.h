#pragma once

// Dark scroll bars inside the common controls: those ask the theme library for the plain scroll bar's theme by an ordinal that
// they import late, so the one import slot is pointed at a routine of ours that asks for the themed one.

#include <windows.h>

#include <uxtheme.h>

/// Once, at start-up, after InitDarkMode. The slot stays patched for the life of the process; without effect
/// where dark mode is unavailable or the common controls have no such import.
void InstallDarkScrollBars();

/// What stands in the slot: opens the Explorer scroll bar in place of the plain one while dark mode is on.
HTHEME WINAPI DarkScrollBarThemeHook(HWND window, LPCWSTR classList);
