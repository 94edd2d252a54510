#include "tests/support/window_driver.h"

#include <commctrl.h>

#include <atomic>
#include <chrono>

#include "platform/handles.h"

HWND FindWindowOf(DWORD processId, const wchar_t* className, const std::function<bool(HWND)>& accepts) {
  HWND window = nullptr;
  while ((window = ::FindWindowExW(nullptr, window, className, nullptr)) != nullptr) {
    DWORD owner = 0;
    ::GetWindowThreadProcessId(window, &owner);
    if (owner == processId && accepts(window)) break;
  }
  return window;
}

std::vector<HWND> DialogsOfThisProcess() {
  std::vector<HWND> dialogs;
  FindWindowOf(::GetCurrentProcessId(), kDialogClass, [&dialogs](HWND window) {
    if (::IsWindowVisible(window)) dialogs.push_back(window);
    return false;
  });
  return dialogs;
}

HWND WaitForTopDialog() {
  return e2e::WaitForResult([] {
    for (HWND dialog : DialogsOfThisProcess()) {
      if (::IsWindowEnabled(dialog)) return dialog;
    }
    return HWND{nullptr};
  });
}

HWND WaitForPopup(DWORD timeoutMs) {
  const auto find = [] {
    return FindWindowOf(::GetCurrentProcessId(), kMenuClass, [](HWND window) { return ::IsWindowVisible(window) != FALSE; });
  };
  return e2e::WaitForResult(find, timeoutMs);
}

WindowThread::~WindowThread() {
  while (!WaitForEnd(20)) {
    for (HWND dialog : DialogsOfThisProcess()) {
      if (::IsWindowEnabled(dialog)) PostCommand(dialog, ::GetDlgItem(dialog, IDNO) != nullptr ? IDNO : IDCANCEL);
    }
  }
}

bool WindowThread::WaitForEnd(DWORD timeoutMs) const {
  return ended_.wait_for(std::chrono::milliseconds(timeoutMs)) == std::future_status::ready;
}

void RunInWindowThread(HWND window, const std::function<void()>& routine) {
  static const UINT kRun = ::RegisterWindowMessageW(L"VantoraTestRun");
  const auto hook = [](int code, WPARAM removal, LPARAM lParam) -> LRESULT {
    const auto& message = *reinterpret_cast<const MSG*>(lParam);
    if (code == HC_ACTION && removal == PM_REMOVE && message.message == kRun)
      (*reinterpret_cast<const std::function<void()>*>(message.lParam))();
    return ::CallNextHookEx(nullptr, code, removal, lParam);
  };
  std::atomic<bool> done{false};
  const std::function<void()> run = [&] {
    routine();
    done = true;
  };
  const UniqueHook installed(::SetWindowsHookExW(WH_GETMESSAGE, hook, nullptr, ::GetWindowThreadProcessId(window, nullptr)));
  if (!::PostMessageW(window, kRun, 0, reinterpret_cast<LPARAM>(&run))) return;
  WaitUntil([&] { return done || !::IsWindow(window); });
}

void Settle() {
  for (int times = 0; times < 3; ++times) {
    for (HWND dialog : DialogsOfThisProcess()) RunInWindowThread(dialog, [] {});
  }
}

void PostCommand(HWND dialog, int id) { ::PostMessageW(dialog, WM_COMMAND, static_cast<WPARAM>(id), 0); }

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

std::wstring ClassOf(HWND window) {
  wchar_t name[64] = L"";
  ::GetClassNameW(window, name, 64);
  return name;
}

std::wstring WithoutMnemonic(std::wstring text) {
  std::erase(text, L'&');
  return text.substr(0, text.find(L'\t'));
}

std::vector<HWND> ControlsOf(HWND window) {
  std::vector<HWND> controls;
  for (HWND child = ::GetWindow(window, GW_CHILD); child != nullptr; child = ::GetWindow(child, GW_HWNDNEXT))
    controls.push_back(child);
  return controls;
}

std::wstring TextOfItem(HWND dialog, int id) { return TextOf(::GetDlgItem(dialog, id)); }

int RowCount(HWND list) { return ListView_GetItemCount(list); }

void SelectRows(HWND list, const std::vector<int>& rows) {
  constexpr UINT kMask = LVIS_SELECTED | LVIS_FOCUSED;
  ListView_SetItemState(list, -1, 0, kMask);
  for (const int row : rows) ListView_SetItemState(list, row, kMask, kMask);
}

std::wstring Cell(HWND list, int row, int column) {
  wchar_t text[512] = L"";
  ListView_GetItemText(list, row, column, text, 512);
  return text;
}

void NotifyDoubleClick(HWND list, int row, int column) {
  NMITEMACTIVATE click{};
  click.hdr = {list, static_cast<UINT_PTR>(::GetDlgCtrlID(list)), static_cast<UINT>(NM_DBLCLK)};
  click.iItem = row;
  click.iSubItem = column;
  ::SendMessageW(::GetParent(list), WM_NOTIFY, click.hdr.idFrom, reinterpret_cast<LPARAM>(&click));
}

void ForEachMenuItem(HMENU menu, const std::function<void(const MenuItem&)>& see, std::size_t depth) {
  for (int i = 0; i < ::GetMenuItemCount(menu); ++i) {
    wchar_t text[256] = L"";
    ::GetMenuStringW(menu, static_cast<UINT>(i), text, static_cast<int>(std::size(text)), MF_BYPOSITION);
    HMENU popup = ::GetSubMenu(menu, i);
    see({depth, text, ::GetMenuItemID(menu, i), ::GetMenuState(menu, static_cast<UINT>(i), MF_BYPOSITION), popup});
    ForEachMenuItem(popup, see, depth + 1);
  }
}
