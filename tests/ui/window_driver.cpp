#include "window_driver.h"

#include <commctrl.h>

#include <chrono>

namespace {

constexpr int kWaitMs = 10'000;
constexpr wchar_t kDialogClass[] = L"#32770";
constexpr wchar_t kMenuClass[] = L"#32768";

/// The first visible window of the thread that the test accepts.
HWND FindThreadWindow(DWORD threadId, const wchar_t* className, const std::function<bool(HWND)>& accepts) {
  HWND window = nullptr;
  while ((window = ::FindWindowExW(nullptr, window, className, nullptr)) != nullptr) {
    if (::GetWindowThreadProcessId(window, nullptr) == threadId && ::IsWindowVisible(window) && accepts(window)) break;
  }
  return window;
}

}  // namespace

bool WaitUntil(const std::function<bool()>& condition) {
  const ULONGLONG end = ::GetTickCount64() + kWaitMs;
  while (!condition()) {
    if (::GetTickCount64() > end) return false;
    ::Sleep(5);
  }
  return true;
}

WindowThread::WindowThread(std::function<void()> routine)
    : ended_(std::async(std::launch::async, [this, run = std::move(routine)] {
        id_ = ::GetCurrentThreadId();
        run();
      })) {}

WindowThread::~WindowThread() {
  const auto cancel = [](HWND window) {
    if (::IsWindowEnabled(window)) PostCommand(window, IDCANCEL);
    return false;
  };
  while (ended_.wait_for(std::chrono::milliseconds(20)) != std::future_status::ready) FindThreadWindow(id_, kDialogClass, cancel);
}

HWND WindowThread::WaitForWindow(const wchar_t* className, const std::function<bool(HWND)>& accepts) const {
  HWND window = nullptr;
  WaitUntil([&] { return (window = FindThreadWindow(id_, className, accepts)) != nullptr; });
  return window;
}

HWND WindowThread::WaitForDialog(const std::wstring& title) const {
  return WaitForWindow(kDialogClass, [&title](HWND window) { return ::IsWindowEnabled(window) && TextOf(window) == title; });
}

HWND WindowThread::WaitForDialogWith(int controlId) const {
  return WaitForWindow(kDialogClass, [controlId](HWND window) {
    return ::IsWindowEnabled(window) && ::IsWindowVisible(::GetDlgItem(window, controlId));
  });
}

HWND WindowThread::WaitForMenu() const {
  return WaitForWindow(kMenuClass, [](HWND) { return true; });
}

bool WindowThread::WaitForEnd() const { return ended_.wait_for(std::chrono::milliseconds(kWaitMs)) == std::future_status::ready; }

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
