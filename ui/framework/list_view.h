#pragma once

// What the program's list views have in common: columns as rows of a table, rows as a function of the column, one repaint for
// many rows. The list's thread.

#include <windows.h>

#include <cstddef>
#include <functional>
#include <span>
#include <string>

#include "ui/framework/list_columns.h"

/// Full-row select and the columns of the table, widths scaled by the DPI.
void InsertListColumns(HWND list, std::span<const ListColumn> columns);
/// Widens the last column to the list's right edge, never below the width of its row of the table; what is cut even so has a
/// tooltip.
void FillWithLastColumn(HWND list, std::span<const ListColumn> columns);

/// Inserts a row that carries the number, its cells the texts of the columns from 0.
void InsertListRow(HWND list, int row, LPARAM number, std::size_t columns,
                   const std::function<std::wstring(std::size_t column)>& text);
void SetListCell(HWND list, int row, int column, const std::wstring& text);

/// Holds the window's drawing back while it lives; then the whole window is drawn once, erased first.
class RedrawPause {
 public:
  explicit RedrawPause(HWND window) : window_(window) { ::SendMessageW(window_, WM_SETREDRAW, FALSE, 0); }
  ~RedrawPause() {
    ::SendMessageW(window_, WM_SETREDRAW, TRUE, 0);
    ::InvalidateRect(window_, nullptr, TRUE);
  }
  RedrawPause(const RedrawPause&) = delete;
  RedrawPause& operator=(const RedrawPause&) = delete;

 private:
  HWND window_;
};
