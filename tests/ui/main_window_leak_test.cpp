#include <gtest/gtest.h>

#include "app/messages.h"
#include "tests/ui/main_window_fixture.h"

// Last: the system's header for it takes the name of one of our types for an enumerator.
#include "tests/ui/leak_counter.h"

namespace {

TEST_F(MainWindowTest, OpeningAndClosingLeavesNothingBehind) {
  rules.Append({Rule(1, L"a.exe")});
  const auto openAndClose = [this] {
    Open();
    SelectRows(list, {0});
    Answer(OpenDialog(IDC_EDIT_RULE, kEditorTitle), IDCANCEL);
    NotifyDoubleClick(list, 0, 1);
    ::SendMessageW(Window(), UWM_END_INPLACE_EDIT, 1, 0);
    Close(IDM_EXIT);
  };
  // The system keeps device contexts for reuse and takes its time to have as many as it wants. What leaks never comes to rest.
  int flatRounds = 0;
  for (int round = 0; round < 6 && flatRounds < 2; ++round) {
    const LeakCount growth = GrowthOver(100, openAndClose);
    flatRounds = growth == LeakCount{} ? flatRounds + 1 : 0;
    SCOPED_TRACE(testing::PrintToString(growth));
    ASSERT_LT(growth.gdiObjects, 100U);
    ASSERT_LT(growth.handles, 100U);
  }
  EXPECT_EQ(flatRounds, 2);
}

}  // namespace
