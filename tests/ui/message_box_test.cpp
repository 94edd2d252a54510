#include "ui/message_box/message_box.h"

#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <vector>

#include "platform/handles.h"
#include "tests/support/window_driver.h"
#include "ui/message_box/message_box_model.h"

namespace {

/// A box on a thread of its own, owned by a window of that thread, and what its caller sees of its end.
class MessageBoxTest : public testing::Test {
 protected:
  void Open(UINT style) {
    thread_.emplace([this, style] {
      owner_ = ::CreateWindowExW(0, L"STATIC", L"owner", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 300, 200, 500, 400, nullptr, nullptr,
                                 nullptr, nullptr);
      result_ = XMessageBox(owner_, L"Remove the selected rule?", L"Confirm", style);
      ownerEnabled_ = ::IsWindowEnabled(owner_) != FALSE;
      MSG message{};
      quit_ = ::PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE) ? static_cast<int>(message.wParam) : -1;
      ::DestroyWindow(owner_);
    });
    box_ = thread_->WaitForDialog(L"Confirm");
    ASSERT_TRUE(WaitUntil([this] { return ::IsChild(box_, FocusOf(box_)) && !::IsWindowEnabled(owner_); })) << "no box opened";
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

TEST_F(MessageBoxTest, EnterEscapeAndCloseBoxAnswerAsTheSetSays) {
  enum Way : UINT { kEnter, kEscape, kCloseBox };
  for (UINT style = 0; style <= 10; ++style) {
    for (const Way way : {kEnter, kEscape, kCloseBox}) {
      SCOPED_TRACE(testing::Message() << "style " << style << ", way " << way);
      const auto& [buttons, escapeResult] = ButtonsOfStyle(style);
      const UINT named = (style + way) % 4;  // beyond the last button: the first
      const int defaultId = buttons[named < buttons.size() ? named : 0].id;
      Open(style | named << 8);
      EXPECT_EQ(::GetDlgCtrlID(FocusOf(box_)), defaultId);
      for (const MessageBoxButton& button : buttons) {
        const auto type = ::GetWindowLongPtrW(::GetDlgItem(box_, button.id), GWL_STYLE) & BS_TYPEMASK;
        EXPECT_EQ(type, button.id == defaultId ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON) << button.id;
      }
      const UINT closeItem = ::GetMenuState(::GetSystemMenu(box_, FALSE), SC_CLOSE, MF_BYCOMMAND);
      EXPECT_EQ((closeItem & (MF_GRAYED | MF_DISABLED)) != 0, escapeResult == 0);

      if (way == kCloseBox) {
        ::PostMessageW(box_, WM_CLOSE, 0, 0);
      } else {
        ::PostMessageW(FocusOf(box_), WM_KEYDOWN, way == kEnter ? VK_RETURN : VK_ESCAPE, 0);
      }
      // Where it may not close the box the click that follows does.
      const bool closes = way == kEnter || escapeResult != 0;
      if (!closes) PostCommand(box_, buttons[0].id);
      EXPECT_EQ(Result(), way == kEnter ? defaultId : closes ? escapeResult : buttons[0].id);
      EXPECT_TRUE(ownerEnabled_);
      EXPECT_EQ(quit_, -1);
    }
  }
}

// What it paints, on a screen of the test's own: the message's panel over the buttons', and the set's icon.
TEST_F(MessageBoxTest, PaintsTwoPanelsAndItsIcon) {
  Open(MB_YESNO | MB_ICONEXCLAMATION);
  const WindowDc screen(nullptr);
  RECT client{};
  ::GetClientRect(box_, &client);
  const auto painted = [&](auto paint) {
    const Unique<HDC, ::DeleteDC> dc(::CreateCompatibleDC(screen.Get()));
    const Unique<HBITMAP, ::DeleteObject> bitmap(::CreateCompatibleBitmap(screen.Get(), client.right, client.bottom));
    ::SelectObject(dc.get(), bitmap.get());
    paint(dc.get());
    std::vector<COLORREF> pixels;
    for (int y = 0; y < client.bottom; y += 2) {
      for (int x = 0; x < 40; x += 2) pixels.push_back(::GetPixel(dc.get(), x, y));
    }
    return pixels;
  };
  const auto background = painted([&](HDC dc) { ::SendMessageW(box_, WM_ERASEBKGND, reinterpret_cast<WPARAM>(dc), 0); });
  EXPECT_EQ(background.front(), ::GetSysColor(COLOR_WINDOW));
  EXPECT_EQ(background.back(), ::GetSysColor(COLOR_3DFACE));
  DRAWITEMSTRUCT item{};
  item.rcItem = {0, 0, 40, 40};
  const auto icon = painted([&](HDC dc) {
    item.hDC = dc;
    ::SendMessageW(box_, WM_DRAWITEM, 0, reinterpret_cast<LPARAM>(&item));
  });
  EXPECT_EQ(icon, painted([&](HDC dc) {
              ::FillRect(dc, &item.rcItem, ::GetSysColorBrush(COLOR_WINDOW));
              ::DrawIcon(dc, 0, 0, ::LoadIconW(nullptr, IDI_EXCLAMATION));
            }));
  PostCommand(box_, IDNO);
  EXPECT_EQ(Result(), IDNO);
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
