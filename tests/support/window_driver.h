#pragma once

// Drives real windows from a test in the same process: the window runs on a thread of its own, the test finds it and its message
// boxes, menus and file dialogs, presses their buttons and reads their controls.

#include <windows.h>

#include <functional>
#include <future>
#include <string>
#include <vector>

#include "tests/support/wait.h"

using e2e::WaitUntil;

inline constexpr wchar_t kDialogClass[] = L"#32770";
inline constexpr wchar_t kMenuClass[] = L"#32768";

/// The process's first top-level window of the class that the test accepts; null when there is none.
HWND FindWindowOf(DWORD processId, const wchar_t* className, const std::function<bool(HWND)>& accepts);
/// This process's visible dialogs, the one on top first.
std::vector<HWND> DialogsOfThisProcess();
/// The first of them that takes input; null when none comes.
HWND WaitForTopDialog();
/// This process's visible popup menu; null when none is open or comes in that time.
HWND WaitForPopup(DWORD timeoutMs = e2e::kPatienceMs);

/// Runs a routine that shows windows.
class WindowThread {
 public:
  explicit WindowThread(std::function<void()> routine) : ended_(std::async(std::launch::async, std::move(routine))) {}
  /// Cancels whatever window still stands, then waits for the routine.
  ~WindowThread();
  [[nodiscard]] bool WaitForEnd(DWORD timeoutMs = e2e::kPatienceMs) const;

 private:
  std::future<void> ended_;
};

/// Runs the routine on the window's own thread, between two of its messages and after all that were posted to it before. Without
/// effect when the window is gone by then.
void RunInWindowThread(HWND window, const std::function<void()>& routine);
/// Comes back when every window has done what it was asked so far, and what it asked of itself because of that.
void Settle();

/// As a click on a button or a menu item, without waiting for what it does.
void PostCommand(HWND dialog, int id);

/// The control with the keyboard focus of the thread that owns the window.
HWND FocusOf(HWND window);
std::wstring TextOf(HWND window);
std::wstring ClassOf(HWND window);
/// As it is spoken: without the mnemonic and the shortcut behind a tab.
std::wstring WithoutMnemonic(std::wstring text);
/// In the order of Tab.
std::vector<HWND> ControlsOf(HWND window);
std::wstring TextOfItem(HWND dialog, int id);
int RowCount(HWND list);
/// These and no other.
void SelectRows(HWND list, const std::vector<int>& rows);
std::wstring Cell(HWND list, int row, int column);
/// The notification that a double click on the cell sends; row -1: below the rows.
void NotifyDoubleClick(HWND list, int row, int column);

struct MenuItem {
  std::size_t depth;
  std::wstring text;
  UINT id;
  UINT state;
  HMENU popup;
};
/// Every item of the menu and of its popups, from top to bottom.
void ForEachMenuItem(HMENU menu, const std::function<void(const MenuItem&)>& see, std::size_t depth = 0);

/// A window's menus, and its controls in the order of Tab with ids, rectangles in dialog units, styles, marks and texts.
std::vector<std::wstring> LayoutOf(HWND window);
/// What it answers its visible controls for colours and how they paint; under a recorder also their themes and the menu bar.
std::vector<std::wstring> ColoursOf(HWND window);
