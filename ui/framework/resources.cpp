#include "ui/framework/resources.h"

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
