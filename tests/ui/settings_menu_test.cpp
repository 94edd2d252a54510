#include "ui/main_window/settings_menu.h"
#include "storage/data_folder.h"

#include <future>
#include <thread>
#include <tuple>

#include "autostart/elevation_system.h"
#include "autostart/run_value.h"
#include "res/messages.h"
#include "tests/support/fake_task_scheduler.h"
#include "tests/support/program_window_fixture.h"
#include "ui/framework/resources.h"
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

constexpr int kMonitoring = 2;
constexpr int kSettings = 3;

class SettingsMenuTest : public ProgramWindowTest {
 protected:
  /// The popup at the position of the menu bar, with its items' states as it opens.
  [[nodiscard]] HMENU Popup(int position) const {
    const HMENU popup = ::GetSubMenu(::GetMenu(Window()), position);
    ::SendMessageW(Window(), WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(popup), position);
    return popup;
  }
  static bool Has(HMENU popup, int id, UINT state) {
    return (::GetMenuState(popup, static_cast<UINT>(id), MF_BYCOMMAND) & state) != 0;
  }

  /// Runs a reset command and answers its question.
  void Reset(WORD command, UINT questionId, WORD answer) {
    HWND box = OpenDialog(command, L"Confirm Reset");
    EXPECT_EQ(::GetWindow(box, GW_OWNER), Window());
    EXPECT_TRUE(WaitUntil([box] { return FocusOf(box) == ::GetDlgItem(box, IDNO); })) << "No is the default";
    EXPECT_NE(::FindWindowExW(box, nullptr, nullptr, LoadResString(questionId).c_str()), nullptr);
    Answer(box, answer);
  }
};

TEST_F(SettingsMenuTest, TogglesActAtOnceShowTheirMarkAndLeaveThePageAlone) {
  // The command, its bit in what bits() returns, its box on the page (0: none).
  constexpr std::tuple<int, std::uint32_t, int> kToggles[] = {{IDM_NOTIFY, ACTION_NOTIFY, IDC_NOTIFY},
                                                              {IDM_LOG, ACTION_LOG, IDC_LOG},
                                                              {IDM_SOUND, ACTION_SOUND, IDC_SOUND},
                                                              {IDM_INCLUDE_BETAS, 0x100, 0},
                                                              {IDM_START_WITH_WINDOWS, 0x200, 0}};
  const auto bits = [this] {
    const AppSettings now = settings.Get();
    return now.alertActions | (now.includeBetas ? 0x100U : 0U) | (IsStartWithWindowsEnabled() ? 0x200U : 0U);
  };
  ::RegSetKeyValueW(HKEY_CURRENT_USER, kRunKey, L"Vantora", REG_SZ, L"", 2);
  Open();
  Type(IDC_THROTTLE, L"98");  // a pending edit stays one
  ::CheckDlgButton(Window(), IDC_SOUND, BST_CHECKED);
  Command(IDM_NOTIFY);
  EXPECT_TRUE(Checked(IDC_SOUND)) << "so does another action's box";
  Command(IDM_NOTIFY);
  ::CheckDlgButton(Window(), IDC_SOUND, BST_UNCHECKED);
  ::EnableWindow(Item(IDC_APPLY), FALSE);
  for (const auto& [command, bit, box] : kToggles) {
    for (int times = 0; times < 2; ++times) {
      SCOPED_TRACE(command);
      const std::uint32_t flipped = bits() ^ bit;
      Command(command);
      EXPECT_EQ(bits(), flipped);
      const HMENU popup = Popup(kSettings);
      for (const auto& [item, itsBit, itsBox] : kToggles) {
        EXPECT_EQ(Has(popup, item, MF_CHECKED), (flipped & itsBit) != 0) << item;
        EXPECT_TRUE(itsBox == 0 || Checked(itsBox) == ((flipped & itsBit) != 0)) << item;
      }
      EXPECT_TRUE(SavedAsInMemory());
    }
  }
  ::RegDeleteKeyValueW(HKEY_CURRENT_USER, kRunKey, L"Vantora");  // by somebody else
  EXPECT_FALSE(Has(Popup(kSettings), IDM_START_WITH_WINDOWS, MF_CHECKED));
  EXPECT_FALSE(ApplyEnabled());
  EXPECT_EQ(Text(IDC_THROTTLE), L"98");
  EXPECT_EQ(settings.Get().notificationThrottleSec, 30U);
}

