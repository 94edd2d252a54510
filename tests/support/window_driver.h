#pragma once

// Drives real windows from a test in the same process: the window runs on a thread of its own, the test finds it and its message
// boxes, menus and file dialogs, presses their buttons and reads their controls.

#include <windows.h>

#include <commctrl.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <string>
#include <vector>

#include "platform/handles.h"
#include "tests/support/wait.h"

using e2e::WaitUntil;

inline constexpr wchar_t kDialogClass[] = L"#32770";
inline constexpr wchar_t kMenuClass[] = L"#32768";

/// The process's first top-level window of the class that the test accepts; null when there is none.
inline HWND FindWindowOf(DWORD processId, const wchar_t* className, const std::function<bool(HWND)>& accepts) {
  HWND window = nullptr;
  while ((window = ::FindWindowExW(nullptr, window, className, nullptr)) != nullptr) {
    DWORD owner = 0;
    ::GetWindowThreadProcessId(window, &owner);
    if (owner == processId && accepts(window)) break;
  }
  return window;
}

/// This process's visible dialogs, the one on top first.
inline std::vector<HWND> DialogsOfThisProcess() {
  std::vector<HWND> dialogs;
  FindWindowOf(::GetCurrentProcessId(), kDialogClass, [&dialogs](HWND window) {
    if (::IsWindowVisible(window)) dialogs.push_back(window);
    return false;
  });
  return dialogs;
}

/// The first of them that takes input; null when none comes.
inline HWND WaitForTopDialog() {
  return e2e::WaitForResult([] {
    for (HWND dialog : DialogsOfThisProcess()) {
      if (::IsWindowEnabled(dialog)) return dialog;
    }
    return HWND{nullptr};
  });
}

/// This process's visible popup menu; null when none is open or comes in that time.
inline HWND WaitForPopup(DWORD timeoutMs = e2e::kPatienceMs) {
  const auto find = [] {
    return FindWindowOf(::GetCurrentProcessId(), kMenuClass, [](HWND window) { return ::IsWindowVisible(window) != FALSE; });
  };
  return e2e::WaitForResult(find, timeoutMs);
}

/// As a click on a button or a menu item, without waiting for what it does.
inline void PostCommand(HWND dialog, int id) { ::PostMessageW(dialog, WM_COMMAND, static_cast<WPARAM>(id), 0); }

/// Runs a routine that shows windows.
class WindowThread {
 public:
  explicit WindowThread(std::function<void()> routine) : ended_(std::async(std::launch::async, std::move(routine))) {}
  /// Cancels whatever window still stands, then waits for the routine.
  ~WindowThread() {
    while (!WaitForEnd(20)) {
      for (HWND dialog : DialogsOfThisProcess()) {
        if (::IsWindowEnabled(dialog)) PostCommand(dialog, ::GetDlgItem(dialog, IDNO) != nullptr ? IDNO : IDCANCEL);
      }
    }
  }
  [[nodiscard]] bool WaitForEnd(DWORD timeoutMs = e2e::kPatienceMs) const {
    return ended_.wait_for(std::chrono::milliseconds(timeoutMs)) == std::future_status::ready;
  }

 private:
  std::future<void> ended_;
};

/// Runs the routine on the window's own thread, between two of its messages and after all that were posted to it before. Without
/// effect when the window is gone by then.
inline void RunInWindowThread(HWND window, const std::function<void()>& routine) {
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

/// Comes back when every window has done what it was asked so far, and what it asked of itself because of that.
inline void Settle() {
  for (int times = 0; times < 3; ++times) {
    for (HWND dialog : DialogsOfThisProcess()) RunInWindowThread(dialog, [] {});
  }
}

/// The control with the keyboard focus of the thread that owns the window.
inline HWND FocusOf(HWND window) {
  GUITHREADINFO info{};
  info.cbSize = sizeof(info);
  return ::GetGUIThreadInfo(::GetWindowThreadProcessId(window, nullptr), &info) ? info.hwndFocus : nullptr;
}

inline std::wstring TextOf(HWND window) {
  std::wstring text(static_cast<std::size_t>(::SendMessageW(window, WM_GETTEXTLENGTH, 0, 0)) + 1, L'\0');
  text.resize(static_cast<std::size_t>(::SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()))));
  return text;
}

