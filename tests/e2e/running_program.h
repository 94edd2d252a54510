#pragma once

// The built program as another process, and its windows seen from outside.

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/handles.h"
#include "tests/e2e/wait.h"

namespace e2e {

inline constexpr wchar_t kTrayClass[] = L"VANTORAW";
inline constexpr wchar_t kTrayTitle[] = L"Vantora";
inline constexpr wchar_t kDialogClass[] = L"#32770";
inline constexpr wchar_t kMenuClass[] = L"#32768";
inline constexpr wchar_t kRunningEvent[] = L"Global\\VantoraRunning";

/// The path in full, of what the build has put in its folder.
[[nodiscard]] std::wstring FullPath(const wchar_t* path);
[[nodiscard]] std::wstring ProgramPath();

/// A process that is ended with its owner, when it has not ended before.
class RunningProgram {
 public:
  /// Starts the program, or another copy of it, with the command line's rest. What it needs is asked for, not assumed.
  explicit RunningProgram(const std::wstring& arguments = L"/tray", const std::wstring& path = ProgramPath());
  ~RunningProgram();
  RunningProgram(const RunningProgram&) = delete;
  RunningProgram& operator=(const RunningProgram&) = delete;

  [[nodiscard]] DWORD Id() const { return id_; }
  /// Its exit code once it has ended.
  [[nodiscard]] std::optional<DWORD> WaitForExit(DWORD timeoutMs = kPatienceMs) const;

  /// This process's tray window; null when there is none within the time.
  [[nodiscard]] HWND WaitForTray() const;
  void PostToTray(UINT message, WPARAM wParam, LPARAM lParam) const { ::PostMessageW(WaitForTray(), message, wParam, lParam); }

  /// This process's visible top-level windows of the class.
  [[nodiscard]] std::vector<HWND> VisibleWindows(const wchar_t* windowClass = kDialogClass) const;
  /// Of these dialogs the one that holds the control, once there is one.
  [[nodiscard]] HWND WaitForDialog(int controlId) const;
  [[nodiscard]] HWND WaitForMainWindow() const;
  /// The message box with the caption, once its text begins with the one expected.
  [[nodiscard]] HWND WaitForBox(const std::wstring& caption, const std::wstring& text) const;
  /// Waits for it and presses one of its buttons. False when it does not come or does not go.
  [[nodiscard]] bool AnswerBox(const std::wstring& caption, const std::wstring& text, int buttonId) const;

  /// Opens the tray menu. False when it does not come up.
  [[nodiscard]] bool OpenTrayMenu() const;
  /// Opens the tray menu and chooses the item with the mnemonic. The choice of a greyed one may leave the menu open.
  void ChooseFromTrayMenu(wchar_t mnemonic) const;
  /// Asks the program to end as "-terminate" does, and waits for it. False when it has not ended with 0.
  [[nodiscard]] bool End() const;

 private:
  [[nodiscard]] std::vector<HWND> Windows(const wchar_t* windowClass) const;

  UniqueHandle process_;
  DWORD id_ = 0;
};

/// Starts the program for a job and returns its exit code.
[[nodiscard]] std::optional<DWORD> RunToEnd(const std::wstring& arguments);

[[nodiscard]] std::wstring TextOf(HWND window);
/// Without waiting for what the command does.
void PostCommand(HWND dialog, int id);
/// Of a list view of another process.
[[nodiscard]] int ListRowCount(HWND list);

}  // namespace e2e
