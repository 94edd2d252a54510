#include "tests/e2e/stand_in_window.h"

#include "platform/handles.h"
#include "tests/e2e/wait.h"

namespace e2e {

StandInWindow::StandInWindow(std::wstring windowClass, std::wstring title, UINT message, Manner manner)
    : windowClass_(std::move(windowClass)), title_(std::move(title)), message_(message), manner_(manner) {
  const UniqueHandle ready(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
  thread_ = std::thread([this, event = ready.get()] { Run(event); });
  ::WaitForSingleObject(ready.get(), kPatienceMs);
}

StandInWindow::~StandInWindow() {
  ::PostMessageW(window_, WM_CLOSE, 0, 0);
  thread_.join();
}

void StandInWindow::Run(HANDLE ready) {
  WNDCLASSW description{};
  description.lpfnWndProc = &StandInWindow::Procedure;
  description.hInstance = ::GetModuleHandleW(nullptr);
  description.lpszClassName = windowClass_.c_str();
  ::RegisterClassW(&description);
  window_ = ::CreateWindowExW(0, windowClass_.c_str(), title_.c_str(), WS_OVERLAPPEDWINDOW, 0, 0, 0, 0, nullptr, nullptr,
                              description.hInstance, nullptr);
  ::SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
  ::SetEvent(ready);
  MSG message{};
  while (::GetMessageW(&message, nullptr, 0, 0) > 0) ::DispatchMessageW(&message);
  ::UnregisterClassW(windowClass_.c_str(), description.hInstance);
}

LRESULT CALLBACK StandInWindow::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  auto* self = reinterpret_cast<StandInWindow*>(::GetWindowLongPtrW(window, GWLP_USERDATA));
  if (self != nullptr && message == self->message_) {
    ++self->asked_;
    if (self->manner_ == Manner::kCloses) ::DestroyWindow(window);
    return 0;
  }
  if (message == WM_DESTROY) ::PostQuitMessage(0);
  return ::DefWindowProcW(window, message, wParam, lParam);
}

}  // namespace e2e
