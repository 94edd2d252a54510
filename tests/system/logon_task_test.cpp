#include "system/logon_task.h"

#include <gtest/gtest.h>
#include <windows.h>

#include "system/executable_path.h"
#include "tests/system/fake_task_scheduler.h"

namespace {

std::wstring UserName() {
  wchar_t name[600];
  ::ExpandEnvironmentStringsW(L"%USERDOMAIN%\\%USERNAME%", name, 600);
  return name;
}

TEST(LogonTask, InstallSetsEveryPropertyInOrder) {
  FakeTaskScheduler scheduler;
  scheduler.taskExists = true;  // one of an earlier version is replaced
  EXPECT_TRUE(InstallAdminTask());
  // clang-format off
  EXPECT_EQ(scheduler.log,
            L"Create\nConnect=emptyemptyemptyempty\nGetFolder=\\\nDeleteTask=VantoraAdminAutoStart 0\nNewTask=0\n"
            L"get info\nauthor=Vantora\ndescription=Starts Vantora with administrator privileges at user logon\n"
            L"get principal\nprincipal id=Principal\nlogon type=3\nrun level=1\nprincipal user=" + UserName() + L"\n"
            L"get settings\nstart when available=-1\ndisallow on batteries=0\nstop on batteries=0\ndemand start=-1\n"
            L"enabled=-1\nhidden=0\ntime limit=PT0S\ninstances=2\n"
            L"get triggers\ncreate trigger=9\nquery trigger\ntrigger id=LogonTrigger\ntrigger user=" + UserName() + L"\n"
            L"get actions\ncreate action=0\nquery action\npath=" + OwnExecutablePath() + L"\narguments=/tray\n"
            L"Register=VantoraAdminAutoStart 6 empty empty 3 ''\n");
  // clang-format on
  EXPECT_TRUE(scheduler.taskExists);
  EXPECT_EQ(scheduler.references, 0);
}

struct FailureRow {
  const wchar_t* failingCall;
  bool succeeds;
  bool exists = true;
  HRESULT failure = E_FAIL;
};

TEST(LogonTask, InstallStopsWhereItCannotGoOn) {
  constexpr FailureRow kRows[] = {
      {L"Create", false},    {L"DeleteTask", true},    {L"get info", true},  {L"get principal", false},
      {L"time limit", true}, {L"query action", false}, {L"Register", false},
  };
  for (const FailureRow& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.failingCall);
    FakeTaskScheduler scheduler;
    scheduler.failingCall = row.failingCall;
    EXPECT_EQ(InstallAdminTask(), row.succeeds);
    EXPECT_EQ(scheduler.taskExists, row.succeeds);
    EXPECT_EQ(scheduler.lastCall, row.succeeds ? L"Register" : row.failingCall);
    EXPECT_EQ(scheduler.references, 0);
  }
}

TEST(LogonTask, RemovingATaskThatIsNotThereSucceeds) {
  constexpr FailureRow kRows[] = {
      {L"", true},
      {L"", true, false},
      {L"DeleteTask", false, true, E_ACCESSDENIED},
      // Not found is a success only from the deletion itself.
      {L"GetFolder", false, true, HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND)},
  };
  for (const FailureRow& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.failingCall << row.exists);
    FakeTaskScheduler scheduler;
    scheduler.taskExists = row.exists;
    scheduler.failingCall = row.failingCall;
    scheduler.failure = row.failure;
    EXPECT_EQ(RemoveAdminTask(), row.succeeds);
    EXPECT_EQ(scheduler.taskExists, !row.succeeds);
    EXPECT_EQ(scheduler.references, 0);
  }
}

TEST(LogonTask, IsInstalledExactlyWhenItCanBeRead) {
  FakeTaskScheduler scheduler;
  EXPECT_FALSE(IsAdminTaskInstalled());
  scheduler.taskExists = true;
  EXPECT_TRUE(IsAdminTaskInstalled());
  scheduler.failingCall = L"GetTask";
  EXPECT_FALSE(IsAdminTaskInstalled());
  EXPECT_EQ(scheduler.references, 0);
}

}  // namespace
