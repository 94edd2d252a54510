#include "autostart/logon_task.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <set>
#include <sstream>

#include "autostart/executable_path.h"
#include "tests/support/fake_task_scheduler.h"

namespace {

std::wstring UserName() {
  wchar_t name[600];
  ::ExpandEnvironmentStringsW(L"%USERDOMAIN%\\%USERNAME%", name, 600);
  return name;
}

/// What a whole installation asks of the Task Scheduler.
std::wstring WholeLog() {
  // clang-format off
  return L"Create\nConnect=empty empty empty empty\nGetFolder=\\\nDeleteTask=VantoraAdminAutoStart 0\nNewTask=0\n"
         L"get info\nauthor=Vantora\ndescription=Starts Vantora with administrator privileges at user logon\n"
         L"get principal\nprincipal id=Principal\nlogon type=3\nrun level=1\nprincipal user=" + UserName() + L"\n"
         L"get settings\nstart when available=-1\ndisallow on batteries=0\nstop on batteries=0\ndemand start=-1\n"
         L"enabled=-1\nhidden=0\ntime limit=PT0S\ninstances=2\n"
         L"get triggers\ncreate trigger=9\nquery trigger\ntrigger id=LogonTrigger\ntrigger user=" + UserName() + L"\n"
         L"get actions\ncreate action=0\nquery action\npath=" + OwnExecutablePath() + L"\narguments=/tray\n"
         L"Register=VantoraAdminAutoStart 6 empty empty 3 ''\n";
  // clang-format on
}

TEST(LogonTask, InstallSetsEveryPropertyInOrder) {
  FakeTaskScheduler scheduler;
  scheduler.taskExists = true;  // one of an earlier version is replaced
  EXPECT_TRUE(InstallAdminTask());
  EXPECT_EQ(scheduler.log, WholeLog());
  EXPECT_TRUE(scheduler.taskExists);
  EXPECT_EQ(scheduler.references, 0);
}

TEST(LogonTask, InstallStopsWhereItCannotGoOn) {
  std::set<std::wstring> needed = {L"Create",        L"Connect",       L"GetFolder",    L"NewTask",
                                   L"get principal", L"get settings",  L"get triggers", L"create trigger",
                                   L"get actions",   L"create action", L"query action", L"Register"};
  std::wistringstream calls(WholeLog());
  for (std::wstring call; std::getline(calls, call);) {
    call = call.substr(0, call.find(L'='));
    SCOPED_TRACE(testing::PrintToString(call));
    const bool succeeds = needed.erase(call) == 0;
    FakeTaskScheduler scheduler;
    scheduler.failingCall = call;
    EXPECT_EQ(InstallAdminTask(), succeeds);
    EXPECT_EQ(scheduler.taskExists, succeeds);
    EXPECT_EQ(scheduler.lastCall, succeeds ? L"Register" : call);
    EXPECT_EQ(scheduler.references, 0);
  }
  EXPECT_TRUE(needed.empty()) << testing::PrintToString(needed);
}

TEST(LogonTask, IsInstalledWhenItCanBeReadAndRemovedWhenItIsGone) {
  constexpr HRESULT kNotFound = HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
  const struct {
    const wchar_t* failingCall;
    bool exists, installed, removed;
    HRESULT failure = E_FAIL;
  } kRows[] = {
      {L"", true, true, true},
      {L"", false, false, true},
      {L"GetTask", true, false, true},
      {L"DeleteTask", true, true, false, E_ACCESSDENIED},
      {L"Create", true, false, false},
      // Not found is a success only from the deletion itself.
      {L"Connect", true, false, false, kNotFound},
      {L"GetFolder", true, false, false, kNotFound},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.failingCall << row.exists);
    FakeTaskScheduler scheduler;
    scheduler.taskExists = row.exists;
    scheduler.failingCall = row.failingCall;
    scheduler.failure = row.failure;
    EXPECT_EQ(IsAdminTaskInstalled(), row.installed);
    EXPECT_EQ(RemoveAdminTask(), row.removed);
    EXPECT_EQ(scheduler.taskExists, !row.removed);
    EXPECT_EQ(scheduler.references, 0);
  }
}

TEST(LogonTask, LeavesTheThreadsComAsItWas) {
  ASSERT_EQ(::CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
  (void)IsAdminTaskInstalled();
  EXPECT_EQ(::CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_FALSE) << "the thread's own initialisation is gone";
  for (int times = 0; times < 2; ++times) ::CoUninitialize();
  (void)IsAdminTaskInstalled();
  EXPECT_EQ(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK) << "an initialisation was left behind";
  ::CoUninitialize();
}

}  // namespace
