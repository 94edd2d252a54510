#pragma once

// The built program as another process, its windows seen from outside.

#include <optional>

#include "platform/handles.h"
#include "res/messages.h"
#include "res/resource.h"
#include "tests/support/window_driver.h"

namespace e2e {

inline constexpr wchar_t kTrayClass[] = L"VANTORAW";
inline constexpr wchar_t kRunningEvent[] = L"Global\\VantoraRunning";

/// The path in full, of what the build has put in its folder.
inline std::wstring FullPath(const wchar_t* path) {
  wchar_t full[MAX_PATH]{};
  ::GetFullPathNameW(path, MAX_PATH, full, nullptr);
  return full;
}
inline std::wstring ProgramPath() { return FullPath(VANTORA_EXE); }

/// A process that is ended with its owner, when it has not ended before.
class RunningProgram {
 public:
  /// Starts the program, or another copy of it, with the command line's rest. What it needs is asked for, not assumed.
  explicit RunningProgram(const std::wstring& arguments = L"/tray", const std::wstring& path = ProgramPath()) {
    std::wstring commandLine = L"\"" + path + L"\" " + arguments;
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION started{};
    ::CreateProcessW(path.c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &started);
    const UniqueHandle thread(started.hThread);
    process_.reset(started.hProcess);
    id_ = started.dwProcessId;
  }
  /// One that was started by somebody else.
  explicit RunningProgram(DWORD id) : process_(::OpenProcess(PROCESS_ALL_ACCESS, FALSE, id)), id_(id) {}
  ~RunningProgram() {
    ::TerminateProcess(process_.get(), 99);
    ::WaitForSingleObject(process_.get(), kPatienceMs);
  }
  RunningProgram(const RunningProgram&) = delete;

  [[nodiscard]] DWORD Id() const { return id_; }
  /// Its exit code once it has ended.
  [[nodiscard]] std::optional<DWORD> WaitForExit(DWORD timeoutMs = kPatienceMs) const {
    DWORD code = 0;
    if (::WaitForSingleObject(process_.get(), timeoutMs) != WAIT_OBJECT_0) return std::nullopt;
    return ::GetExitCodeProcess(process_.get(), &code) ? std::optional(code) : std::nullopt;
  }

  [[nodiscard]] HWND WaitForMainWindow() const {
    return WaitForWindow(kDialogClass, [](HWND window) { return ::GetDlgItem(window, IDC_RULE_LIST) != nullptr; });
  }
  [[nodiscard]] HWND WaitForTray() const {
    return WaitForResult([&] { return FindWindowOf(id_, kTrayClass, [](HWND) { return true; }); });
  }
  void PostToTray(UINT message, WPARAM wParam, LPARAM lParam) const { ::PostMessageW(WaitForTray(), message, wParam, lParam); }
  /// Opens the tray menu. False when it does not come up.
  [[nodiscard]] bool OpenTrayMenu() const {
    PostToTray(UWM_TRAYICON, 0, WM_RBUTTONUP);
    return WaitForWindow(kMenuClass, [](HWND) { return true; }) != nullptr;
  }
  /// Opens the tray menu and chooses the item with the mnemonic. The choice of a greyed one may leave the menu open.
  void ChooseFromTrayMenu(wchar_t mnemonic) const {
    if (OpenTrayMenu()) PostToTray(WM_CHAR, mnemonic, 0);
  }

 private:
  template <class Accepts>
  [[nodiscard]] HWND WaitForWindow(const wchar_t* windowClass, Accepts accepts) const {
    return WaitForResult([&] {
      return FindWindowOf(id_, windowClass, [&](HWND window) { return ::IsWindowVisible(window) && accepts(window); });
    });
  }

  UniqueHandle process_;
  DWORD id_ = 0;
};

}  // namespace e2e
