// The logon task in the real Task Scheduler, as far as it can be had on every machine: the task is one of the test's own making.

#include "res/resource.h"
#include "tests/e2e/fixture.h"

namespace e2e {
namespace {

class RealLogonTask : public EndToEndTest {
 protected:
  static std::optional<DWORD> Schtasks(const std::wstring& arguments) {
    wchar_t folder[MAX_PATH]{};
    ::GetSystemDirectoryW(folder, MAX_PATH);
    return RunningProgram(arguments, std::wstring(folder) + L"\\schtasks.exe").WaitForExit();
  }
  void Register() const {
    constexpr wchar_t kTask[] =
        L"\xFEFF<?xml version=\"1.0\" encoding=\"UTF-16\"?>\r\n"
        L"<Task version=\"1.2\" xmlns=\"http://schemas.microsoft.com/windows/2004/02/mit/task\">"
        L"<Actions><Exec><Command>cmd.exe</Command></Exec></Actions></Task>";
    const std::wstring file = profile_.DataFolder() + L"\\task.xml";
    WriteFileBytes(file, std::string(reinterpret_cast<const char*>(kTask), sizeof kTask - sizeof(wchar_t)));
    ASSERT_EQ(Schtasks(L"/create /tn VantoraAdminAutoStart /xml \"" + file + L"\""), 0u);
  }
  static bool TaskIsThere() { return Schtasks(L"/delete /tn VantoraAdminAutoStart /f") == 0u; }
};

TEST_F(RealLogonTask, IsRemovedBySwitchAndByMenu) {
  Register();
  ASSERT_TRUE(TaskIsThere()) << "what the next lines look at shows the task";
  Register();
  EXPECT_EQ(RunToEnd(L"--remove-admin-task"), 0u);
  EXPECT_FALSE(TaskIsThere());

  Register();
  const RunningProgram program(L"");
  HWND window = program.WaitForMainWindow();
  ASSERT_NE(window, nullptr);
  ::SendMessageW(window, WM_COMMAND, IDM_ADMIN_AT_LOGIN, 0);
  EXPECT_FALSE(TaskIsThere());
  EXPECT_TRUE(program.End());
}

}  // namespace
}  // namespace e2e
