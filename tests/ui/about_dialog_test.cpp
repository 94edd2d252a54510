#include "ui/about_dialog.h"

#include <gtest/gtest.h>

#include "product_config.h"
#include "res/resource.h"
#include "test_program.h"
#include "window_driver.h"

namespace {

TEST(AboutDialog, ShowsTheVersionAndOpensThePageOnlyFromItsLink) {
  constexpr wchar_t kPage[] = L"" VANTORA_PRODUCT_PAGE;
  TestProgram test;
  std::vector<std::pair<HWND, std::wstring>> opened;
  WindowThread thread([&] {
    RunAboutDialog(nullptr, test.program, [&](HWND owner, const wchar_t* address) { opened.emplace_back(owner, address); });
  });
  HWND dialog = thread.WaitForDialog(L"About Vantora");
  ASSERT_NE(dialog, nullptr);
  EXPECT_EQ(TextOfItem(dialog, IDC_ABOUT_NAME), L"Vantora");
  EXPECT_EQ(TextOfItem(dialog, IDC_ABOUT_VERSION), L"Version 0.0.2.7 BETA");
  EXPECT_EQ(TextOfItem(dialog, IDC_ABOUT_LINK), kPage);

  ::SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(IDC_ABOUT_LINK, STN_DBLCLK), 0);
  for (const int id : {IDC_ABOUT_NAME, IDC_ABOUT_VERSION, IDC_ABOUT_ICON, IDC_ABOUT_LINK}) {
    EXPECT_TRUE(opened.empty()) << id;
    ::SendDlgItemMessageW(dialog, id, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(3, 3));
    ::SendDlgItemMessageW(dialog, id, WM_LBUTTONUP, 0, MAKELPARAM(3, 3));
  }
  EXPECT_EQ(opened, (decltype(opened){{dialog, kPage}}));
  EXPECT_TRUE(::IsWindowVisible(dialog));
  PostCommand(dialog, IDOK);
  EXPECT_TRUE(thread.WaitForEnd());
}

}  // namespace
