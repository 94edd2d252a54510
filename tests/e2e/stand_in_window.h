#pragma once

// A hidden top-level window on a thread of its own, found by its class and title before others of theirs.

#include <windows.h>

#include <functional>
#include <optional>
#include <thread>

#include "platform/handles.h"

namespace e2e {

class StandInWindow {
 public:
  /// What the window answers to a message, asked on its thread; an empty one leaves the message to the system.
  using Answer = std::function<std::optional<LRESULT>(HWND window, UINT message, LPARAM lParam)>;

  StandInWindow(const wchar_t* windowClass, const wchar_t* title, Answer answer)
      : class_(windowClass), title_(title), answer_(std::move(answer)), thread_([this] { Run(); }) {
    ::WaitForSingleObject(ready_.get(), INFINITE);
  }
  ~StandInWindow() {
    ::PostMessageW(window_, WM_CLOSE, 0, 0);
    thread_.join();
  }
  StandInWindow(const StandInWindow&) = delete;
  StandInWindow& operator=(const StandInWindow&) = delete;

  [[nodiscard]] HWND Window() const { return window_; }

 private:
  void Run() {
    WNDCLASSW description{};
    description.lpfnWndProc = &StandInWindow::Procedure;
    description.hInstance = ::GetModuleHandleW(nullptr);
    description.lpszClassName = class_;
    ::RegisterClassW(&description);
    window_ = ::CreateWindowExW(WS_EX_TOOLWINDOW | WS_EX_TOPMOST, class_, title_, WS_POPUP, 0, 0, 0, 0, nullptr, nullptr,
                                description.hInstance, nullptr);
    ::SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    ::SetEvent(ready_.get());
    MSG message{};
    while (::GetMessageW(&message, nullptr, 0, 0) > 0) ::DispatchMessageW(&message);
    ::UnregisterClassW(class_, description.hInstance);
  }
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    const auto* self = reinterpret_cast<const StandInWindow*>(::GetWindowLongPtrW(window, GWLP_USERDATA));
    if (message == WM_DESTROY) ::PostQuitMessage(0);
    const auto answer = self != nullptr ? self->answer_(window, message, lParam) : std::nullopt;
    return answer ? *answer : ::DefWindowProcW(window, message, wParam, lParam);
  }

  const wchar_t* class_;
  const wchar_t* title_;
  const Answer answer_;
  HWND window_ = nullptr;
  const UniqueHandle ready_{::CreateEventW(nullptr, TRUE, FALSE, nullptr)};
  std::thread thread_;
};

}  // namespace e2e
