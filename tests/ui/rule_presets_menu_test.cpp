#include "tests/ui/program_window_fixture.h"
#include "ui/rule_presets.h"

namespace {

TEST_F(ProgramWindowTest, EveryPresetOfTheRealMenuAddsItsRules) {
  const std::vector<std::wstring> kLabels = {
      L"Browser resource limits (Chrome, Firefox, Edge)", L"Runaway CPU detection (any process > 95%)",
      L"Handle leak detection (any process > 20,000)",    L"Memory hog detection (any process > 4 GB)",
      L"GDI object leak detection (any process > 8,000)", L"Thread bomb detection (any process > 500)"};
  Open();
  PostCommand(Window(), IDC_PRESETS);
  HWND menu = WaitForPopup();
  EXPECT_EQ(MenuTexts(menu), kLabels);
  ::PostMessageW(Window(), WM_CANCELMODE, 0, 0);
  EXPECT_TRUE(WaitUntil([menu] { return !::IsWindowVisible(menu); }));
  ::SendMessageW(Window(), WM_NULL, 0, 0);
  EXPECT_EQ(rules.NextRuleId(), 1U);
  EXPECT_FALSE(folder.Has(L"rules.csv"));

  RuleStore expected([] { return std::wstring(); });
  for (int position = 0; position < static_cast<int>(kLabels.size()); ++position) {
    AddPresetRules(expected, RulePresets()[static_cast<std::size_t>(position)].menuId);
    // The first time as the button, then as the menu item that stands for it.
    PostCommand(Window(), position == 0 ? IDC_PRESETS : IDM_PRESETS);
    ASSERT_NE(WaitForPopup(), nullptr);
    ChooseMenuItem(Window(), position);
    ASSERT_TRUE(WaitUntil([&] { return RowCount(list) == static_cast<int>(expected.Snapshot()->size()); })) << position;
    EXPECT_EQ(Rules(), *expected.Snapshot());
    ExpectSaved();
  }
}

}  // namespace
