#pragma once

// Stands in for the taskbar: a window of the class that the shell's notification calls look up, which receives what the program
// tells the shell about its icon. Keeps the icons as a taskbar does, records every call, and can refuse, forget, and announce
// itself. Reads the form in which Wine's shell library sends the calls.

#include <windows.h>

#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/e2e/wait.h"

namespace e2e {

/// One call about an icon. Texts are those of the call whether or not its flags name them.
struct NotifyCall {
  DWORD message = 0;  ///< NIM_ADD, NIM_MODIFY, NIM_DELETE
  HWND window = nullptr;
  UINT id = 0;
  UINT flags = 0;
  UINT callback = 0;
  std::wstring tip;
  std::wstring infoTitle;
  std::wstring info;
  UINT infoFlags = 0;
  UINT timeoutMs = 0;
  SIZE icon{};
  bool accepted = false;

  [[nodiscard]] bool IsBalloon() const;
};

class ShellStandIn {
 public:
  ShellStandIn();
  ~ShellStandIn();
  ShellStandIn(const ShellStandIn&) = delete;
  ShellStandIn& operator=(const ShellStandIn&) = delete;

  /// Whether the shell's calls come here.
  [[nodiscard]] bool IsInPlace() const;

  [[nodiscard]] std::vector<NotifyCall> Calls() const;
  [[nodiscard]] std::size_t Count(DWORD message) const;
  /// The balloons so far, oldest first.
  [[nodiscard]] std::vector<NotifyCall> Balloons() const;
  /// The n-th balloon, counted from 0, once it has come.
  [[nodiscard]] std::optional<NotifyCall> WaitForBalloon(std::size_t index, DWORD timeoutMs = kPatienceMs) const;
  /// Icons shown at the moment.
  [[nodiscard]] std::size_t IconCount() const;

  /// From now on every call is refused, as while there is no taskbar.
  void SetRefusing(bool refusing);
  /// The taskbar starts anew: its icons are gone, and every window is told.
  void Recreate();

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  void Run(HANDLE ready);
  BOOL Receive(const COPYDATASTRUCT& data);

  mutable std::mutex mutex_;
  std::vector<NotifyCall> calls_;
  std::set<std::pair<HWND, UINT>> icons_;
  bool refusing_ = false;
  HWND window_ = nullptr;
  std::thread thread_;
};

}  // namespace e2e
