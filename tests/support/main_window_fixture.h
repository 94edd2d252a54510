#pragma once

// A main window over stores of its own: the window runs on its own thread as in the program, the test drives it from outside and
// reads its rules back from the file.

#include <gtest/gtest.h>

#include <windows.h>

#include <commctrl.h>

#include <initializer_list>
#include <optional>
#include <string>

#include "res/resource.h"
#include "tests/support/test_program.h"
#include "tests/support/window_driver.h"
#include "ui/main_window/main_window_thread.h"

inline constexpr wchar_t kEditorTitle[] = L"Edit Threshold Rule";

inline void SelectRows(HWND list, std::initializer_list<int> rows) {
  LVITEMW item{};
  item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
  ::SendMessageW(list, LVM_SETITEMSTATE, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(&item));
  for (const int row : rows) {
    item.state = item.stateMask;
    ::SendMessageW(list, LVM_SETITEMSTATE, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
  }
}

class MainWindowTest : public testing::Test, protected TestProgram {
 protected:
  /// A rule as the tests tell them apart.
  static ThresholdRule Rule(std::uint32_t id, const wchar_t* pattern) { return {.ruleId = id, .processPattern = pattern}; }

  void Open() {
    thread_.emplace([this] { MainDialogThread(program); });
    ASSERT_NE(thread_->WaitForDialog(kMainWindowTitle), nullptr);
    list = Item(IDC_RULE_LIST);
    ASSERT_NE(list, nullptr);
  }

  /// Ends the window by the command and waits until its thread is through.
  void Close(WORD command = IDCANCEL) {
    PostCommand(Window(), command);
    ASSERT_TRUE(thread_->WaitForEnd());
    thread_.reset();
  }

  /// Runs a command that opens a dialog and returns that.
  HWND OpenDialog(WORD command, const wchar_t* title) {
    PostCommand(Window(), command);
    return WaitForDialog(title);
  }
  HWND WaitForDialog(const wchar_t* title) {
    HWND dialog = thread_->WaitForDialog(title);
    EXPECT_NE(dialog, nullptr);
    return dialog;
  }
  /// Ends a dialog and returns when the command that opened it is through.
  void Answer(HWND dialog, WORD command) {
    PostCommand(dialog, command);
    EXPECT_TRUE(WaitUntil([dialog] { return !::IsWindow(dialog); }));
    ::SendMessageW(Window(), WM_NULL, 0, 0);
  }

  [[nodiscard]] HWND Window() const { return program.MainDialogHandle.Get(); }
  [[nodiscard]] HWND Item(int id) const { return ::GetDlgItem(Window(), id); }

  [[nodiscard]] RuleList Rules() const { return *rules.Snapshot(); }

  /// The rules file follows every change at once: the next start of the program would load what is shown.
  void ExpectSaved() const {
    RuleStore saved([] { return std::wstring(); });
    EXPECT_TRUE(saved.Load(folder.File(L"rules.csv")));
    EXPECT_EQ(*saved.Snapshot(), Rules());
  }

  /// The in-place edit box; null when none is open.
  [[nodiscard]] HWND Box() const { return ::FindWindowExW(list, nullptr, L"Edit", nullptr); }
  bool WaitForNoBox() {
    return WaitUntil([this] { return Box() == nullptr; });
  }

  HWND list = nullptr;

 private:
  std::optional<WindowThread> thread_;
};
