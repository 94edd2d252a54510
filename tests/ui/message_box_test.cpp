#include "ui/message_box.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>

#include "platform/handles.h"
#include "tests/ui/leak_counter.h"
#include "ui/message_box_model.h"

namespace {

constexpr wchar_t kCaption[] = L"Confirm Remove";

bool WaitFor(const std::function<bool()>& condition) {
  for (int i = 0; i < 1000; ++i) {
    if (condition()) return true;
    ::Sleep(5);
  }
  return false;
}

/// A box on a thread of its own, owned by a window of that thread, open and with its focus set once this is constructed.
class OpenBox {
 public:
  explicit OpenBox(UINT style) : thread_([this, style] { Run(style); }) {
    EXPECT_TRUE(WaitFor([&] { return owner_ != nullptr && Find() && FocusedControl() != nullptr; })) << "no box opened";
  }
  ~OpenBox() { Result(); }
  OpenBox(const OpenBox&) = delete;
  OpenBox& operator=(const OpenBox&) = delete;

  [[nodiscard]] HWND Window() const { return window_; }
  [[nodiscard]] HWND Owner() const { return owner_; }
  [[nodiscard]] DWORD ThreadId() const { return threadId_; }
  [[nodiscard]] bool OwnerEnabledAfterwards() const { return ownerEnabledAfterwards_; }
  /// The exit code of a quit that reached the caller's own loop; -1 when none did.
  [[nodiscard]] int QuitSeenByCaller() const { return quitSeen_; }
  [[nodiscard]] HWND Item(int id) const { return ::GetDlgItem(window_, id); }
  [[nodiscard]] HWND FocusedControl() const {
    GUITHREADINFO info{};
    info.cbSize = sizeof(info);
    return ::GetGUIThreadInfo(threadId_, &info) && ::IsChild(window_, info.hwndFocus) ? info.hwndFocus : nullptr;
  }
  void Click(int id) const { ::SendMessageW(Item(id), BM_CLICK, 0, 0); }
  void PressEscape() const { ::PostMessageW(FocusedControl(), WM_KEYDOWN, VK_ESCAPE, 0); }
  /// Waits for the end.
  int Result() {
    if (thread_.joinable()) thread_.join();
    return result_;
  }

 private:
  void Run(UINT style) {
    threadId_ = ::GetCurrentThreadId();
    HWND owner = ::CreateWindowExW(0, L"STATIC", L"owner", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 300, 200, 500, 400, nullptr, nullptr,
                                   nullptr, nullptr);
    owner_ = owner;
    result_ = XMessageBox(owner, L"Remove the selected rule?", kCaption, style);
    ownerEnabledAfterwards_ = ::IsWindowEnabled(owner) != FALSE;
    MSG message{};
    if (::PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE)) quitSeen_ = static_cast<int>(message.wParam);
    if (::IsWindow(owner)) ::DestroyWindow(owner);
  }
  bool Find() {
    window_ = ::FindWindowW(L"#32770", kCaption);
    return window_ != nullptr && ::GetWindowThreadProcessId(window_, nullptr) == threadId_ && ::IsWindowVisible(window_);
  }

  std::atomic<HWND> owner_{nullptr};
  HWND window_ = nullptr;
  std::atomic<DWORD> threadId_{0};
  std::atomic<int> result_{-2};
  std::atomic<bool> ownerEnabledAfterwards_{false};
  std::atomic<int> quitSeen_{-1};
  std::thread thread_;
};

TEST(MessageBoxWindow, EscapeAndCloseBoxFollowTheSet) {
  for (UINT style = 0; style <= 10; ++style) {
    for (const bool byKey : {true, false}) {
      SCOPED_TRACE(testing::Message() << "style " << style << (byKey ? ", key" : ", close box"));
      const int expected = ButtonsOfStyle(style).escapeResult;
      OpenBox box(style);
      const UINT closeItem = ::GetMenuState(::GetSystemMenu(box.Window(), FALSE), SC_CLOSE, MF_BYCOMMAND);
      EXPECT_EQ((closeItem & (MF_GRAYED | MF_DISABLED)) != 0, expected == 0);
      if (byKey) {
        box.PressEscape();
      } else {
        ::SendMessageW(box.Window(), WM_CLOSE, 0, 0);
      }
      if (expected == 0) {
        ::Sleep(100);
        ASSERT_TRUE(::IsWindow(box.Window())) << "closed without an answer";
        const int first = ButtonsOfStyle(style).buttons[0].id;
        box.Click(first);
        EXPECT_EQ(box.Result(), first);
      } else {
        EXPECT_EQ(box.Result(), expected);
      }
    }
  }
}

