#include "ui/message_box.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>

#include "platform/handles.h"
#include "res/resource.h"
#include "tests/ui/leak_counter.h"
#include "ui/dialog_utilities.h"
#include "ui/message_box_model.h"

namespace {

constexpr wchar_t kThemeKey[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize";

/// What the user has chosen for applications, put back at the end. 1 light, 0 dark, -1 no choice.
class ThemeChoice {
 public:
  explicit ThemeChoice(int light) {
    DWORD size = sizeof(before_);
    had_ = ::RegGetValueW(HKEY_CURRENT_USER, kThemeKey, kName, RRF_RT_REG_DWORD, nullptr, &before_, &size) == ERROR_SUCCESS;
    if (light < 0) {
      ::RegDeleteKeyValueW(HKEY_CURRENT_USER, kThemeKey, kName);
    } else {
      Write(static_cast<DWORD>(light));
    }
  }
  ~ThemeChoice() {
    if (had_) {
      Write(before_);
    } else {
      ::RegDeleteKeyValueW(HKEY_CURRENT_USER, kThemeKey, kName);
    }
  }
  ThemeChoice(const ThemeChoice&) = delete;
  ThemeChoice& operator=(const ThemeChoice&) = delete;

 private:
  static constexpr const wchar_t* kName = L"AppsUseLightTheme";
  static void Write(DWORD value) { ::RegSetKeyValueW(HKEY_CURRENT_USER, kThemeKey, kName, REG_DWORD, &value, sizeof(value)); }
  DWORD before_ = 0;
  bool had_ = false;
};

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
  explicit OpenBox(UINT style, const wchar_t* text = L"Remove the selected rule?", const wchar_t* caption = L"Confirm Remove")
      : thread_([this, style, text, caption] { Run(style, text, caption); }) {
    const wchar_t* title = caption != nullptr ? caption : L"Error";
    EXPECT_TRUE(WaitFor([&] { return owner_ != nullptr && Find(title) && FocusedControl() != nullptr; })) << "no box opened";
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
  void Run(UINT style, const wchar_t* text, const wchar_t* caption) {
    threadId_ = ::GetCurrentThreadId();
    HWND owner = ::CreateWindowExW(0, L"STATIC", L"owner", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 300, 200, 500, 400, nullptr, nullptr,
                                   nullptr, nullptr);
    owner_ = owner;
    result_ = XMessageBox(owner, text, caption, style);
    ownerEnabledAfterwards_ = ::IsWindowEnabled(owner) != FALSE;
    MSG message{};
    if (::PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE)) quitSeen_ = static_cast<int>(message.wParam);
    if (::IsWindow(owner)) ::DestroyWindow(owner);
  }
  bool Find(const wchar_t* title) {
    window_ = ::FindWindowW(L"#32770", title);
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

std::wstring TextOf(HWND window) {
  wchar_t text[256];
  return std::wstring(text, static_cast<std::size_t>(::GetWindowTextW(window, text, static_cast<int>(std::size(text)))));
}

TEST(MessageBoxWindow, EveryButtonGivesItsIdAndFreesTheOwner) {
  for (UINT style = 0; style <= 10; ++style) {
    for (const MessageBoxButton& button : ButtonsOfStyle(style).buttons) {
      SCOPED_TRACE(testing::Message() << "style " << style << ", button " << button.id);
      OpenBox box(style | MB_ICONQUESTION);
      EXPECT_EQ(TextOf(box.Item(button.id)), button.label->text);
      EXPECT_FALSE(::IsWindowEnabled(box.Owner()));
      box.Click(button.id);
      EXPECT_EQ(box.Result(), button.id);
      EXPECT_TRUE(box.OwnerEnabledAfterwards());
      EXPECT_EQ(box.QuitSeenByCaller(), -1);
    }
  }
}

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
    EXPECT_EQ(::GetDlgCtrlID(box.FocusedControl()), test.expected);
    for (const MessageBoxButton& button : ButtonsOfStyle(test.style).buttons) {
      const auto type = static_cast<int>(::GetWindowLongPtrW(box.Item(button.id), GWL_STYLE) & BS_TYPEMASK);
      EXPECT_EQ(type, button.id == test.expected ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON) << button.id;
    }
    ::PostMessageW(box.FocusedControl(), WM_KEYDOWN, VK_RETURN, 0);
    EXPECT_EQ(box.Result(), test.expected);
  }
}

TEST(MessageBoxWindow, TextsComeFromResourcesToo) {
  OpenBox box(MB_OK, MAKEINTRESOURCEW(IDS_ASK_REMOVE_ONE), nullptr);
  EXPECT_EQ(TextOf(box.Item(kMessageBoxTextId)), LoadResString(IDS_ASK_REMOVE_ONE));
  EXPECT_FALSE(TextOf(box.Item(kMessageBoxTextId)).empty());
  box.Click(IDOK);
}

TEST(MessageBoxWindow, StandsOverTheMiddleOfItsOwner) {
  OpenBox box(MB_OK | MB_ICONERROR);
  RECT owner{};
  RECT window{};
  ::GetWindowRect(box.Owner(), &owner);
  ::GetWindowRect(box.Window(), &window);
  EXPECT_NEAR(window.left + window.right, owner.left + owner.right, 2);
  EXPECT_NEAR(window.top + window.bottom, owner.top + owner.bottom, 2);
  box.Click(IDOK);
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

struct Colors {
  COLORREF panel;
  COLORREF strip;
  COLORREF text;
  COLORREF textBackground;
};

Colors ColorsOf(const OpenBox& box) {
  ::RedrawWindow(box.Window(), nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW | RDW_ALLCHILDREN);
  RECT client{};
  ::GetClientRect(box.Window(), &client);
  const WindowDc dc(box.Window());
  Colors colors{::GetPixel(dc.Get(), 3, 3), ::GetPixel(dc.Get(), 3, client.bottom - 3), 0, 0};
  HDC memory = ::CreateCompatibleDC(dc.Get());
  ::SendMessageW(box.Window(), WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(memory),
                 reinterpret_cast<LPARAM>(box.Item(kMessageBoxTextId)));
  colors.text = ::GetTextColor(memory);
  colors.textBackground = ::GetBkColor(memory);
  ::DeleteDC(memory);
  return colors;
}

TEST(MessageBoxWindow, FollowsTheUsersTheme) {
  for (const int choice : {0, 1, -1}) {
    SCOPED_TRACE(choice);
    const ThemeChoice theme(choice);
    OpenBox box(MB_YESNO | MB_ICONEXCLAMATION);
    const Colors colors = ColorsOf(box);
    const bool dark = choice == 0;
    EXPECT_EQ(colors.panel, dark ? RGB(32, 32, 32) : ::GetSysColor(COLOR_WINDOW));
    EXPECT_EQ(colors.strip, dark ? RGB(32, 32, 32) : ::GetSysColor(COLOR_3DFACE));
    EXPECT_EQ(colors.text, dark ? RGB(220, 220, 220) : ::GetSysColor(COLOR_WINDOWTEXT));
    EXPECT_EQ(colors.textBackground, dark ? RGB(32, 32, 32) : ::GetSysColor(COLOR_WINDOW));
    box.Click(IDNO);
  }
}

void CALLBACK ClickNo(HWND, UINT, UINT_PTR timer, DWORD) {
  HWND box = ::FindWindowW(L"#32770", L"Leak");
  if (box == nullptr) return;
  ::KillTimer(nullptr, timer);
  ::PostMessageW(box, WM_COMMAND, IDNO, 0);
}

TEST(MessageBoxWindow, GivesEverythingBack) {
  for (const int choice : {1, 0}) {
    const ThemeChoice theme(choice);
    const LeakCount growth = GrowthOver(choice == 1 ? 200 : 50, [] {
      ::SetTimer(nullptr, 0, 1, &ClickNo);
      EXPECT_EQ(XMessageBox(nullptr, L"Remove?", L"Leak", MB_YESNO | MB_ICONQUESTION), IDNO);
    });
    EXPECT_EQ(growth, LeakCount{}) << (choice == 0 ? "dark" : "light");
  }
}

}  // namespace
