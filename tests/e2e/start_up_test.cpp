// The command line, the hand-over between instances, and the first seconds of the program.

#include <windows.h>

#include <shellapi.h>

#include <algorithm>

#include "app/messages.h"
#include "tests/e2e/fixture.h"
#include "tests/e2e/stand_in_window.h"

namespace e2e {
namespace {

using StartUp = EndToEndTest;

class WindowsVersion : public EndToEndTest, public testing::WithParamInterface<const wchar_t*> {
 protected:
  static constexpr wchar_t kVersionKey[] = L"Software\\Wine\\AppDefaults\\vantora.exe";
  WindowsVersion() { profile_.Set(kVersionKey, L"Version", RegistryValue::Text(GetParam())); }
  ~WindowsVersion() override { profile_.DeleteKey(kVersionKey); }
};

TEST_P(WindowsVersion, ShowsItsIconAndItsMainWindowAndEndsInOrder) {
  const RunningProgram program(L"");
  HWND tray = program.WaitForTray();
  ASSERT_NE(tray, nullptr);
  ASSERT_NE(program.WaitForMainWindow(), nullptr);
  EXPECT_FALSE(::IsWindowVisible(tray));

  ASSERT_EQ(shell_.Count(NIM_ADD), 1u);
  const NotifyCall add = shell_.Calls().back();
  EXPECT_EQ(add.message, static_cast<DWORD>(NIM_ADD));
  EXPECT_EQ(add.window, tray);
  EXPECT_EQ(add.callback, UWM_TRAYICON);
  EXPECT_EQ(add.flags & (NIF_MESSAGE | NIF_ICON | NIF_TIP), static_cast<UINT>(NIF_MESSAGE | NIF_ICON | NIF_TIP));
  EXPECT_EQ(add.tip, L"Vantora 0.0.2.7 BETA");
  EXPECT_EQ(add.icon.cx, ::GetSystemMetrics(SM_CXSMICON));
  EXPECT_NE(UniqueHandle(::OpenEventW(SYNCHRONIZE, FALSE, kRunningEvent)), nullptr);

  EXPECT_EQ(RunToEnd(L"-terminate"), 0u);
  EXPECT_EQ(program.WaitForExit(), 0u);
  EXPECT_EQ(shell_.IconCount(), 0u);
  EXPECT_EQ(UniqueHandle(::OpenEventW(SYNCHRONIZE, FALSE, kRunningEvent)), nullptr);
}

INSTANTIATE_TEST_SUITE_P(OldestAndNewer, WindowsVersion, testing::Values(L"win7", L"win10"));

TEST_F(StartUp, TheTraySwitchKeepsTheMainWindowClosed) {
  const RunningProgram program(L"--minimise -tray");
  // The engine starts before the window would be asked for; the window's thread says so when it starts.
  ASSERT_TRUE(debug_.WaitFor(program.Id(), "MonitorEngine::MonitorLoop - Entering loop"));
  EXPECT_TRUE(NeverWithin(700, [&] { return debug_.Count(program.Id(), "MainDialogThread") != 0; }));
  EXPECT_TRUE(program.End());
}

TEST_F(StartUp, ASecondStartOpensTheMainWindowOfTheFirstAndEnds) {
  const RunningProgram first(L"/tray");
  ASSERT_NE(first.WaitForTray(), nullptr);
  const RunningProgram second(L"/tray");
  EXPECT_EQ(second.WaitForExit(), 0u);
  EXPECT_EQ(debug_.Count(second.Id(), "Existing instance found, invoking settings dialog"), 1u);
  EXPECT_EQ(debug_.Count(second.Id(), "RuleStore::Load"), 0u);
  EXPECT_NE(first.WaitForMainWindow(), nullptr);

  // Once more: the window is only brought forward.
  EXPECT_EQ(RunToEnd(L""), 0u);
  EXPECT_TRUE(NeverWithin(500, [&] { return debug_.Count(first.Id(), "MainDialogThread") > 1; }));
  EXPECT_TRUE(first.End());
}

TEST_F(StartUp, TerminateWithoutAnInstanceSucceedsAndDoesNothingElse) {
  EXPECT_EQ(RunToEnd(L"-terminate -tray --install-admin-task"), 0u);
  EXPECT_EQ(::FindWindowW(kTrayClass, kTrayTitle), nullptr);
  EXPECT_FALSE(PathExists(profile_.RulesFile()));
}

TEST_F(StartUp, TheTaskSwitchesSayByTheirExitCodeWhetherTheTaskIsAsWanted) {
  // Wine's Task Scheduler has no logon trigger, so the task cannot be created here; one that does not exist counts as removed.
  EXPECT_EQ(RunToEnd(L"--install-admin-task --remove-admin-task"), 1u);
  EXPECT_EQ(RunToEnd(L"--remove-admin-task /tray"), 0u);
  EXPECT_EQ(shell_.Calls().size(), 0u);
}

TEST_F(StartUp, RestartWaitsUntilTheRunningInstanceHasSavedAndThenTakesOver) {
  // Written by hand, in a form that the running instance rewrites when it ends.
  WriteFileBytes(profile_.RulesFile(), "header\n4,foo.exe,1\n");
  const RunningProgram first(L"/tray");
  ASSERT_TRUE(debug_.WaitFor(first.Id(), "MonitorEngine::MonitorLoop - Entering loop"));
  const RunningProgram second(L"-restart /tray");
  EXPECT_EQ(first.WaitForExit(), 0u);
  ASSERT_NE(second.WaitForTray(), nullptr);
  EXPECT_TRUE(debug_.WaitFor(second.Id(), "RuleStore::Load - Loaded 1 rules from"));
  const auto all = debug_.Of(0);
  const auto indexOf = [&](const std::string& text) {
    std::size_t i = 0;
    while (i < all.size() && all[i].find(text) == std::string::npos) ++i;
    return i;
  };
  const auto second_load = std::find_if(all.begin(), all.end(), [loads = 0](const std::string& line) mutable {
    return line.find("RuleStore::Load - Loaded") != std::string::npos && ++loads == 2;
  });
  EXPECT_LT(indexOf("RuleStore::Save - Saved 1 rules to"), static_cast<std::size_t>(second_load - all.begin()));
  EXPECT_TRUE(second.End());
}

TEST_F(StartUp, ARunningInstanceOfTheEarlierProductIsAskedToCloseAndWaitedFor) {
  StandInWindow legacy(L"HALVERNW", L"Halvern", UWM_TERMINATE);
  const RunningProgram program;
  EXPECT_NE(program.WaitForTray(), nullptr);
  EXPECT_EQ(legacy.Asked(), 1);
  EXPECT_FALSE(legacy.IsOpen());
  EXPECT_TRUE(program.End());
}

}  // namespace
}  // namespace e2e
