#include "tests/support/window_driver.h"

#include <commctrl.h>

#include <chrono>

HWND FindWindowOf(DWORD processId, const wchar_t* className, const std::function<bool(HWND)>& accepts) {
  HWND window = nullptr;
  while ((window = ::FindWindowExW(nullptr, window, className, nullptr)) != nullptr) {
    DWORD owner = 0;
    ::GetWindowThreadProcessId(window, &owner);
    if (owner == processId && accepts(window)) break;
  }
  return window;
}

namespace {

HWND WaitForOwnWindow(const wchar_t* className, const std::function<bool(HWND)>& accepts) {
  return e2e::WaitForResult([&] {
    return FindWindowOf(::GetCurrentProcessId(), className,
                        [&](HWND window) { return ::IsWindowVisible(window) && accepts(window); });
  });
}

}  // namespace

HWND WaitForPopup() {
  return WaitForOwnWindow(kMenuClass, [](HWND) { return true; });
}

HWND WaitForDialogWith(int controlId) {
  return WaitForOwnWindow(kDialogClass, [controlId](HWND window) {
    return ::IsWindowEnabled(window) && ::IsWindowVisible(::GetDlgItem(window, controlId));
  });
}

WindowThread::WindowThread(std::function<void()> routine)
    : ended_(std::async(std::launch::async, [this, run = std::move(routine)] {
        id_ = ::GetCurrentThreadId();
        run();
      })) {}

WindowThread::~WindowThread() {
  const auto cancel = [this](HWND window) {
    if (Owns(window) && ::IsWindowVisible(window) && ::IsWindowEnabled(window)) PostCommand(window, IDCANCEL);
    return false;
  };
  while (ended_.wait_for(std::chrono::milliseconds(20)) != std::future_status::ready)
    FindWindowOf(::GetCurrentProcessId(), kDialogClass, cancel);
}

HWND WindowThread::WaitForDialog(const std::wstring& title) const {
  return WaitForOwnWindow(kDialogClass,
                          [&](HWND window) { return Owns(window) && ::IsWindowEnabled(window) && TextOf(window) == title; });
}

bool WindowThread::WaitForEnd() const {
  return ended_.wait_for(std::chrono::milliseconds(e2e::kPatienceMs)) == std::future_status::ready;
}

void PostCommand(HWND dialog, int id) { ::PostMessageW(dialog, WM_COMMAND, static_cast<WPARAM>(id), 0); }
void SendCommand(HWND dialog, int id) { ::SendMessageW(dialog, WM_COMMAND, static_cast<WPARAM>(id), 0); }

HWND FocusOf(HWND window) {
  GUITHREADINFO info{};
  info.cbSize = sizeof(info);
  return ::GetGUIThreadInfo(::GetWindowThreadProcessId(window, nullptr), &info) ? info.hwndFocus : nullptr;
}

std::wstring TextOf(HWND window) {
  std::wstring text(static_cast<std::size_t>(::SendMessageW(window, WM_GETTEXTLENGTH, 0, 0)) + 1, L'\0');
  text.resize(static_cast<std::size_t>(::SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()))));
  return text;
}

std::wstring TextOfItem(HWND dialog, int id) { return TextOf(::GetDlgItem(dialog, id)); }

int RowCount(HWND list) { return static_cast<int>(::SendMessageW(list, LVM_GETITEMCOUNT, 0, 0)); }

std::wstring Cell(HWND list, int row, int column) {
  wchar_t text[512] = L"";
  LVITEMW item{};
  item.iSubItem = column;
  item.pszText = text;
  item.cchTextMax = static_cast<int>(std::size(text));
  ::SendMessageW(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
  return text;
}

void NotifyDoubleClick(HWND list, int row, int column) {
  NMITEMACTIVATE click{};
  click.hdr = {list, static_cast<UINT_PTR>(::GetDlgCtrlID(list)), static_cast<UINT>(NM_DBLCLK)};
  click.iItem = row;
  click.iSubItem = column;
  ::SendMessageW(::GetParent(list), WM_NOTIFY, click.hdr.idFrom, reinterpret_cast<LPARAM>(&click));
}

std::vector<std::wstring> MenuTexts(HWND popup) {
  constexpr UINT kGetMenuHandle = 0x01E1;
  auto* menu = reinterpret_cast<HMENU>(::SendMessageW(popup, kGetMenuHandle, 0, 0));
  std::vector<std::wstring> texts;
  for (int i = 0; i < ::GetMenuItemCount(menu); ++i) {
    wchar_t text[256] = L"";
    ::GetMenuStringW(menu, static_cast<UINT>(i), text, static_cast<int>(std::size(text)), MF_BYPOSITION);
    texts.emplace_back(text);
  }
  return texts;
}

void ChooseMenuItem(HWND owner, int position) {
  for (int i = 0; i <= position; ++i) ::PostMessageW(owner, WM_KEYDOWN, VK_DOWN, 0);
  ::PostMessageW(owner, WM_KEYDOWN, VK_RETURN, 0);
}

void AnswerFileDialog(HWND fileDialog, const std::wstring& path) {
  HWND name = ::GetDlgItem(fileDialog, kFileNameBox);
  ::SendMessageW(name, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path.c_str()));
  PostCommand(fileDialog, IDOK);
}
