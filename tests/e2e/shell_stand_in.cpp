#include "tests/e2e/shell_stand_in.h"

#include <shellapi.h>

#include <algorithm>
#include <cstring>

#include "platform/handles.h"

namespace e2e {

namespace {

constexpr wchar_t kTaskbarClass[] = L"Shell_TrayWnd";

/// The head of what Wine's shell library sends; the icon's pixels follow.
struct NotifyData {
  std::uint32_t window;
  std::uint32_t id;
  std::uint32_t flags;
  std::uint32_t callback;
  wchar_t tip[128];
  std::uint32_t state;
  std::uint32_t stateMask;
  wchar_t info[256];
  std::uint32_t timeoutMs;
  wchar_t infoTitle[64];
  std::uint32_t infoFlags;
  GUID guid;
  std::int32_t iconWidth;
  std::int32_t iconHeight;
};

NotifyCall ToCall(DWORD message, const NotifyData& data) {
  NotifyCall call;
  call.message = message;
  call.window = static_cast<HWND>(ULongToHandle(data.window));
  call.id = data.id;
  call.flags = data.flags;
  call.callback = data.callback;
  call.tip.assign(data.tip, ::wcsnlen(data.tip, std::size(data.tip)));
  call.info.assign(data.info, ::wcsnlen(data.info, std::size(data.info)));
  call.infoTitle.assign(data.infoTitle, ::wcsnlen(data.infoTitle, std::size(data.infoTitle)));
  call.infoFlags = data.infoFlags;
  call.timeoutMs = data.timeoutMs;
  call.icon = {data.iconWidth, data.iconHeight};
  return call;
}

}  // namespace

bool NotifyCall::IsBalloon() const { return message == NIM_MODIFY && (flags & NIF_INFO) != 0; }

ShellStandIn::ShellStandIn() {
  const UniqueHandle ready(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
  thread_ = std::thread([this, event = ready.get()] { Run(event); });
  ::WaitForSingleObject(ready.get(), kPatienceMs);
}

ShellStandIn::~ShellStandIn() {
  ::PostMessageW(window_, WM_CLOSE, 0, 0);
  thread_.join();
}

void ShellStandIn::Run(HANDLE ready) {
  WNDCLASSW description{};
  description.lpfnWndProc = &ShellStandIn::Procedure;
  description.hInstance = ::GetModuleHandleW(nullptr);
  description.lpszClassName = kTaskbarClass;
  ::RegisterClassW(&description);
  window_ = ::CreateWindowExW(WS_EX_TOOLWINDOW | WS_EX_TOPMOST, kTaskbarClass, L"", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr,
                              description.hInstance, nullptr);
  ::SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
  ::SetEvent(ready);
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

BOOL ShellStandIn::Receive(const COPYDATASTRUCT& data) {
  NotifyData notify{};
  if (data.cbData < sizeof(notify)) return FALSE;
  std::memcpy(&notify, data.lpData, sizeof(notify));
  NotifyCall call = ToCall(static_cast<DWORD>(data.dwData), notify);
  const std::pair icon(call.window, call.id);
  std::lock_guard lock(mutex_);
  if (!refusing_) {
    switch (call.message) {
      case NIM_ADD:
        call.accepted = icons_.insert(icon).second;
        break;
      case NIM_MODIFY:
        call.accepted = icons_.contains(icon);
        break;
      case NIM_DELETE:
        call.accepted = icons_.erase(icon) != 0;
        break;
      default:
        break;
    }
  }
  calls_.push_back(call);
  return call.accepted;
}

bool ShellStandIn::IsInPlace() const { return window_ != nullptr && ::FindWindowW(kTaskbarClass, nullptr) == window_; }

std::vector<NotifyCall> ShellStandIn::Calls() const {
  std::lock_guard lock(mutex_);
  return calls_;
}

std::size_t ShellStandIn::Count(DWORD message) const {
  const auto calls = Calls();
  return static_cast<std::size_t>(
      std::count_if(calls.begin(), calls.end(), [message](const NotifyCall& call) { return call.message == message; }));
}

std::vector<NotifyCall> ShellStandIn::Balloons() const {
  auto calls = Calls();
  std::erase_if(calls, [](const NotifyCall& call) { return !call.IsBalloon(); });
  return calls;
}

std::optional<NotifyCall> ShellStandIn::WaitForBalloon(std::size_t index, DWORD timeoutMs) const {
  if (!WaitUntil([&] { return Balloons().size() > index; }, timeoutMs)) return std::nullopt;
  return Balloons()[index];
}

std::size_t ShellStandIn::IconCount() const {
  std::lock_guard lock(mutex_);
  return icons_.size();
}

void ShellStandIn::SetRefusing(bool refusing) {
  std::lock_guard lock(mutex_);
  refusing_ = refusing;
}

void ShellStandIn::Recreate() {
  {
    std::lock_guard lock(mutex_);
    icons_.clear();
  }
  ::SendNotifyMessageW(HWND_BROADCAST, ::RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);
}

}  // namespace e2e
