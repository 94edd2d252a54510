#include "ui/message_box.h"

#include <gtest/gtest.h>

#include <atomic>
#include <optional>

#include "tests/ui/window_driver.h"
#include "ui/message_box_model.h"

namespace {

constexpr wchar_t kCaption[] = L"Confirm Remove";

/// A box on a thread of its own, owned by a window of that thread, and what its caller sees of its end.
class MessageBoxTest : public testing::Test {
 protected:
  void Open(UINT style) {
    quit_ = -1;
    thread_.emplace([this, style] {
      owner_ = ::CreateWindowExW(0, L"STATIC", L"owner", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 300, 200, 500, 400, nullptr, nullptr,
                                 nullptr, nullptr);
      result_ = XMessageBox(owner_, L"Remove the selected rule?", kCaption, style);
      ownerEnabled_ = ::IsWindowEnabled(owner_) != FALSE;
      MSG message{};
      if (::PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE)) quit_ = static_cast<int>(message.wParam);
      ::DestroyWindow(owner_);
    });
    box_ = thread_->WaitForDialog(kCaption);
    ASSERT_TRUE(WaitUntil([this] { return ::IsChild(box_, FocusOf(box_)) != FALSE; })) << "no box opened";
  }
  int Result() {
    EXPECT_TRUE(thread_->WaitForEnd());
    return result_;
  }

  std::optional<WindowThread> thread_;
  HWND box_ = nullptr;
  std::atomic<HWND> owner_ = nullptr;
  std::atomic<int> result_ = -2;
  std::atomic<bool> ownerEnabled_ = false;
  std::atomic<int> quit_ = -1;  ///< the exit code of a quit that reached the caller's own loop
};

TEST_F(MessageBoxTest, EscapeAndCloseBoxFollowTheSet) {
  for (UINT style = 0; style <= 10; ++style) {
    for (const bool byKey : {true, false}) {
      SCOPED_TRACE(testing::Message() << "style " << style << (byKey ? ", key" : ", close box"));
      const MessageBoxButtons& buttons = ButtonsOfStyle(style);
      Open(style);
      const UINT closeItem = ::GetMenuState(::GetSystemMenu(box_, FALSE), SC_CLOSE, MF_BYCOMMAND);
      EXPECT_EQ((closeItem & (MF_GRAYED | MF_DISABLED)) != 0, buttons.escapeResult == 0);
      // Where neither may close the box the click that follows is what ends it.
      ::PostMessageW(byKey ? FocusOf(box_) : box_, byKey ? WM_KEYDOWN : WM_CLOSE, byKey ? VK_ESCAPE : 0, 0);
      const int first = buttons.buttons[0].id;
      if (buttons.escapeResult == 0) PostCommand(box_, first);
      EXPECT_EQ(Result(), buttons.escapeResult != 0 ? buttons.escapeResult : first);
    }
  }
}

TEST_F(MessageBoxTest, FocusAndFrameAreOnTheDefaultButton) {
  const struct {
    UINT style;
    int expected;
  } cases[] = {{MB_YESNO | MB_ICONEXCLAMATION | MB_DEFBUTTON2, IDNO},
               {MB_YESNOCANCEL, IDYES},
               {MB_YESNOCANCEL | MB_DEFBUTTON3, IDCANCEL},
               {MB_OK | MB_DEFBUTTON3, IDOK}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.style);
    Open(c.style);
    EXPECT_TRUE(WaitUntil([this] { return !::IsWindowEnabled(owner_); }));
    EXPECT_EQ(::GetDlgCtrlID(FocusOf(box_)), c.expected);
    for (const MessageBoxButton& button : ButtonsOfStyle(c.style).buttons) {
      const auto type = ::GetWindowLongPtrW(::GetDlgItem(box_, button.id), GWL_STYLE) & BS_TYPEMASK;
      EXPECT_EQ(type, button.id == c.expected ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON) << button.id;
    }
    ::PostMessageW(FocusOf(box_), WM_KEYDOWN, VK_RETURN, 0);
    EXPECT_EQ(Result(), c.expected);
    EXPECT_TRUE(ownerEnabled_);
    EXPECT_EQ(quit_, -1);
  }
}

TEST_F(MessageBoxTest, EndsWithoutAnAnswerByAQuitOrWithItsOwner) {
  Open(MB_YESNO);
  ::PostThreadMessageW(::GetWindowThreadProcessId(box_, nullptr), WM_QUIT, 7, 0);
  EXPECT_EQ(Result(), IDCANCEL);
  EXPECT_EQ(quit_, 7) << "the caller's own loop has to end too";
  EXPECT_TRUE(ownerEnabled_);

  Open(MB_YESNO);
  ::PostMessageW(owner_, WM_CLOSE, 0, 0);
  EXPECT_EQ(Result(), IDCANCEL);
}

}  // namespace
