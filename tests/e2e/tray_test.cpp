// The tray icon, its menu, its balloons' clicks, and the taskbar's comings and goings.

#include <windows.h>

#include <shellapi.h>

#include "app/messages.h"
#include "tests/e2e/fixture.h"
#include "tests/e2e/process_load.h"

namespace e2e {
namespace {

using Tray = EndToEndTest;

TEST_F(Tray, PauseStopsTheAlertsAndResumeBringsThemBackAndEachIsOfferedOnlyWhenItApplies) {
  profile_.Set(L"PollIntervalSec", 1);
  profile_.WriteRules({"1," + OwnName() + ",1,0,0.0,0.0,0.0,1,0,0,0,0"});
  const RunningProgram program;
  const auto alerts = [&] { return debug_.Count(program.Id(), "ALERT:"); };
  ASSERT_TRUE(WaitUntil([&] { return alerts() >= 1; }));

  ASSERT_TRUE(program.ChooseFromTrayMenu(L'p'));
  ASSERT_TRUE(debug_.WaitFor(program.Id(), "Monitoring paused"));
  const std::size_t atPause = alerts();
  EXPECT_TRUE(NeverWithin(2'500, [&] { return alerts() > atPause + 1; })) << "a cycle under way may still end";

  // Greyed now: the choice does nothing, whether or not the menu closes on it.
  (void)program.OpenTrayMenu();
  ::PostMessageW(program.WaitForTray(), WM_CHAR, L'p', 0);
  EXPECT_TRUE(NeverWithin(500, [&] { return debug_.Count(program.Id(), "Monitoring paused") > 1; }));
  ASSERT_TRUE(program.DismissMenu());

  ASSERT_TRUE(program.ChooseFromTrayMenu(L'r'));
  ASSERT_TRUE(debug_.WaitFor(program.Id(), "Monitoring resumed"));
  const std::size_t atResume = alerts();
  EXPECT_TRUE(WaitUntil([&] { return alerts() > atResume; }));
  EXPECT_TRUE(program.End());
}

TEST_F(Tray, OpenAndTheLeftButtonAndAnAlertBalloonAllLeadToTheOneMainWindow) {
  const RunningProgram program;
  ASSERT_TRUE(program.ChooseFromTrayMenu(L'o'));
  HWND window = program.WaitForMainWindow();
  ASSERT_NE(window, nullptr);
  for (const LPARAM notification : {LPARAM{WM_LBUTTONUP}, LPARAM{NIN_BALLOONUSERCLICK}}) {
    SCOPED_TRACE(notification);
    ::PostMessageW(program.WaitForTray(), UWM_TRAYICON, 0, notification);
    EXPECT_TRUE(NeverWithin(300, [&] { return debug_.Count(program.Id(), "MainDialogThread") > 1; }));
    EXPECT_EQ(program.FindMainWindow(), window);
  }
  EXPECT_TRUE(program.End());
}

TEST_F(Tray, TheIconComesBackWithARecreatedTaskbar) {
  const RunningProgram program;
  ASSERT_TRUE(WaitUntil([&] { return shell_.IconCount() == 1; }));
  shell_.Recreate();
  ASSERT_TRUE(WaitUntil([&] { return shell_.Count(NIM_ADD) == 2; }));
  EXPECT_EQ(shell_.IconCount(), 1u);
  EXPECT_EQ(shell_.Calls().back().tip, L"Vantora 0.0.2.7 BETA");
  EXPECT_TRUE(program.End());
}

TEST_F(Tray, AMissingTaskbarIsTriedTwentyTimesMoreAndThenAwaited) {
  shell_.SetRefusing(true);
  const RunningProgram program;
  ASSERT_TRUE(WaitUntil([&] { return shell_.Count(NIM_ADD) == 21; }));
  EXPECT_TRUE(NeverWithin(700, [&] { return shell_.Count(NIM_ADD) > 21; }));
  shell_.SetRefusing(false);
  shell_.Recreate();
  EXPECT_TRUE(WaitUntil([&] { return shell_.IconCount() == 1; }));
  EXPECT_TRUE(program.End());
}

}  // namespace
}  // namespace e2e
