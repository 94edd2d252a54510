#pragma once

// Stands in for the taskbar: a window of the class that the shell's notification calls look up, which receives what the program
// tells the shell about its icon. Keeps the icons as a taskbar does, records every call, and can refuse, forget, and announce
// itself. Reads the form in which Wine's shell library sends the calls.

#include <gtest/gtest.h>
#include <windows.h>

#include <atomic>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/handles.h"
#include "tests/e2e/wait.h"

namespace e2e {

/// A text of limited length as it lies in a call.
template <std::size_t kUnits>
struct CallText {
  wchar_t units[kUnits];

  operator std::wstring() const { return {units, ::wcsnlen(units, kUnits)}; }
  friend bool operator==(const CallText& text, const std::wstring& other) { return std::wstring(text) == other; }
  friend void PrintTo(const CallText& text, std::ostream* out) { *out << testing::PrintToString(std::wstring(text)); }
};

/// The head of what Wine's shell library sends; the icon's pixels follow. Texts are those of the call whether or not its flags
/// name them.
struct NotifyData {
  std::uint32_t window;
  UINT id;
  UINT flags;
  UINT callback;
  CallText<128> tip;
  UINT state;
  UINT stateMask;
  CallText<256> info;
  UINT timeoutMs;
  CallText<64> infoTitle;
  UINT infoFlags;
  GUID guid;
  std::int32_t iconWidth;
  std::int32_t iconHeight;
};

/// One call about an icon.
struct NotifyCall : NotifyData {
  DWORD message;  ///< NIM_ADD, NIM_MODIFY, NIM_DELETE
  bool accepted;

  [[nodiscard]] HWND Window() const { return static_cast<HWND>(ULongToHandle(window)); }
};

class ShellStandIn {
 public:
  ShellStandIn();
  ~ShellStandIn();
  ShellStandIn(const ShellStandIn&) = delete;
  ShellStandIn& operator=(const ShellStandIn&) = delete;

  /// Whether the shell's calls come here.
  [[nodiscard]] bool IsInPlace() const;

  /// The calls of the kind so far, oldest first.
  [[nodiscard]] std::vector<NotifyCall> Calls(DWORD message) const;
  [[nodiscard]] std::vector<NotifyCall> Balloons() const;
  /// The n-th balloon, counted from 0, once it has come.
  [[nodiscard]] std::optional<NotifyCall> WaitForBalloon(std::size_t index) const;
  /// Icons shown at the moment.
  [[nodiscard]] std::size_t IconCount() const;

  /// While it holds, every call is refused, as when there is no taskbar.
  std::atomic<bool> refusing{false};
  /// The taskbar starts anew: its icons are gone, and every window is told.
  void Recreate();

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  void Run();
  bool Receive(const COPYDATASTRUCT& data);
  bool Accept(const NotifyCall& call);

  mutable std::mutex mutex_;
  std::vector<NotifyCall> calls_;
  std::set<std::pair<HWND, UINT>> icons_;
  HWND window_ = nullptr;
  const UniqueHandle ready_{::CreateEventW(nullptr, TRUE, FALSE, nullptr)};
  std::thread thread_{[this] { Run(); }};
};

}  // namespace e2e
