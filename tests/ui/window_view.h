#pragma once

// A window as lines of text under numbers of their own: what it is made of, and what it and its controls look like.

#include <windows.h>

#include <map>
#include <string>

/// Its menus, and its controls in the order of Tab with ids, rectangles in dialog units, styles, marks and texts.
void AddLayout(HWND window, const std::wstring& prefix, std::map<std::wstring, std::wstring>& state);
/// What it answers its visible controls for colours and how they paint; under a recorder also their themes and the menu bar.
void AddColours(HWND window, const std::wstring& prefix, std::map<std::wstring, std::wstring>& state);
