#pragma once

// Stands in for the taskbar: a window of the class that the shell's notification calls look up, which receives what the program
// tells the shell about its icon. Keeps the icons as a taskbar does, records every call, and can refuse, forget, and announce
// itself. Reads the form in which Wine's shell library sends the calls.

#include <windows.h>

#include <shellapi.h>

#include <atomic>
#include <cstring>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/handles.h"
#include "tests/support/wait.h"

namespace e2e {

/// The head of what Wine's shell library sends; the icon's pixels follow. Texts are those of the call whether or not its flags
/// name them.
struct NotifyData {
  std::uint32_t window;
  UINT id;
  UINT flags;
  UINT callback;
  wchar_t tip[128];
  UINT state;
  UINT stateMask;
  wchar_t info[256];
  UINT timeoutMs;
  wchar_t infoTitle[64];
  UINT infoFlags;
  GUID guid;
  std::int32_t iconWidth;
  std::int32_t iconHeight;
};

/// One call about an icon: NIM_ADD, NIM_MODIFY or NIM_DELETE.
struct NotifyCall : NotifyData {
  DWORD message;

  [[nodiscard]] HWND Window() const { return static_cast<HWND>(ULongToHandle(window)); }
  /// A balloon's title and, below it, its text.
  [[nodiscard]] std::wstring Balloon() const { return infoTitle + (L"\n" + std::wstring(info)); }
};

class ShellStandIn {
 public:
  ShellStandIn() { ::WaitForSingleObject(ready_.get(), kPatienceMs); }
  ~ShellStandIn() {
    ::PostMessageW(window_, WM_CLOSE, 0, 0);
    thread_.join();
  }
  ShellStandIn(const ShellStandIn&) = delete;
  ShellStandIn& operator=(const ShellStandIn&) = delete;

  /// Whether the shell's calls come here.
  [[nodiscard]] bool IsInPlace() const { return ::FindWindowW(kTaskbarClass, nullptr) == window_; }

  /// The calls of the kind so far, oldest first.
  [[nodiscard]] std::vector<NotifyCall> Calls(DWORD message) const {
    std::lock_guard lock(mutex_);
    auto calls = calls_;
    std::erase_if(calls, [message](const NotifyCall& call) { return call.message != message; });
    return calls;
  }
  [[nodiscard]] std::vector<NotifyCall> Balloons() const {
    auto calls = Calls(NIM_MODIFY);
    std::erase_if(calls, [](const NotifyCall& call) { return (call.flags & NIF_INFO) == 0; });
    return calls;
  }
  /// The n-th balloon, counted from 0, once it has come; empty when it does not.
  [[nodiscard]] std::wstring WaitForBalloon(std::size_t index) const {
    return WaitUntil([&] { return Balloons().size() > index; }) ? Balloons()[index].Balloon() : L"";
  }
  /// Icons shown at the moment.
  [[nodiscard]] std::size_t IconCount() const {
    std::lock_guard lock(mutex_);
    return icons_.size();
  }

  /// While it holds, every call is refused, as when there is no taskbar.
  std::atomic<bool> refusing{false};
  /// The taskbar starts anew: its icons are gone, and every window is told.
  void Recreate() {
    {
      std::lock_guard lock(mutex_);
      icons_.clear();
    }
    ::SendNotifyMessageW(HWND_BROADCAST, ::RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);
  }

 private:
  static constexpr wchar_t kTaskbarClass[] = L"Shell_TrayWnd";

  void Run() {
    WNDCLASSW description{};
    description.lpfnWndProc = &ShellStandIn::Procedure;
    description.lpszClassName = kTaskbarClass;
    ::RegisterClassW(&description);
    window_ = ::CreateWindowExW(WS_EX_TOOLWINDOW | WS_EX_TOPMOST, kTaskbarClass, L"", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr,
                                nullptr, nullptr);
    ::SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    ::SetEvent(ready_.get());
    MSG message{};
    while (::GetMessageW(&message, nullptr, 0, 0) > 0) ::DispatchMessageW(&message);
  }
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* self = reinterpret_cast<ShellStandIn*>(::GetWindowLongPtrW(window, GWLP_USERDATA));
    if (message == WM_COPYDATA && self != nullptr) return self->Receive(*reinterpret_cast<const COPYDATASTRUCT*>(lParam));
    if (message == WM_DESTROY) ::PostQuitMessage(0);
    return ::DefWindowProcW(window, message, wParam, lParam);
  }
  bool Receive(const COPYDATASTRUCT& data) {
    if (data.cbData < sizeof(NotifyData)) return false;
    NotifyCall call{};
    std::memcpy(static_cast<NotifyData*>(&call), data.lpData, sizeof(NotifyData));
    call.message = static_cast<DWORD>(data.dwData);
    std::lock_guard lock(mutex_);
    calls_.push_back(call);
    return !refusing && Accepts(call.message, {call.Window(), call.id});
  }
  bool Accepts(DWORD message, const std::pair<HWND, UINT>& icon) {
    if (message == NIM_ADD) return icons_.insert(icon).second;
    return message == NIM_DELETE ? icons_.erase(icon) != 0 : icons_.contains(icon);
  }

  mutable std::mutex mutex_;
  std::vector<NotifyCall> calls_;
  std::set<std::pair<HWND, UINT>> icons_;
  HWND window_ = nullptr;
  const UniqueHandle ready_{::CreateEventW(nullptr, TRUE, FALSE, nullptr)};
  std::thread thread_{[this] { Run(); }};
};

}  // namespace e2e