inline std::wstring ClassOf(HWND window) {
  wchar_t name[64] = L"";
  ::GetClassNameW(window, name, 64);
  return name;
}

/// As it is spoken: without the mnemonic and the shortcut behind a tab.
inline std::wstring WithoutMnemonic(std::wstring text) {
  std::erase(text, L'&');
  return text.substr(0, text.find(L'\t'));
}

/// In the order of Tab.
inline std::vector<HWND> ControlsOf(HWND window) {
  std::vector<HWND> controls;
  for (HWND child = ::GetWindow(window, GW_CHILD); child != nullptr; child = ::GetWindow(child, GW_HWNDNEXT))
    controls.push_back(child);
  return controls;
}

/// The first with the text, or the one that comes so many places after it; null when there is none.
inline HWND FindControl(HWND window, const std::wstring& text, std::size_t after = 0) {
  const std::vector<HWND> controls = ControlsOf(window);
  for (std::size_t i = 0; i + after < controls.size(); ++i) {
    if (WithoutMnemonic(TextOf(controls[i])) == text) return controls[i + after];
  }
  return nullptr;
}

inline std::wstring TextOfItem(HWND dialog, int id) { return TextOf(::GetDlgItem(dialog, id)); }
inline int RowCount(HWND list) { return ListView_GetItemCount(list); }
/// These and no other.
inline void SelectRows(HWND list, const std::vector<int>& rows) {
  constexpr UINT kMask = LVIS_SELECTED | LVIS_FOCUSED;
  ListView_SetItemState(list, -1, 0, kMask);
  for (const int row : rows) ListView_SetItemState(list, row, kMask, kMask);
}

inline std::wstring Cell(HWND list, int row, int column) {
  wchar_t text[512] = L"";
  ListView_GetItemText(list, row, column, text, 512);
  return text;
}

/// The notification that a double click on the cell sends; row -1: below the rows.
inline void NotifyDoubleClick(HWND list, int row, int column) {
  NMITEMACTIVATE click{};
  click.hdr = {list, static_cast<UINT_PTR>(::GetDlgCtrlID(list)), static_cast<UINT>(NM_DBLCLK)};
  click.iItem = row;
  click.iSubItem = column;
  ::SendMessageW(::GetParent(list), WM_NOTIFY, click.hdr.idFrom, reinterpret_cast<LPARAM>(&click));
}

struct MenuItem {
  std::size_t depth;
  std::wstring text;
  UINT id;
  UINT state;
  HMENU popup;
};
/// Every item of the menu and of its popups, from top to bottom.
inline void ForEachMenuItem(HMENU menu, const std::function<void(const MenuItem&)>& see, std::size_t depth = 0) {
  for (int i = 0; i < ::GetMenuItemCount(menu); ++i) {
    wchar_t text[256] = L"";
    ::GetMenuStringW(menu, static_cast<UINT>(i), text, static_cast<int>(std::size(text)), MF_BYPOSITION);
    HMENU popup = ::GetSubMenu(menu, i);
    see({depth, text, ::GetMenuItemID(menu, i), ::GetMenuState(menu, static_cast<UINT>(i), MF_BYPOSITION), popup});
    ForEachMenuItem(popup, see, depth + 1);
  }
}

/// A window's menus, and its controls in the order of Tab with ids, rectangles in dialog units, styles, marks and texts.
std::vector<std::wstring> LayoutOf(HWND window);
/// What it answers its visible controls for colours and how they paint; under a recorder also their themes and the menu bar.
std::vector<std::wstring> ColoursOf(HWND window);
