#include <gtest/gtest.h>

#include "test_program.h"
#include "ui/about_dialog.h"
#include "ui/exclusions_dialog.h"
#include "ui/windows_of_program.h"
#include "window_driver.h"

// Last: the system header it reads the handle table with has an enumerator named like one of our records.
#include "leak_counter.h"

namespace {

/// Closes the dialog of this thread as soon as its loop runs.
void CALLBACK CancelActiveDialog(HWND, UINT, UINT_PTR timer, DWORD) {
  HWND dialog = ::GetActiveWindow();
  if (dialog == nullptr) return;
  ::KillTimer(nullptr, timer);
  PostCommand(dialog, IDCANCEL);
}

class ViewsLeak : public ::testing::Test {
 protected:
  /// Runs the window two hundred times on this thread: a thread of its own would still be giving back what it held when it is
  /// counted.
  static void ExpectNoGrowth(const std::function<void()>& run) {
    const LeakCount growth = GrowthOver(200, [&] {
      ::SetTimer(nullptr, 0, USER_TIMER_MINIMUM, &CancelActiveDialog);
      run();
    });
    EXPECT_EQ(growth, LeakCount{});
  }

  TestProgram test_;
};

TEST_F(ViewsLeak, AlertLog) {
  for (std::uint32_t pid = 0; pid < 30; ++pid) test_.recentAlerts.Append({{}, pid, L"app.exe", 1, L"Threads: 9 > 8"});
  ExpectNoGrowth([this] { AlertLogDialogThread(test_.program); });
}

TEST_F(ViewsLeak, Exclusions) {
  test_.engine.SetExclusions({L"a.exe", L"b.exe"});
  ExpectNoGrowth([this] { RunExclusionsDialog(nullptr, test_.program); });
}

TEST_F(ViewsLeak, About) {
  ExpectNoGrowth([this] { RunAboutDialog(nullptr, test_.program); });
}

}  // namespace