TEST_F(SettingsMenuTest, PauseAndResumeFollowTheEngine) {
  Open();
  for (const bool paused : {true, false}) {
    Command(paused ? IDM_PAUSE : IDM_RESUME);
    EXPECT_EQ(engine.Paused(), paused);
    EXPECT_EQ(Has(Popup(kMonitoring), IDM_PAUSE, MF_GRAYED), paused);
    EXPECT_EQ(Has(Popup(kMonitoring), IDM_RESUME, MF_GRAYED), !paused);
  }
}

TEST_F(SettingsMenuTest, FrequencyItemsRearmTheTimerAndCarryTheRadioMark) {
  Open();
  for (const auto& [item, hours, othersAlike] :
       {std::tuple{IDM_UPDATE_3_DAYS, 72U, 25U}, {IDM_UPDATE_WEEKLY, 168U, 73U}, {IDM_UPDATE_DAILY, 24U, 0U}}) {
    Command(item);
    EXPECT_EQ(settings.Get().updateCheckIntervalHours, hours);
    EXPECT_TRUE(SavedAsInMemory());
    EXPECT_EQ(TakePosts(), (Posts{{UWM_UPDATE_INTERVAL_CHANGED, 0}}));
    for (const std::uint32_t shown : {hours, othersAlike}) {
      settings.Update([shown](AppSettings& s) { s.updateCheckIntervalHours = shown; });
      const HMENU popup = Popup(kSettings);
      for (int id = IDM_UPDATE_DAILY; id <= IDM_UPDATE_WEEKLY; ++id) EXPECT_EQ(Has(popup, id, MF_CHECKED), id == item) << shown;
      EXPECT_TRUE(Has(popup, item, MFT_RADIOCHECK));
    }
  }
}

