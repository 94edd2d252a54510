#pragma once

// A window as lines of text: what it is made of, and what it and its controls look like.

#include <windows.h>

#include <string>

/// Its menus, its controls in the order of Tab with ids, rectangles in dialog units, styles and texts, and how they follow a
/// larger frame. A window that can be resized has its old size again afterwards.
std::wstring LayoutOf(HWND window);
/// What it answers its visible controls for colours and how they paint; under a recorder also their themes and the menu bar.
std::wstring ColoursOf(HWND window);
