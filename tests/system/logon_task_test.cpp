#include "system/logon_task.h"

#include <gtest/gtest.h>
#include <windows.h>

#define SECURITY_WIN32
#include <security.h>
#include <taskschd.h>

#include <algorithm>

#include "system/executable_path.h"
#include "tests/system/fake_task_scheduler.h"

namespace {

bool userNameTold = true;

}  // namespace

/// Takes the place of the import: the linker finds it here before it looks in the system's import library.
extern "C" BOOLEAN SEC_ENTRY GetUserNameExW(EXTENDED_NAME_FORMAT format, LPWSTR name, PULONG length) {
  static const auto real = reinterpret_cast<decltype(&::GetUserNameExW)>(
      reinterpret_cast<void*>(::GetProcAddress(::LoadLibraryW(L"secur32.dll"), "GetUserNameExW")));
  if (userNameTold && format == NameSamCompatible) return real(format, name, length);
  name[0] = L'?';  // what a failing call leaves in the buffer means nothing
  return FALSE;
}

namespace {

using Lines = std::vector<std::wstring>;

std::wstring UserName() {
  wchar_t domain[256];
  wchar_t user[256];
  ::GetEnvironmentVariableW(L"USERDOMAIN", domain, 256);
  ::GetEnvironmentVariableW(L"USERNAME", user, 256);
  return std::wstring(domain) + L"\\" + user;
}

bool Contains(const Lines& log, const std::wstring& line) { return std::find(log.begin(), log.end(), line) != log.end(); }

const Lines kConnected = {L"Create", L"Connect=empty empty empty empty ", L"folder \\", L"GetFolder"};

TEST(LogonTask, InstallSetsEveryPropertyInOrder) {
  FakeTaskScheduler scheduler;
  scheduler.taskExists = true;  // one of an earlier version is replaced
  EXPECT_TRUE(InstallAdminTask());
  Lines expected = kConnected;
  const Lines rest = {L"DeleteTask=VantoraAdminAutoStart 0",
                      L"NewTask",
                      L"get info",
                      L"author=Vantora",
                      L"description=Starts Vantora with administrator privileges at user logon",
                      L"get principal",
                      L"principal id=Principal",
                      L"logon type=" + std::to_wstring(TASK_LOGON_INTERACTIVE_TOKEN),
                      L"run level=" + std::to_wstring(TASK_RUNLEVEL_HIGHEST),
                      L"principal user=" + UserName(),
                      L"get settings",
                      L"start when available=-1",
                      L"disallow on batteries=0",
                      L"stop on batteries=0",
                      L"demand start=-1",
                      L"enabled=-1",
                      L"hidden=0",
                      L"time limit=PT0S",
                      L"instances=" + std::to_wstring(TASK_INSTANCES_IGNORE_NEW),
                      L"get triggers",
                      L"type " + std::to_wstring(TASK_TRIGGER_LOGON),
                      L"create trigger",
                      L"Query trigger",
                      L"trigger id=LogonTrigger",
                      L"trigger user=" + UserName(),
                      L"get actions",
                      L"type " + std::to_wstring(TASK_ACTION_EXEC),
                      L"create action",
                      L"Query action",
                      L"path=" + OwnExecutablePath(),
                      L"arguments=/tray",
                      L"VantoraAdminAutoStart 6 empty empty 3 ''",
                      L"Register"};
  expected.insert(expected.end(), rest.begin(), rest.end());
  EXPECT_EQ(scheduler.log, expected);
  EXPECT_TRUE(scheduler.taskExists);
  EXPECT_EQ(scheduler.references, 0);
}

TEST(LogonTask, WithoutAUserNameTheTaskIsForNobodyInParticular) {
  FakeTaskScheduler scheduler;
  userNameTold = false;
  EXPECT_TRUE(InstallAdminTask());
  userNameTold = true;
  EXPECT_TRUE(Contains(scheduler.log, L"principal id=Principal") && Contains(scheduler.log, L"trigger id=LogonTrigger"));
  EXPECT_EQ(std::count_if(scheduler.log.begin(), scheduler.log.end(),
                          [](const std::wstring& line) { return line.find(L" user=") != std::wstring::npos; }),
            0);
}

TEST(LogonTask, InstallStopsWhereItCannotGoOn) {
  struct Row {
    const wchar_t* failingCall;
    bool installed;
  };
  constexpr Row kRows[] = {
      {L"Create", false},         {L"Connect", false},      {L"GetFolder", false},   {L"DeleteTask", true},
      {L"NewTask", false},        {L"get info", true},      {L"author", true},       {L"get principal", false},
      {L"principal user", true},  {L"get settings", false}, {L"time limit", true},   {L"get triggers", false},
      {L"create trigger", false}, {L"Query trigger", true}, {L"trigger user", true}, {L"get actions", false},
      {L"create action", false},  {L"Query action", false}, {L"path", true},         {L"Register", false},
  };
  for (const Row& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.failingCall);
    FakeTaskScheduler scheduler;
    scheduler.failingCall = row.failingCall;
    EXPECT_EQ(InstallAdminTask(), row.installed);
    EXPECT_EQ(scheduler.taskExists, row.installed);
    EXPECT_EQ(scheduler.references, 0);
    EXPECT_EQ(scheduler.log.back().starts_with(row.failingCall), !row.installed) << "it must go on exactly when it can";
  }
}

TEST(LogonTask, RemovingATaskThatIsNotThereSucceeds) {
  struct Row {
    bool exists;
    const wchar_t* failingCall;
    HRESULT failure;
    bool removed;
  };
  constexpr Row kRows[] = {
      {true, L"", S_OK, true},
      {false, L"", S_OK, true},
      {true, L"DeleteTask", E_ACCESSDENIED, false},
      {true, L"Create", REGDB_E_CLASSNOTREG, false},
      // Not found is a success only from the deletion itself.
      {true, L"Connect", HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), false},
      {true, L"GetFolder", HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), false},
  };
  for (const Row& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.failingCall << row.exists);
    FakeTaskScheduler scheduler;
    scheduler.taskExists = row.exists;
    scheduler.failingCall = row.failingCall;
    scheduler.failure = row.failure;
    EXPECT_EQ(RemoveAdminTask(), row.removed);
    EXPECT_EQ(Contains(scheduler.log, L"DeleteTask=VantoraAdminAutoStart 0"),
              row.removed || scheduler.failingCall == L"DeleteTask");
    EXPECT_EQ(scheduler.references, 0);
  }
}

TEST(LogonTask, IsInstalledExactlyWhenItCanBeRead) {
  for (const wchar_t* failingCall : {L"", L"Create", L"Connect", L"GetFolder", L"GetTask"}) {
    SCOPED_TRACE(testing::Message() << failingCall);
    FakeTaskScheduler scheduler;
    EXPECT_FALSE(IsAdminTaskInstalled());
    scheduler.taskExists = true;
    scheduler.failingCall = failingCall;
    EXPECT_EQ(IsAdminTaskInstalled(), *failingCall == L'\0');
    EXPECT_EQ(scheduler.references, 0);
  }
}

TEST(LogonTask, LeavesTheThreadsComAsItWas) {
  ASSERT_EQ(::CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
  (void)IsAdminTaskInstalled();
  EXPECT_EQ(::CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_FALSE) << "the thread's own initialisation is gone";
  ::CoUninitialize();
  ::CoUninitialize();
  (void)IsAdminTaskInstalled();
  EXPECT_EQ(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK) << "an initialisation was left behind";
  ::CoUninitialize();
}

}  // namespace
