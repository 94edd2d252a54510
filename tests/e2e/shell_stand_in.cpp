#include "tests/e2e/shell_stand_in.h"

#include <shellapi.h>

#include <cstring>

namespace e2e {

constexpr wchar_t kTaskbarClass[] = L"Shell_TrayWnd";

ShellStandIn::ShellStandIn() { ::WaitForSingleObject(ready_.get(), kPatienceMs); }

ShellStandIn::~ShellStandIn() {
  ::PostMessageW(window_, WM_CLOSE, 0, 0);
  thread_.join();
}

void ShellStandIn::Run() {
  WNDCLASSW description{};
  description.lpfnWndProc = &ShellStandIn::Procedure;
  description.hInstance = ::GetModuleHandleW(nullptr);
  description.lpszClassName = kTaskbarClass;
  ::RegisterClassW(&description);
  window_ = ::CreateWindowExW(WS_EX_TOOLWINDOW | WS_EX_TOPMOST, kTaskbarClass, L"", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr,
                              description.hInstance, nullptr);
  ::SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
  ::SetEvent(ready_.get());
  MSG message{};
  while (::GetMessageW(&message, nullptr, 0, 0) > 0) ::DispatchMessageW(&message);
  ::UnregisterClassW(kTaskbarClass, description.hInstance);
}

LRESULT CALLBACK ShellStandIn::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  auto* self = reinterpret_cast<ShellStandIn*>(::GetWindowLongPtrW(window, GWLP_USERDATA));
  if (message == WM_COPYDATA && self != nullptr) return self->Receive(*reinterpret_cast<const COPYDATASTRUCT*>(lParam));
  if (message == WM_DESTROY) ::PostQuitMessage(0);
  return ::DefWindowProcW(window, message, wParam, lParam);
}

bool ShellStandIn::Accept(const NotifyCall& call) {
  const std::pair icon(call.Window(), call.id);
  if (refusing) return false;
  if (call.message == NIM_ADD) return icons_.insert(icon).second;
  return call.message == NIM_DELETE ? icons_.erase(icon) != 0 : icons_.contains(icon);
}

bool ShellStandIn::Receive(const COPYDATASTRUCT& data) {
  if (data.cbData < sizeof(NotifyData)) return false;
  NotifyCall call{};
  std::memcpy(static_cast<NotifyData*>(&call), data.lpData, sizeof(NotifyData));
  call.message = static_cast<DWORD>(data.dwData);
  std::lock_guard lock(mutex_);
  call.accepted = Accept(call);
  calls_.push_back(call);
  return call.accepted;
}

bool ShellStandIn::IsInPlace() const { return ::FindWindowW(kTaskbarClass, nullptr) == window_; }

std::vector<NotifyCall> ShellStandIn::Calls(DWORD message) const {
  std::lock_guard lock(mutex_);
  auto calls = calls_;
  std::erase_if(calls, [message](const NotifyCall& call) { return call.message != message; });
  return calls;
}

std::vector<NotifyCall> ShellStandIn::Balloons() const {
  auto calls = Calls(NIM_MODIFY);
  std::erase_if(calls, [](const NotifyCall& call) { return (call.flags & NIF_INFO) == 0; });
  return calls;
}

std::optional<NotifyCall> ShellStandIn::WaitForBalloon(std::size_t index) const {
  if (!WaitUntil([&] { return Balloons().size() > index; })) return std::nullopt;
  return Balloons()[index];
}

std::size_t ShellStandIn::IconCount() const {
  std::lock_guard lock(mutex_);
  return icons_.size();
}

void ShellStandIn::Recreate() {
  {
    std::lock_guard lock(mutex_);
    icons_.clear();
  }
  ::SendNotifyMessageW(HWND_BROADCAST, ::RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);
}

}  // namespace e2e
