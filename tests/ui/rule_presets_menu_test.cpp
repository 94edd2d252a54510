#include <gtest/gtest.h>

#include "res/resource.h"
#include "test_program.h"
#include "ui/rule_presets.h"
#include "ui/windows_of_program.h"
#include "window_driver.h"

namespace {

TEST(RulePresetsMenu, EveryItemOfTheRealMenuAddsItsRules) {
  const std::vector<std::wstring> kLabels = {
      L"Browser resource limits (Chrome, Firefox, Edge)", L"Runaway CPU detection (any process > 95%)",
      L"Handle leak detection (any process > 20,000)",    L"Memory hog detection (any process > 4 GB)",
      L"GDI object leak detection (any process > 8,000)", L"Thread bomb detection (any process > 500)"};
  TestProgram test;
  WindowThread thread([&] { MainDialogThread(test.program); });
  HWND dialog = thread.WaitForDialog(kMainWindowTitle);
  HWND list = ::GetDlgItem(dialog, IDC_RULE_LIST);
  ASSERT_NE(list, nullptr);

  PostCommand(dialog, IDC_PRESETS);
  HWND menu = thread.WaitForMenu();
  ASSERT_NE(menu, nullptr);
  EXPECT_EQ(MenuTexts(menu), kLabels);
  ::PostMessageW(dialog, WM_CANCELMODE, 0, 0);
  EXPECT_TRUE(WaitUntil([&] { return !::IsWindowVisible(menu); }));
  ::SendMessageW(dialog, WM_NULL, 0, 0);
  EXPECT_EQ(RowCount(list), 0);
  EXPECT_EQ(test.rules.NextRuleId(), 1u);
  EXPECT_FALSE(test.folder.Has(L"rules.csv"));

  int rows = 0;
  for (int position = 0; position < static_cast<int>(kLabels.size()); ++position) {
    // The first time as the button, then as the menu item that stands for it.
    PostCommand(dialog, position == 0 ? IDC_PRESETS : IDM_PRESETS);
    ASSERT_NE(thread.WaitForMenu(), nullptr);
    ChooseMenuItem(dialog, position);
    rows += position == 0 ? 3 : 1;
    ASSERT_TRUE(WaitUntil([&] { return RowCount(list) == rows; })) << position;
  }
  RuleStore expected([] { return std::wstring(); });
  for (const RulePreset& preset : RulePresets()) AddPresetRules(expected, preset.menuId);
  EXPECT_EQ(*test.rules.Snapshot(), *expected.Snapshot());
  RuleStore saved([] { return std::wstring(); });
  ASSERT_TRUE(saved.Load(test.folder.File(L"rules.csv")));
  EXPECT_EQ(*saved.Snapshot(), *test.rules.Snapshot());
}

}  // namespace
