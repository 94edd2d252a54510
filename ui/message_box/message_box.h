#pragma once

// The program's own message box: the system's call and results, with a white panel over a grey strip, the user's dark theme, and
// Ctrl+C copying the whole box. Layout and text are computed in message_box_model.

#include <windows.h>

#include <string>

/// Shows the box and returns the id of the button that closed it; -1 when it could not be created, 2 when memory for it could not
/// be had. A missing caption shows "Error"; a text below 0x10000 is a string resource. Any thread; runs its own message loop.
int XMessageBox(HWND owner, const wchar_t* text, const wchar_t* caption, UINT style);

/// Brings this program's open box with the caption to the front; false when there is none, or the system does not allow it.
bool BringMessageBoxForward(const std::wstring& caption);
