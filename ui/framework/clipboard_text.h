#pragma once

// The clipboard's text as a copy of the program's own.

#include <windows.h>

#include <optional>
#include <string>

/// Empty when the clipboard holds no Unicode text, cannot be opened for the owner, or memory for the copy cannot be had. The
/// clipboard is held only during the call.
[[nodiscard]] std::optional<std::wstring> ReadClipboardText(HWND owner);

/// Replaces what the clipboard holds; without effect when it cannot be opened for the owner.
void WriteClipboardText(HWND owner, const std::wstring& text);