TEST(MessageBoxWindow, FocusAndFrameAreOnTheDefaultButton) {
  struct Case {
    UINT style;
    int expected;
  };
  for (const Case& test : {Case{MB_YESNO | MB_ICONEXCLAMATION | MB_DEFBUTTON2, IDNO}, Case{MB_YESNOCANCEL, IDYES},
                           Case{MB_YESNOCANCEL | MB_DEFBUTTON3, IDCANCEL}, Case{MB_OK | MB_DEFBUTTON3, IDOK}}) {
    SCOPED_TRACE(test.style);
    OpenBox box(test.style);
    EXPECT_TRUE(WaitFor([&] { return !::IsWindowEnabled(box.Owner()); }));
    EXPECT_EQ(::GetDlgCtrlID(box.FocusedControl()), test.expected);
    for (const MessageBoxButton& button : ButtonsOfStyle(test.style).buttons) {
      const auto type = static_cast<int>(::GetWindowLongPtrW(box.Item(button.id), GWL_STYLE) & BS_TYPEMASK);
      EXPECT_EQ(type, button.id == test.expected ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON) << button.id;
    }
    ::PostMessageW(box.FocusedControl(), WM_KEYDOWN, VK_RETURN, 0);
    EXPECT_EQ(box.Result(), test.expected);
    EXPECT_TRUE(box.OwnerEnabledAfterwards());
    EXPECT_EQ(box.QuitSeenByCaller(), -1);
  }
}

std::wstring ClipboardText() {
  const ClipboardLock clipboard(nullptr);
  HANDLE data = clipboard.IsOpen() ? ::GetClipboardData(CF_UNICODETEXT) : nullptr;
  const auto* text = data != nullptr ? static_cast<const wchar_t*>(::GlobalLock(data)) : nullptr;
  std::wstring copy = text != nullptr ? text : L"";
  if (text != nullptr) ::GlobalUnlock(data);
  return copy;
}

TEST(MessageBoxWindow, ControlCCopiesTheWholeBox) {
  OpenBox box(MB_YESNO | MB_ICONEXCLAMATION | MB_DEFBUTTON2);
  ASSERT_TRUE(WaitFor([&] { return ::GetForegroundWindow() == box.Window(); }));
  // C alone first: nothing may happen.
  ::keybd_event('C', 0, 0, 0);
  ::keybd_event('C', 0, KEYEVENTF_KEYUP, 0);
  ::keybd_event(VK_CONTROL, 0, 0, 0);
  ::keybd_event('C', 0, 0, 0);
  ::keybd_event('C', 0, KEYEVENTF_KEYUP, 0);
  ::keybd_event(VK_CONTROL, 0, KEYEVENTF_KEYUP, 0);
  const std::wstring line = L"---------------------------\r\n";
  const std::wstring expected =
      line + L"Confirm Remove\r\n" + line + L"Remove the selected rule?\r\n" + line + L"Yes   No   \r\n" + line;
  EXPECT_TRUE(WaitFor([&] { return ClipboardText() == expected; })) << "clipboard does not hold the box's text";
  EXPECT_TRUE(::IsWindow(box.Window()));
  box.Click(IDNO);
  EXPECT_EQ(box.Result(), IDNO);
}

TEST(MessageBoxWindow, QuitEndsTheBoxAndReachesTheCaller) {
  OpenBox box(MB_YESNO);
  ::PostThreadMessageW(box.ThreadId(), WM_QUIT, 7, 0);
  EXPECT_NE(box.Result(), IDYES);
  EXPECT_EQ(box.QuitSeenByCaller(), 7);
  EXPECT_TRUE(box.OwnerEnabledAfterwards());
}

TEST(MessageBoxWindow, EndsWithoutAnAnswerWhenItsOwnerGoes) {
  OpenBox box(MB_YESNO);
  ::PostMessageW(box.Owner(), WM_CLOSE, 0, 0);
  EXPECT_EQ(box.Result(), IDCANCEL);
}

void CALLBACK ClickNo(HWND, UINT, UINT_PTR timer, DWORD) {
  HWND box = ::FindWindowW(L"#32770", L"Leak");
  if (box == nullptr) return;
  ::KillTimer(nullptr, timer);
  ::PostMessageW(box, WM_COMMAND, IDNO, 0);
}

TEST(MessageBoxWindow, GivesEverythingBack) {
  const LeakCount growth = GrowthOver(200, [] {
    ::SetTimer(nullptr, 0, 1, &ClickNo);
    EXPECT_EQ(XMessageBox(nullptr, L"Remove?", L"Leak", MB_YESNO | MB_ICONQUESTION), IDNO);
  });
  EXPECT_EQ(growth, LeakCount{});
}

}  // namespace
