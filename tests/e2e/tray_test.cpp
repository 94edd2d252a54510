// The tray icon, its menu, its balloons' clicks, and the taskbar's comings and goings.

#include <windows.h>

#include <shellapi.h>

#include "app/messages.h"
#include "res/resource.h"
#include "tests/e2e/fixture.h"
#include "tests/e2e/process_load.h"

namespace e2e {
namespace {

using Tray = EndToEndTest;

void Notify(HWND tray, LPARAM notification) { ::PostMessageW(tray, UWM_TRAYICON, 0, notification); }

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
  HWND tray = program.WaitForTray();
  for (const LPARAM nothing : {LPARAM{0}, LPARAM{WM_MOUSEMOVE}, LPARAM{WM_LBUTTONDOWN}, LPARAM{WM_RBUTTONDOWN},
                               LPARAM{NIN_BALLOONSHOW}, LPARAM{NIN_BALLOONHIDE}, LPARAM{NIN_BALLOONTIMEOUT}}) {
    Notify(tray, nothing);
  }
  ASSERT_TRUE(program.ChooseFromTrayMenu(L'o'));
  HWND window = program.WaitForMainWindow();
  ASSERT_NE(window, nullptr);
  EXPECT_EQ(debug_.Count(program.Id(), "MainDialogThread"), 1u);

  for (const LPARAM notification : {LPARAM{WM_LBUTTONUP}, LPARAM{NIN_BALLOONUSERCLICK}}) {
    SCOPED_TRACE(notification);
    Notify(tray, notification);
    EXPECT_TRUE(NeverWithin(300, [&] { return debug_.Count(program.Id(), "MainDialogThread") > 1; }));
    EXPECT_EQ(program.FindMainWindow(), window);
  }
  PostCommand(window, IDCANCEL);
  ASSERT_TRUE(WaitUntil([&] { return program.FindMainWindow() == nullptr; }));
  Notify(tray, NIN_BALLOONUSERCLICK);
  EXPECT_NE(program.WaitForMainWindow(), nullptr);
  EXPECT_TRUE(program.End());
}

TEST_F(Tray, TheIconComesBackWithARecreatedTaskbar) {
  const RunningProgram program;
  ASSERT_TRUE(WaitUntil([&] { return shell_.IconCount() == 1; }));
  shell_.Recreate();
  ASSERT_TRUE(WaitUntil([&] { return shell_.Count(NIM_ADD) == 2; }));
  EXPECT_EQ(shell_.IconCount(), 1u);
  const NotifyCall add = shell_.Calls().back();
  EXPECT_EQ(add.tip, L"Vantora 0.0.2.7 BETA");
  EXPECT_EQ(add.icon.cx, ::GetSystemMetrics(SM_CXSMICON));
  EXPECT_TRUE(program.End());
}

TEST_F(Tray, AMissingTaskbarIsTriedTwentyTimesMoreAndThenAwaited) {
  shell_.SetRefusing(true);
  const RunningProgram program;
  ASSERT_TRUE(WaitUntil([&] { return shell_.Count(NIM_ADD) == 21; }));
  EXPECT_TRUE(NeverWithin(700, [&] { return shell_.Count(NIM_ADD) > 21; }));
  EXPECT_TRUE(program.IsRunning());

  // A taskbar that comes late starts the count anew.
  shell_.Recreate();
  ASSERT_TRUE(WaitUntil([&] { return shell_.Count(NIM_ADD) >= 23; }));
  shell_.SetRefusing(false);
  EXPECT_TRUE(WaitUntil([&] { return shell_.IconCount() == 1; }));
  EXPECT_TRUE(program.End());
}

TEST_F(Tray, AFinishedUpdateIsReportedOnceAndAClickOnTheReportDoesNothing) {
  profile_.Set(L"UpdateFinished", 1);
  {
    const RunningProgram program;
    const auto balloon = shell_.WaitForBalloon(0);
    ASSERT_TRUE(balloon);
    EXPECT_EQ(balloon->infoTitle, L"Vantora Updated");
    EXPECT_EQ(balloon->info, L"Newly installed version is 0.0.2.7 BETA.");
    EXPECT_EQ(balloon->flags, static_cast<UINT>(NIF_INFO));
    EXPECT_EQ(balloon->timeoutMs, 10'000u);
    EXPECT_EQ(profile_.Get(kSettings, L"UpdateFinished"), RegistryValue::Number(0));
    HWND tray = program.WaitForTray();
    Notify(tray, NIN_BALLOONUSERCLICK);
    EXPECT_TRUE(NeverWithin(700, [&] { return debug_.Count(program.Id(), "MainDialogThread") != 0; }));
    // The report is gone: the next click is one on an alert.
    Notify(tray, NIN_BALLOONUSERCLICK);
    EXPECT_TRUE(debug_.WaitFor(program.Id(), "MainDialogThread"));
    EXPECT_TRUE(program.End());
  }
  const RunningProgram next;
  ASSERT_TRUE(debug_.WaitFor(next.Id(), "MonitorEngine::MonitorLoop - Entering loop"));
  EXPECT_TRUE(NeverWithin(500, [&] { return shell_.Balloons().size() > 1; }));
  EXPECT_TRUE(next.End());
}

}  // namespace
}  // namespace e2e
