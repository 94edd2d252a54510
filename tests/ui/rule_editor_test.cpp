#include <gtest/gtest.h>

#include "tests/support/main_window_fixture.h"

namespace {

using RuleEditorTest = MainWindowTest;

TEST_F(RuleEditorTest, AddingUsesAnIdUpAndOkSavesTheRule) {
  rules.Append({Rule(4, L"old.exe")});
  Open();
  const std::uint32_t id = rules.NextRuleId();
  Answer(OpenDialog(IDC_ADD_RULE, kEditorTitle), IDCANCEL);
  HWND editor = OpenDialog(IDM_ADD_RULE, kEditorTitle);
  ::PostMessageW(editor, WM_CLOSE, 0, 0);
  ASSERT_TRUE(WaitUntil([editor] { return !::IsWindow(editor); }));
  EXPECT_EQ(Rules(), RuleList{Rule(4, L"old.exe")});
  EXPECT_EQ(RowCount(list), 1);

  // A double click below the rows adds too.
  for (const int message : {WM_LBUTTONDOWN, WM_LBUTTONUP, WM_LBUTTONDBLCLK, WM_LBUTTONUP}) {
    ::PostMessageW(list, static_cast<UINT>(message), MK_LBUTTON, MAKELPARAM(100, 100));
  }
  editor = WaitForDialog(kEditorTitle);
  EXPECT_EQ(FocusOf(editor), ::GetDlgItem(editor, IDC_PATTERN));
  EXPECT_EQ(::IsDlgButtonChecked(editor, IDC_ENABLED), UINT{BST_CHECKED});
  for (int field = IDC_PATTERN; field <= IDC_COOLDOWN; ++field)
    EXPECT_EQ(TextOfItem(editor, field), field == IDC_COOLDOWN ? L"60" : L"") << field;
  Answer(editor, IDOK);
  EXPECT_EQ(Rules(), (RuleList{Rule(4, L"old.exe"), Rule(id + 2, L"")}));
  EXPECT_EQ(RowCount(list), 2);
  ExpectSaved();
}

TEST_F(RuleEditorTest, EditsTheUpperOfTheSelectedRules) {
  ThresholdRule rule = Rule(9, L"b.exe");
  rule.alertActions = 7;
  rule.maxWorkingSet = 1'572'864;
  rule.maxCpuPercent = 87.5;
  rule.cooldownSec = 0;
  rules.Append({Rule(8, L"a.exe"), rule, Rule(10, L"c.exe")});
  Open();
  SelectRows(list, {2, 1});
  HWND editor = OpenDialog(IDC_EDIT_RULE, kEditorTitle);
  EXPECT_EQ(TextOfItem(editor, IDC_PATTERN), L"b.exe");
  EXPECT_EQ(TextOfItem(editor, IDC_MAX_WORKING_SET), L"1");
  EXPECT_EQ(TextOfItem(editor, IDC_MAX_CPU), L"88");
  EXPECT_EQ(TextOfItem(editor, IDC_COOLDOWN), L"0");
  Answer(editor, IDCANCEL);
  EXPECT_EQ(Rules()[1], rule);

  // Longer than a field gives back, and touched by nobody.
  const std::wstring imported(300, L'q');
  (void)rules.Edit(8, [&](ThresholdRule& first) { first.processPattern = imported; });
  SelectRows(list, {0});
  Answer(OpenDialog(IDC_EDIT_RULE, kEditorTitle), IDOK);
  EXPECT_EQ(Rules()[0].processPattern, imported);
  NotifyDoubleClick(list, 0, 1);
  ::PostMessageW(Box(), WM_KEYDOWN, VK_RETURN, 0);
  ASSERT_TRUE(WaitForNoBox());
  EXPECT_EQ(Rules()[0].processPattern, imported);
  (void)rules.Edit(8, [](ThresholdRule& first) { first = Rule(8, L"a.exe"); });
  SelectRows(list, {2, 1});

  editor = OpenDialog(IDM_EDIT_RULE, kEditorTitle);
  ::SetDlgItemTextW(editor, IDC_PATTERN, (std::wstring(300, L'p')).c_str());
  ::SetDlgItemTextW(editor, IDC_MAX_CPU, L"12.5");
  ::SetDlgItemTextW(editor, IDC_MAX_GDI, L"99999999999");
  ::CheckDlgButton(editor, IDC_ENABLED, BST_UNCHECKED);
  Answer(editor, IDOK);
  rule.processPattern = std::wstring(255, L'p');
  rule.enabled = false;
  rule.maxWorkingSet = 1'048'576;
  rule.maxCpuPercent = 12.5;
  rule.maxGdiObjects = 4294967295U;
  rule.alertActions = ACTION_NOTIFY | ACTION_LOG;
  EXPECT_EQ(Rules(), (RuleList{Rule(8, L"a.exe"), rule, Rule(10, L"c.exe")}));
  EXPECT_EQ(Cell(list, 1, 0), L"No");
  EXPECT_EQ(Cell(list, 1, 5), L"12");
  ExpectSaved();
}

}  // namespace