TEST_F(SettingsMenuTest, ResetSettingsAsksAndRestoresTheDefaults) {
  settings.Update([](AppSettings& s) { s = {7, 99, 168, false, L"C:\\l", L"C:\\s", {1, 2, 700, 600}}; });
  engine.SetIntervalMs(5'000);
  engine.SetExclusions({L"a.exe"});
  engine.SetPaused(true);
  ::RegSetKeyValueW(HKEY_CURRENT_USER, kRunKey, L"Vantora", REG_SZ, L"", 2);
  Open();
  const AppSettings before = settings.Get();
  Reset(IDM_RESET_SETTINGS, IDS_ASK_RESET_SETTINGS, IDNO);
  EXPECT_EQ(settings.Get(), before);
  EXPECT_EQ(engine.IntervalMs(), 5'000U);
  EXPECT_FALSE(ApplyEnabled());
  EXPECT_TRUE(TakePosts().empty());

  Reset(IDM_RESET_SETTINGS, IDS_ASK_RESET_SETTINGS, IDYES);
  EXPECT_EQ(settings.Get(), (AppSettings{3, 30, 24, true, DefaultLogFilePath(), L"", before.mainDialogPlacement}));
  EXPECT_TRUE(DefaultLogFilePath().ends_with(L"\\Vantora\\alerts.log"));
  EXPECT_EQ(engine.IntervalMs(), 30'000U);
  EXPECT_TRUE(engine.Exclusions()->empty());
  EXPECT_TRUE(SavedAsInMemory());
  EXPECT_EQ(Text(IDC_POLL_INTERVAL) + L" " + Text(IDC_THROTTLE), L"30 30");
  EXPECT_EQ(Text(IDC_LOG_PATH) + Text(IDC_SOUND_PATH), DefaultLogFilePath());
  EXPECT_TRUE(Checked(IDC_NOTIFY) && Checked(IDC_LOG) && !Checked(IDC_SOUND));
  EXPECT_TRUE(ApplyEnabled());
  EXPECT_EQ(TakePosts(), (Posts{{UWM_UPDATE_INTERVAL_CHANGED, 0}}));
  EXPECT_TRUE(engine.Paused() && IsStartWithWindowsEnabled()) << "not among what is reset";
}

TEST_F(SettingsMenuTest, ResetRulesAsksAndEmptiesListAndFile) {
  for (int i = 0; i < 5; ++i) rules.Append({MakeNewRule(rules.TakeRuleId())});
  Open();
  for (const auto& [answer, left] : {std::pair{WORD{IDNO}, 5}, {WORD{IDYES}, 0}}) {
    Reset(IDM_RESET_RULES, IDS_ASK_RESET_RULES, answer);
    EXPECT_EQ(RowCount(list), left);
    ExpectSaved();
  }
  EXPECT_EQ(rules.TakeRuleId(), 6U);
  EXPECT_TRUE(folder.Has(L"rules.csv")) << "the file keeps its header";
}

/// The menu without the main window, on the test's own thread: what needs a Task Scheduler or a popup of the test's.
class SettingsMenuAloneTest : public SettingsMenuTest, public MainWindowHost {
 protected:
  ~SettingsMenuAloneTest() override { ::DestroyMenu(bar); }
  [[nodiscard]] HWND MainWindow() const override { return program.trayWindow; }
  void RefreshRuleList() override {}
  void EndMainWindow(INT_PTR) override { ended = true; }

  SettingsPage page{program};
  HMENU bar = ::LoadMenuW(program.instance, MAKEINTRESOURCEW(IDR_MAIN_MENU));
  HMENU popup = ::GetSubMenu(bar, kSettings);
  bool ended = false;
};

TEST_F(SettingsMenuAloneTest, AdministratorCommandsActByThemselvesOrByAnElevatedCopy) {
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
    EXPECT_EQ(Has(popup, IDM_RUN_AS_ADMIN, MF_GRAYED), row.elevated != FALSE);
    EXPECT_EQ(Has(popup, IDM_ADMIN_AT_LOGIN, MF_CHECKED), row.taskBefore);
    EXPECT_TRUE(menu.OnCommand(row.command));
    EXPECT_EQ(elevatedArguments, row.arguments);
    EXPECT_EQ(scheduler.taskExists, row.taskAfter);
    EXPECT_EQ(ended, row.ends);
    EXPECT_EQ(::GetCursor(), arrow);
  }
  EXPECT_TRUE(TakePosts().empty());
  SetElevationSystem(nullptr);
}

TEST_F(SettingsMenuAloneTest, ASlowTaskSchedulersAnswerMarksTheOpenPopup) {
  std::promise<bool> gate;
  const std::shared_future<bool> answer = gate.get_future();
  SettingsMenu menu(program, *this, page, [answer] { return answer.get(); });
  const auto marked = [this] { return Has(popup, IDM_ADMIN_AT_LOGIN, MF_CHECKED); };
  // The answer comes while the popup is open: the mark appears in it.
  std::thread user([&] {
    EXPECT_NE(WaitForPopup(), nullptr);
    EXPECT_FALSE(marked());
    gate.set_value(true);
    EXPECT_TRUE(WaitUntil(marked));
    ::PostMessageW(program.trayWindow, WM_CANCELMODE, 0, 0);
  });
  menu.OnInitMenuPopup(popup);
  ::TrackPopupMenu(popup, TPM_RETURNCMD, 10, 10, 0, program.trayWindow, nullptr);
  user.join();
}

}  // namespace
