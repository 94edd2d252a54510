#pragma once

// Small things every dialog needs: resource strings, file-dialog filters, icons, the DPI.

#include <windows.h>

#include <string>

/// The string resource, at most 511 characters; empty when it is missing.
[[nodiscard]] std::wstring LoadResString(UINT id);
/// The string with every "|" a NUL and two NULs more: the filter list of the file dialogs.
[[nodiscard]] std::wstring LoadFilterString(UINT id);
/// The string resource used as a wide printf format.
[[nodiscard]] std::wstring FormatResString(UINT id, ...);
/// Icon 107 at 16 and 32 pixels (scaled by the DPI) as the window's icons. They are shared and live as long as the process.
void SetDialogIcons(HWND window);

/// Whether an edit box that showed `shown` has been typed in, or has another text by now.
[[nodiscard]] bool IsEdited(HWND editBox, const std::wstring& shown, const std::wstring& now);

/// A length given for 96 dpi in pixels of the system's DPI.
[[nodiscard]] int ScaleForDpi(int pixelsAt96);
