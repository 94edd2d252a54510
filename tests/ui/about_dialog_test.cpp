#include "ui/about_dialog.h"

#include <gtest/gtest.h>

#include "product_config.h"
#include "res/resource.h"
#include "test_program.h"
#include "window_driver.h"

namespace {

constexpr wchar_t kTitle[] = L"About Vantora";
constexpr wchar_t kPage[] = L"" VANTORA_PRODUCT_PAGE;

void Click(HWND control) {
  ::SendMessageW(control, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(3, 3));
  ::SendMessageW(control, WM_LBUTTONUP, 0, MAKELPARAM(3, 3));
}

TEST(AboutDialog, ShowsTheVersionAndOpensThePageOnlyFromItsLink) {
  TestProgram test;
  for (const int closing : {IDOK, IDCANCEL}) {
    std::vector<std::wstring> opened;
    HWND openedFor = nullptr;
    WindowThread thread([&] {
      RunAboutDialog(nullptr, test.program, [&](HWND owner, const wchar_t* address) {
        openedFor = owner;
        opened.emplace_back(address);
      });
    });
    HWND dialog = thread.WaitForDialog(kTitle);
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(TextOfItem(dialog, IDC_ABOUT_NAME), L"Vantora");
    EXPECT_EQ(TextOfItem(dialog, IDC_ABOUT_VERSION), L"Version 0.0.2.7 BETA");
    EXPECT_EQ(TextOfItem(dialog, IDC_ABOUT_LINK), kPage);

    for (const int id : {IDC_ABOUT_NAME, IDC_ABOUT_VERSION, IDC_ABOUT_ICON}) Click(::GetDlgItem(dialog, id));
    ::SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(IDC_ABOUT_LINK, STN_DBLCLK), 0);
    EXPECT_TRUE(opened.empty());
    Click(::GetDlgItem(dialog, IDC_ABOUT_LINK));
    EXPECT_EQ(opened, (std::vector<std::wstring>{kPage}));
    EXPECT_EQ(openedFor, dialog);
    EXPECT_TRUE(::IsWindowVisible(dialog));
    PostCommand(dialog, closing);
    EXPECT_TRUE(thread.WaitForEnd());
  }
}

}  // namespace
