#pragma once

// The built program as another process, and its windows seen from outside.

#include <windows.h>

#include <optional>
#include <string>

#include "platform/handles.h"
#include "tests/e2e/wait.h"

namespace e2e {

inline constexpr wchar_t kTrayClass[] = L"VANTORAW";
inline constexpr wchar_t kTrayTitle[] = L"Vantora";
inline constexpr wchar_t kDialogClass[] = L"#32770";
inline constexpr wchar_t kMenuClass[] = L"#32768";
inline constexpr wchar_t kRunningEvent[] = L"Global\\VantoraRunning";

/// Where the build has put the program.
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
  [[nodiscard]] bool IsRunning() const;
  /// Its exit code once it has ended.
  [[nodiscard]] std::optional<DWORD> WaitForExit(DWORD timeoutMs = kPatienceMs) const;

  /// This process's tray window; null when there is none within the time.
  [[nodiscard]] HWND WaitForTray(DWORD timeoutMs = kPatienceMs) const;
  /// This process's visible top-level window of the class, with the title unless it is null, once there is one.
  [[nodiscard]] HWND WaitForWindow(const wchar_t* windowClass, const wchar_t* title, DWORD timeoutMs = kPatienceMs) const;
  [[nodiscard]] HWND FindVisibleWindow(const wchar_t* windowClass, const wchar_t* title) const;
  /// The main window, known by its rule list.
  [[nodiscard]] HWND FindMainWindow() const;
  [[nodiscard]] HWND WaitForMainWindow(DWORD timeoutMs = kPatienceMs) const;

  /// Opens the tray menu. False when it does not come up.
  [[nodiscard]] bool OpenTrayMenu() const;
  /// Closes an open tray menu without a choice.
  [[nodiscard]] bool DismissMenu() const;
  /// Opens the tray menu and chooses the item with the mnemonic. False when the menu does not come up or does not close.
  [[nodiscard]] bool ChooseFromTrayMenu(wchar_t mnemonic) const;
  /// Asks the program to end as "-terminate" does, and waits for it. False when it has not ended with 0.
  [[nodiscard]] bool End() const;

 private:
  UniqueHandle process_;
  DWORD id_ = 0;
};

/// Starts the program for a job and returns its exit code.
[[nodiscard]] std::optional<DWORD> RunToEnd(const std::wstring& arguments);

[[nodiscard]] std::wstring TextOf(HWND window);
[[nodiscard]] std::wstring ItemTextOf(HWND dialog, int controlId);
/// Without waiting for what the command does.
void PostCommand(HWND dialog, int id);
void PostClick(HWND dialog, int controlId);
/// Of a list view of another process.
[[nodiscard]] int ListRowCount(HWND list);

}  // namespace e2e
