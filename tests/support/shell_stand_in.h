#pragma once

// Stands in for the taskbar: a window of the class that the shell's notification calls look up, which receives what the program
// tells the shell about its icon, as lines of text. Reads the form in which Wine's shell library sends the calls.

#include <windows.h>

#include <shellapi.h>

#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/wait.h"

namespace e2e {

class ShellStandIn {
 public:
  ShellStandIn() {
    WaitUntil([this] { return window_ != nullptr; });
  }
  ~ShellStandIn() {
    ::PostMessageW(window_, WM_CLOSE, 0, 0);
    thread_.join();
  }
  ShellStandIn(const ShellStandIn&) = delete;

  /// The calls so far, oldest first: "add" with flags, the notification's message, the icon's width and the tip; "delete";
  /// "balloon" with its kind and milliseconds, its title and below that its text.
  [[nodiscard]] std::vector<std::wstring> Calls() const {
    std::lock_guard lock(mutex_);
    return calls_;
  }
  /// While it holds, no icon can be added.
  std::atomic<bool> refusing{false};

 private:
  /// The head of what Wine's shell library sends; the icon's pixels follow. Texts are those of the call whether or not its flags
  /// name them.
  struct NotifyData {
    UINT window;
    UINT id;
    UINT flags;
    UINT callback;
    wchar_t tip[128];
    UINT stateAndMask[2];
    wchar_t info[256];
    UINT timeoutMs;
    wchar_t infoTitle[64];
    UINT infoFlags;
    GUID guid;
    UINT iconWidth;
  };

  void Run() {
    self = this;
    const WNDCLASSW taskbar{0, &ShellStandIn::Procedure, 0, 0, nullptr, nullptr, nullptr, nullptr, nullptr, L"Shell_TrayWnd"};
    ::RegisterClassW(&taskbar);
    window_ = ::CreateWindowW(taskbar.lpszClassName, L"", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
    MSG message{};
    while (::GetMessageW(&message, nullptr, 0, 0) > 0) ::DispatchMessageW(&message);
  }
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_COPYDATA) return self->Receive(*reinterpret_cast<const COPYDATASTRUCT*>(lParam));
    if (message == WM_DESTROY) ::PostQuitMessage(0);
    return ::DefWindowProcW(window, message, wParam, lParam);
  }
  /// The shell's answer: an icon is never there to be changed, so it is always added.
  bool Receive(const COPYDATASTRUCT& sent) {
    const auto& data = *static_cast<const NotifyData*>(sent.lpData);
    std::lock_guard lock(mutex_);
    if (sent.dwData == NIM_ADD && ::IsWindow(static_cast<HWND>(ULongToHandle(data.window)))) {
      calls_.push_back(Line(L"add", {data.flags, data.callback, data.iconWidth}) + data.tip);
      return !refusing;
    }
    if (sent.dwData == NIM_DELETE) {
      calls_.emplace_back(L"delete");
    } else if (data.flags == NIF_INFO) {
      calls_.push_back(Line(L"balloon", {data.infoFlags, data.timeoutMs}) + data.infoTitle + L"\n" + data.info);
    }
    return false;
  }
  static std::wstring Line(std::wstring line, std::initializer_list<UINT> numbers) {
    for (const UINT number : numbers) line += L" " + std::to_wstring(number);
    return line + L" ";
  }

  inline static ShellStandIn* self;
  mutable std::mutex mutex_;
  std::vector<std::wstring> calls_;
  std::atomic<HWND> window_{nullptr};
  std::thread thread_{[this] { Run(); }};
};

}  // namespace e2e
