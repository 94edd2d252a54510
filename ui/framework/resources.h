#pragma once

// Small things every dialog needs: resource strings, file-dialog filters, icons, list columns, the DPI.

#include <windows.h>

#include <span>
#include <string>

#include "ui/framework/list_columns.h"

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

/// Full-row select and the columns of the table, widths scaled by the DPI.
void InsertListColumns(HWND list, std::span<const ListColumn> columns);
/// Widens the last column to the list's right edge, never below the width of its row of the table; what is cut even so has a
/// tooltip.
void FillWithLastColumn(HWND list, std::span<const ListColumn> columns);
void SetListCell(HWND list, int row, int column, const std::wstring& text);
