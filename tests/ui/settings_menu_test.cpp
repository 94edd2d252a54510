#include "ui/main_window/settings_menu.h"

#include <gtest/gtest.h>

#include <thread>

#include "res/resource.h"
#include "tests/support/test_program.h"
#include "tests/support/window_driver.h"
#include "ui/main_window/main_window_frame.h"
#include "ui/main_window/settings_page.h"

namespace {

struct NoMainWindow : MainWindowHost {
  [[nodiscard]] HWND MainWindow() const override { return owner; }
  void RefreshRuleList() override {}
  void EndMainWindow(INT_PTR) override {}

  HWND owner = ::CreateWindowW(L"STATIC", L"", 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
};

// The answer comes while the popup is open: the mark appears in it, and is there at once when it opens again.
TEST(SettingsMenu, ASlowTaskSchedulersAnswerMarksTheOpenPopup) {
  TestProgram own;
  NoMainWindow host;
  SettingsPage page(own.program);
  std::promise<bool> gate;
  const std::shared_future<bool> answer = gate.get_future();
  SettingsMenu menu(own.program, host, page, [answer] { return answer.get(); });
  HMENU bar = ::LoadMenuW(own.program.instance, MAKEINTRESOURCEW(IDR_MAIN_MENU));
  HMENU popup = ::GetSubMenu(bar, 3);
  const auto marked = [popup] { return (::GetMenuState(popup, IDM_ADMIN_AT_LOGIN, MF_BYCOMMAND) & MF_CHECKED) != 0; };
  std::thread user([&] {
    EXPECT_NE(WaitForPopup(), nullptr);
    EXPECT_FALSE(marked());
    gate.set_value(true);
    EXPECT_TRUE(WaitUntil(marked));
    ::PostMessageW(host.owner, WM_CANCELMODE, 0, 0);
  });
  menu.OnInitMenuPopup(popup);
  ::TrackPopupMenu(popup, TPM_RETURNCMD, 10, 10, 0, host.owner, nullptr);
  user.join();
  ::CheckMenuItem(popup, IDM_ADMIN_AT_LOGIN, MF_UNCHECKED);
  menu.OnInitMenuPopup(popup);
  EXPECT_TRUE(marked());
  ::DestroyMenu(bar);
  ::DestroyWindow(host.owner);
}

}  // namespace
