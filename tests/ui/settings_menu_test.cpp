#include "ui/main_window/settings_menu.h"

#include <gtest/gtest.h>

#include <future>
#include <thread>

#include "autostart/elevation_system.h"
#include "res/resource.h"
#include "tests/support/fake_task_scheduler.h"
#include "tests/support/test_program.h"
#include "tests/support/window_driver.h"
#include "ui/main_window/main_window_frame.h"
#include "ui/main_window/settings_page.h"

namespace {

BOOL elevated = TRUE;
bool promptAccepted = true;
std::wstring elevatedArguments;

const ElevationSystem kMadeUpElevation{::OpenProcessToken,
                                       [](HANDLE, TOKEN_INFORMATION_CLASS, void* data, DWORD, DWORD*) -> BOOL {
                                         *static_cast<BOOL*>(data) = elevated;
                                         return TRUE;
                                       },
                                       [](SHELLEXECUTEINFOW* request) -> BOOL {
                                         elevatedArguments = request->lpParameters;
                                         if ((request->fMask & SEE_MASK_NOCLOSEPROCESS) != 0)
                                           elevatedArguments += L", waited for";
                                         if (::GetCursor() == ::LoadCursorW(nullptr, IDC_WAIT))
                                           elevatedArguments += L", wait cursor";
                                         return promptAccepted;
                                       }};

/// The menu without the main window, on the test's own thread: what needs a Task Scheduler or a popup of the test's.
class SettingsMenuTest : public testing::Test, protected TestProgram, public MainWindowHost {
 protected:
  ~SettingsMenuTest() override {
    ::DestroyMenu(bar);
    ::DestroyWindow(owner);
  }
  [[nodiscard]] HWND MainWindow() const override { return owner; }
  void RefreshRuleList() override {}
  void EndMainWindow(INT_PTR) override { ended = true; }
  [[nodiscard]] bool Has(int id, UINT state) const {
    return (::GetMenuState(popup, static_cast<UINT>(id), MF_BYCOMMAND) & state) != 0;
  }

  HWND owner = ::CreateWindowW(L"STATIC", L"", 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
  SettingsPage page{program};
  HMENU bar = ::LoadMenuW(program.instance, MAKEINTRESOURCEW(IDR_MAIN_MENU));
  HMENU popup = ::GetSubMenu(bar, 3);
  bool ended = false;
};

TEST_F(SettingsMenuTest, AdministratorCommandsActByThemselvesOrByAnElevatedCopy) {
  const struct {
    WORD command;
    BOOL elevated;
    bool taskBefore;
    bool accepted;
    const wchar_t* arguments;  ///< of the copy; only the unelevated program asks for one
    bool taskAfter;            ///< only the elevated program touches the task
    bool ends;                 ///< the window; the copy itself asks the program to end
  } kRows[] = {
      {IDM_RUN_AS_ADMIN, TRUE, false, true, L"", false, false},
      {IDM_RUN_AS_ADMIN, FALSE, false, false, L"-restart", false, false},
      {IDM_RUN_AS_ADMIN, FALSE, true, true, L"-restart", true, true},
      {IDM_ADMIN_AT_LOGIN, TRUE, false, true, L"", true, false},
      {IDM_ADMIN_AT_LOGIN, TRUE, true, true, L"", false, false},
      {IDM_ADMIN_AT_LOGIN, FALSE, false, false, L"--install-admin-task, waited for, wait cursor", false, false},
      {IDM_ADMIN_AT_LOGIN, FALSE, true, true, L"--remove-admin-task, waited for, wait cursor", true, false},
  };
  SetElevationSystem(&kMadeUpElevation);
  FakeTaskScheduler scheduler;
  SettingsMenu menu(program, *this, page, [&scheduler] { return scheduler.taskExists; });
  const HCURSOR arrow = ::LoadCursorW(nullptr, IDC_ARROW);
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.command << " elevated " << row.elevated << " accepted " << row.accepted);
    elevated = row.elevated;
    promptAccepted = row.accepted;
    elevatedArguments.clear();
    scheduler.taskExists = row.taskBefore;
    ended = false;
    ::SetCursor(arrow);
    menu.OnInitMenuPopup(popup);
    EXPECT_EQ(Has(IDM_RUN_AS_ADMIN, MF_GRAYED), row.elevated != FALSE);
    EXPECT_EQ(Has(IDM_ADMIN_AT_LOGIN, MF_CHECKED), row.taskBefore);
    EXPECT_TRUE(menu.OnCommand(row.command));
    EXPECT_EQ(elevatedArguments, row.arguments);
    EXPECT_EQ(scheduler.taskExists, row.taskAfter);
    EXPECT_EQ(ended, row.ends);
    EXPECT_EQ(::GetCursor(), arrow);
  }
  SetElevationSystem(nullptr);
}

TEST_F(SettingsMenuTest, ASlowTaskSchedulersAnswerMarksTheOpenPopup) {
  std::promise<bool> gate;
  const std::shared_future<bool> answer = gate.get_future();
  SettingsMenu menu(program, *this, page, [answer] { return answer.get(); });
  const auto marked = [this] { return Has(IDM_ADMIN_AT_LOGIN, MF_CHECKED); };
  // The answer comes while the popup is open: the mark appears in it.
  std::thread user([&] {
    EXPECT_NE(WaitForPopup(), nullptr);
    EXPECT_FALSE(marked());
    gate.set_value(true);
    EXPECT_TRUE(WaitUntil(marked));
    ::PostMessageW(owner, WM_CANCELMODE, 0, 0);
  });
  menu.OnInitMenuPopup(popup);
  ::TrackPopupMenu(popup, TPM_RETURNCMD, 10, 10, 0, owner, nullptr);
  user.join();
}

}  // namespace
