#pragma once

// A window as lines of text: what it is made of, and what it and its controls look like.

#include <windows.h>

#include <string>
#include <vector>

/// Its menus, and its controls in the order of Tab with ids, rectangles in dialog units, styles, marks and texts.
std::vector<std::wstring> LayoutOf(HWND window);
/// What it answers its visible controls for colours and how they paint; under a recorder also their themes and the menu bar.
std::vector<std::wstring> ColoursOf(HWND window);
