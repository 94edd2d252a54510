#pragma once

// A window's menu bar in the dark theme. The system asks for its painting by two undocumented messages.

#include <windows.h>

inline constexpr UINT kDrawMenuBar = 0x91;
inline constexpr UINT kDrawMenuBarItem = 0x92;

/// What kDrawMenuBar's lParam points to.
struct MenuBarDraw {
  HMENU menu;
  HDC dc;
  DWORD flags;
};

/// What kDrawMenuBarItem's lParam points to; more follows that is of no use here.
struct MenuBarItemDraw {
  DRAWITEMSTRUCT item;
  MenuBarDraw bar;
  int position;
};

/// Paints the window's menu bar while dark mode is on; the window's data live until it is destroyed.
void InstallDarkMenuBar(HWND window);
