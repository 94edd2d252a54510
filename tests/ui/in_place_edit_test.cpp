#include <gtest/gtest.h>

#include "tests/support/main_window_fixture.h"
#include "ui/rules/rule_list_model.h"

namespace {

class InPlaceEditTest : public MainWindowTest {
 protected:
  /// Types over what is in the open box and commits with Enter.
  void Enter(const wchar_t* text) {
    ASSERT_NE(Box(), nullptr);
    ::SetWindowTextW(Box(), text);
    ::PostMessageW(Box(), WM_KEYDOWN, VK_RETURN, 0);
    ASSERT_TRUE(WaitForNoBox());
  }
};

TEST_F(InPlaceEditTest, EnterStoresTheCellOfEveryColumn) {
  rules.Append({Rule(3, L"a.exe"), Rule(5, L"b.exe")});
  Open();
  const struct {
    int column;
    const wchar_t* typed;
    const wchar_t* cell;
  } cases[] = {
      {1, L"", L""},         {2, L"abc", L"-"}, {2, L"12abc", L"12"},
      {3, L"2048", L"2048"}, {4, L"1", L"1"},   {5, L"-5", L"-"},
      {5, L"12.5", L"12"},   {6, L" 7", L"7"},  {7, L"99999999999", L"4294967295"},
      {8, L"9", L"9"},
  };
  for (const auto& c : cases) {
    NotifyDoubleClick(list, 1, c.column);
    Enter(c.typed);
    EXPECT_EQ(Cell(list, 1, c.column), c.cell) << c.column;
    EXPECT_EQ(RuleCellText(c.column, Rules()[1]), c.cell) << c.column;
  }
  EXPECT_EQ(Rules()[1].maxCpuPercent, 12.5);
  EXPECT_EQ(Rules()[1].maxWorkingSet, 2048 * kBytesPerMb);
  EXPECT_EQ(Rules()[0], Rule(3, L"a.exe"));
  ExpectSaved();
  EXPECT_TRUE(::IsWindowVisible(Window())) << "Enter must not reach OK";

  // What was typed for a rule that is gone goes nowhere.
  NotifyDoubleClick(list, 1, 1);
  rules.Remove({5});
  Enter(L"c.exe");
  NotifyDoubleClick(list, 1, 0);
  EXPECT_EQ(Rules(), RuleList{Rule(3, L"a.exe")});
  ExpectSaved();
}

TEST_F(InPlaceEditTest, SecondCellCommitsTheFirst) {
  rules.Append({Rule(3, L"a.exe")});
  Open();
  NotifyDoubleClick(list, 0, 1);
  EXPECT_EQ(::SendMessageW(Box(), WM_GETFONT, 0, 0), ::SendMessageW(list, WM_GETFONT, 0, 0));
  ::SetWindowTextW(Box(), L"b.exe");
  // On the window's own thread, so that the first box's request is still on its way when the second opens.
  static WNDPROC listProcedure;
  listProcedure = reinterpret_cast<WNDPROC>(::SetWindowLongPtrW(
      list, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(+[](HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
        if (message != WM_APP) return ::CallWindowProcW(listProcedure, window, message, wParam, lParam);
        ::SetFocus(window);
        NotifyDoubleClick(window, 0, 2);
        return 0;
      })));
  ::SendMessageW(list, WM_APP, 0, 0);
  ::SendMessageW(Window(), WM_NULL, 0, 0);
  EXPECT_EQ(Rules()[0].processPattern, L"b.exe");
  Enter(L"77");
  EXPECT_EQ(Rules()[0].maxHandles, 77U);
  ExpectSaved();
}

}  // namespace
