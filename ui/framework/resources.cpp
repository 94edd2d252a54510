#include "ui/framework/resources.h"

#include <commctrl.h>

#include <algorithm>
#include <cstdarg>

#include "platform/handles.h"
#include "platform/text_format.h"
#include "res/resource.h"

namespace {

HICON LoadProgramIcon(int sizeAt96) {
  const int size = ScaleForDpi(sizeAt96);
  return static_cast<HICON>(
      ::LoadImageW(::GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDI_VANTORA), IMAGE_ICON, size, size, LR_DEFAULTCOLOR));
}

void SetIcon(HWND window, WPARAM which, HICON icon) {
  if (icon != nullptr) ::SendMessageW(window, WM_SETICON, which, reinterpret_cast<LPARAM>(icon));
}

}  // namespace

std::wstring LoadResString(UINT id) {
  wchar_t text[512];
  const int length = ::LoadStringW(::GetModuleHandleW(nullptr), id, text, static_cast<int>(std::size(text)));
  return std::wstring(text, static_cast<std::size_t>(std::max(length, 0)));
}

std::wstring LoadFilterString(UINT id) {
  std::wstring filter = LoadResString(id);
  std::replace(filter.begin(), filter.end(), L'|', L'\0');
  filter.append(2, L'\0');
  return filter;
}

std::wstring FormatResString(UINT id, ...) {
  std::wstring format = LoadResString(id);
  // The texts say "%s" for wide text, which the runtimes read differently in a wide format; "%ls" means the same to all.
  for (std::size_t at = format.find(L"%s"); at != std::wstring::npos; at = format.find(L"%s", at)) format.replace(at, 2, L"%ls");
  std::va_list arguments;
  va_start(arguments, id);
  std::wstring text = FormatTextList(format.c_str(), arguments);
  va_end(arguments);
  return text;
}

void SetDialogIcons(HWND window) {
  // Loaded once and kept: LR_SHARED would hand out the first size asked for whatever size comes next.
  static const HICON small = LoadProgramIcon(16);
  static const HICON large = LoadProgramIcon(32);
  SetIcon(window, ICON_SMALL, small);
  SetIcon(window, ICON_BIG, large);
}

bool IsEdited(HWND editBox, const std::wstring& shown, const std::wstring& now) {
  return shown != now || ::SendMessageW(editBox, EM_GETMODIFY, 0, 0) != 0;
}

int ScaleForDpi(int pixelsAt96) {
  // The program is system-DPI aware: the figure is fixed for the life of the process.
  static const int dpi = [] {
    const WindowDc screen(nullptr);
    const int logical = screen.Get() != nullptr ? ::GetDeviceCaps(screen.Get(), LOGPIXELSX) : 0;
    return logical > 0 ? logical : USER_DEFAULT_SCREEN_DPI;
  }();
  return ::MulDiv(pixelsAt96, dpi, USER_DEFAULT_SCREEN_DPI);
}

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

void SetListCell(HWND list, int row, int column, const std::wstring& text) {
  LVITEMW item{};
  item.iSubItem = column;
  item.pszText = const_cast<wchar_t*>(text.c_str());
  ::SendMessageW(list, LVM_SETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
}
