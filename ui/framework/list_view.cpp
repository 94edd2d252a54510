#include "ui/framework/list_view.h"

#include <commctrl.h>

#include <algorithm>

#include "ui/framework/resources.h"

void InsertListColumns(HWND list, std::span<const ListColumn> columns) {
  ::SendMessageW(list, LVM_SETEXTENDEDLISTVIEWSTYLE, 0, LVS_EX_FULLROWSELECT);
  WPARAM index = 0;
  for (const ListColumn& column : columns) {
    std::wstring header = LoadResString(column.headerStringId);
    LVCOLUMNW item{};
    item.mask = LVCF_TEXT | LVCF_WIDTH;
    item.pszText = header.data();
    item.cx = ScaleForDpi(column.widthPx);
    ::SendMessageW(list, LVM_INSERTCOLUMNW, index++, reinterpret_cast<LPARAM>(&item));
  }
}

void FillWithLastColumn(HWND list, std::span<const ListColumn> columns) {
  RECT client{};
  ::GetClientRect(list, &client);
  int left = 0;
  for (std::size_t column = 0; column + 1 < columns.size(); ++column) {
    left += static_cast<int>(::SendMessageW(list, LVM_GETCOLUMNWIDTH, column, 0));
  }
  constexpr DWORD kTips = LVS_EX_INFOTIP | LVS_EX_LABELTIP;
  ::SendMessageW(list, LVM_SETEXTENDEDLISTVIEWSTYLE, kTips, kTips);
  const int width = std::max<int>(ScaleForDpi(columns.back().widthPx), client.right - left);
  ::SendMessageW(list, LVM_SETCOLUMNWIDTH, columns.size() - 1, MAKELPARAM(width, 0));
}

void InsertListRow(HWND list, int row, LPARAM number, std::size_t columns,
                   const std::function<std::wstring(std::size_t column)>& text) {
  std::wstring first = text(0);
  LVITEMW item{};
  item.mask = LVIF_TEXT | LVIF_PARAM;
  item.iItem = row;
  item.pszText = first.data();
  item.lParam = number;
  const auto inserted = static_cast<int>(::SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item)));
  if (inserted < 0) return;
  for (std::size_t column = 1; column < columns; ++column) SetListCell(list, inserted, static_cast<int>(column), text(column));
}

void SetListCell(HWND list, int row, int column, const std::wstring& text) {
  LVITEMW item{};
  item.iSubItem = column;
  item.pszText = const_cast<wchar_t*>(text.c_str());
  ::SendMessageW(list, LVM_SETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
}
