#include "ui/settings_menu.h"

#include <future>

#include "app/messages.h"
#include "system/elevation_system.h"
#include "tests/system/fake_task_scheduler.h"
#include "tests/ui/program_window_fixture.h"
#include "ui/dialog_utilities.h"
#include "ui/main_window_host.h"
#include "ui/settings_page.h"

namespace {

BOOL elevated = TRUE;
bool promptAccepted = true;
bool waitCursorShown = false;
std::wstring elevatedArguments;

BOOL WINAPI TellToken(HANDLE, TOKEN_INFORMATION_CLASS, void* data, DWORD, DWORD*) {
  *static_cast<DWORD*>(data) = static_cast<DWORD>(elevated);
  return TRUE;
}

BOOL WINAPI Prompt(SHELLEXECUTEINFOW* request) {
  elevatedArguments += request->lpParameters;
  elevatedArguments += (request->fMask & SEE_MASK_NOCLOSEPROCESS) != 0 ? L" waited for;" : L";";
  waitCursorShown = ::GetCursor() == ::LoadCursorW(nullptr, IDC_WAIT);
  return promptAccepted;
}

const ElevationSystem kMadeUpElevation{::OpenProcessToken, TellToken, Prompt};

constexpr int kMonitoring = 2;
constexpr int kSettings = 3;

class SettingsMenuTest : public ProgramWindowTest {
 protected:
  void SetUp() override {
    ProgramWindowTest::SetUp();
    elevated = TRUE;
    elevatedArguments.clear();
    SetElevationSystem(&kMadeUpElevation);
  }
  void TearDown() override {
    ProgramWindowTest::TearDown();
    SetElevationSystem(nullptr);
  }

  /// The popup at the position of the menu bar, with its items' states as it opens.
  [[nodiscard]] HMENU Popup(int position) const {
    const HMENU popup = ::GetSubMenu(::GetMenu(Window()), position);
    ::SendMessageW(Window(), WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(popup), position);
    return popup;
  }
  static bool Has(HMENU popup, UINT id, UINT state) { return (::GetMenuState(popup, id, MF_BYCOMMAND) & state) != 0; }

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
  const struct {
    WORD command;
    std::uint32_t bit;  ///< in what Bits() returns
    int box;            ///< on the page; 0: none
  } kToggles[] = {{IDM_NOTIFY, ACTION_NOTIFY, IDC_NOTIFY},
                  {IDM_LOG, ACTION_LOG, IDC_LOG},
                  {IDM_SOUND, ACTION_SOUND, IDC_SOUND},
                  {IDM_INCLUDE_BETAS, 0x100, 0},
                  {IDM_START_WITH_WINDOWS, 0x200, 0}};
  const auto bits = [this] {
    const AppSettings now = settings.Get();
    return now.alertActions | (now.includeBetas ? 0x100U : 0U) | (IsStartWithWindowsEnabled() ? 0x200U : 0U);
  };
  const auto expectShown = [&] {
    const HMENU popup = Popup(kSettings);
    for (const auto& toggle : kToggles) {
      const bool on = (bits() & toggle.bit) != 0;
      EXPECT_EQ(Has(popup, toggle.command, MF_CHECKED), on) << toggle.command;
      EXPECT_TRUE(toggle.box == 0 || Checked(toggle.box) == on) << toggle.command;
    }
  };
  Open();
  Type(IDC_THROTTLE, L"98");  // a pending edit stays one
  ::EnableWindow(Item(IDC_APPLY), FALSE);
  for (const auto& toggle : kToggles) {
    for (int times = 0; times < 2; ++times) {
      const std::uint32_t flipped = bits() ^ toggle.bit;
      Command(toggle.command);
      EXPECT_EQ(bits(), flipped) << toggle.command;
      expectShown();
      EXPECT_TRUE(SavedAsInMemory());
    }
  }
  ::RegSetKeyValueW(HKEY_CURRENT_USER, kRunKey, L"Vantora", REG_SZ, L"", 2);  // by somebody else
  expectShown();
  EXPECT_FALSE(ApplyEnabled());
  EXPECT_EQ(Text(IDC_THROTTLE), L"98");
  EXPECT_EQ(settings.Get().notificationThrottleSec, 30U);
}

TEST_F(SettingsMenuTest, PauseAndResumeFollowTheEngine) {
  Open();
  for (const bool paused : {true, false, true}) {
    Command(paused ? IDM_PAUSE : IDM_RESUME);
    EXPECT_EQ(engine.Paused(), paused);
    EXPECT_EQ(Has(Popup(kMonitoring), IDM_PAUSE, MF_GRAYED), paused);
    EXPECT_EQ(Has(Popup(kMonitoring), IDM_RESUME, MF_GRAYED), !paused);
  }
  engine.SetPaused(false);  // from the tray menu
  EXPECT_FALSE(Has(Popup(kMonitoring), IDM_PAUSE, MF_GRAYED));
}

TEST_F(SettingsMenuTest, FrequencyItemsRearmTheTimerAndCarryTheRadioMark) {
  Open();
  for (const auto& [command, hours] : {std::pair{IDM_UPDATE_3_DAYS, 72U}, {IDM_UPDATE_WEEKLY, 168U}, {IDM_UPDATE_DAILY, 24U}}) {
    Command(command);
    EXPECT_EQ(settings.Get().updateCheckIntervalHours, hours);
    EXPECT_TRUE(SavedAsInMemory());
    EXPECT_EQ(TakePosts(), (Posts{{UWM_UPDATE_INTERVAL_CHANGED, 0}}));
  }
  constexpr std::pair<std::uint32_t, UINT> kMarks[] = {{0, IDM_UPDATE_DAILY},   {24, IDM_UPDATE_DAILY},
                                                       {25, IDM_UPDATE_3_DAYS}, {72, IDM_UPDATE_3_DAYS},
                                                       {73, IDM_UPDATE_WEEKLY}, {168, IDM_UPDATE_WEEKLY}};
  for (const auto& [hours, marked] : kMarks) {
    settings.Update([hours](AppSettings& s) { s.updateCheckIntervalHours = hours; });
    const HMENU popup = Popup(kSettings);
    for (UINT id = IDM_UPDATE_DAILY; id <= IDM_UPDATE_WEEKLY; ++id) EXPECT_EQ(Has(popup, id, MF_CHECKED), id == marked) << hours;
    EXPECT_TRUE(Has(popup, marked, MFT_RADIOCHECK));
  }
}

TEST_F(SettingsMenuTest, CommandsThatOpenWindowsOpenThem) {
  Open();
  Command(IDM_CHECK_FOR_UPDATES);
  EXPECT_EQ(TakePosts(), (Posts{{UWM_CHECK_FOR_UPDATES, 1}}));
  for (const auto& [command, title] : {std::pair{WORD{IDM_ABOUT}, L"About Vantora"}, {IDM_EXCLUSIONS, L"Process Exclusions"}}) {
    HWND dialog = OpenDialog(command, title);
    EXPECT_EQ(::GetWindow(dialog, GW_OWNER), Window());
    EXPECT_FALSE(::IsWindowEnabled(Window()));
    Answer(dialog, IDCANCEL);
  }
  Command(IDM_ALERT_LOG);
  HWND log = WaitForDialogWith(IDC_EXPORT_CSV);
  ASSERT_NE(log, nullptr);
  EXPECT_TRUE(::IsWindowEnabled(Window()));
  Answer(log, IDCANCEL);
}

TEST_F(SettingsMenuTest, ResetSettingsAsksAndRestoresTheDefaults) {
  settings.Update([](AppSettings& s) { s = {7, 99, 168, false, L"C:\\l", L"C:\\s", {1, 2, 700, 600}}; });
  engine.SetIntervalMs(5'000);
  engine.SetExclusions({L"a.exe"});
  engine.SetPaused(true);
  ToggleStartWithWindows();
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
  const std::pair<int, std::wstring> kShown[] = {
      {IDC_POLL_INTERVAL, L"30"}, {IDC_THROTTLE, L"30"}, {IDC_LOG_PATH, DefaultLogFilePath()}, {IDC_SOUND_PATH, L""}};
  for (const auto& [field, text] : kShown) EXPECT_EQ(Text(field), text);
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
    EXPECT_EQ(Rules().size(), static_cast<std::size_t>(left));
    ExpectSaved();
  }
  EXPECT_EQ(rules.TakeRuleId(), 6U);
  EXPECT_TRUE(folder.Has(L"rules.csv")) << "the file keeps its header";
}

TEST_F(SettingsMenuTest, RunAsAdministratorEndsTheWindowOnceTheCopyRuns) {
  Open();
  HWND window = Window();
  EXPECT_TRUE(Has(Popup(kSettings), IDM_RUN_AS_ADMIN, MF_GRAYED));
  Command(IDM_RUN_AS_ADMIN);
  elevated = FALSE;
  EXPECT_FALSE(Has(Popup(kSettings), IDM_RUN_AS_ADMIN, MF_GRAYED));
  promptAccepted = false;
  Command(IDM_RUN_AS_ADMIN);
  EXPECT_EQ(Window(), window);
  EXPECT_EQ(elevatedArguments, L"-restart;") << "only the unelevated program asks";
  promptAccepted = true;
  Command(IDM_RUN_AS_ADMIN);
  EXPECT_EQ(Window(), nullptr);
  EXPECT_TRUE(WaitUntil([window] { return ::IsWindow(window) == FALSE; }));
  EXPECT_TRUE(TakePosts().empty()) << "the copy itself asks this program to end";
}

/// The menu without the main window, on the test's own thread: what needs a Task Scheduler or a popup of the test's.
class SettingsMenuAloneTest : public SettingsMenuTest, public MainWindowHost {
 protected:
  [[nodiscard]] HWND MainWindow() const override { return program.trayWindow; }
  void RefreshRuleList() override {}
  void EndMainWindow(INT_PTR) override {}
  SettingsPage page{program};
};

TEST_F(SettingsMenuAloneTest, AdminAtLoginInstallsOrRemovesByItselfOrByAnElevatedCopy) {
  FakeTaskScheduler scheduler;
  SettingsMenu menu(program, *this, page);
  for (const bool installed : {true, false}) {
    EXPECT_TRUE(menu.OnCommand(IDM_ADMIN_AT_LOGIN));
    EXPECT_EQ(scheduler.taskExists, installed);
  }
  EXPECT_EQ(elevatedArguments, L"");
  elevated = FALSE;
  const HCURSOR arrow = ::LoadCursorW(nullptr, IDC_ARROW);
  for (const bool exists : {true, false}) {
    scheduler.taskExists = exists;
    promptAccepted = exists;
    elevatedArguments.clear();
    ::SetCursor(arrow);
    menu.OnCommand(IDM_ADMIN_AT_LOGIN);
    EXPECT_EQ(elevatedArguments, exists ? L"--remove-admin-task waited for;" : L"--install-admin-task waited for;");
    EXPECT_EQ(scheduler.taskExists, exists) << "only the copy touches the task";
    EXPECT_TRUE(waitCursorShown);
    EXPECT_EQ(::GetCursor(), arrow);
  }
}

TEST_F(SettingsMenuAloneTest, ASlowTaskSchedulerHoldsThePopupUpOnlyBriefly) {
  std::promise<bool> gate;
  const std::shared_future<bool> answer = gate.get_future();
  SettingsMenu menu(program, *this, page, [answer] { return answer.get(); });
  const HMENU bar = ::LoadMenuW(program.instance, MAKEINTRESOURCEW(IDR_MAIN_MENU));
  const HMENU popup = ::GetSubMenu(bar, kSettings);
  const auto millisecondsToOpen = [&menu](HMENU opening) {
    const ULONGLONG start = ::GetTickCount64();
    menu.OnInitMenuPopup(opening);
    return ::GetTickCount64() - start;
  };
  const auto marked = [popup] { return Has(popup, IDM_ADMIN_AT_LOGIN, MF_CHECKED); };
  EXPECT_LT(millisecondsToOpen(::GetSubMenu(bar, kMonitoring)), 150U) << "the other popups do not ask";
  const ULONGLONG slow = millisecondsToOpen(popup);
  EXPECT_GE(slow, 190U);
  EXPECT_LT(slow, 1'000U);
  EXPECT_FALSE(marked());

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
  EXPECT_LT(millisecondsToOpen(popup), 190U) << "an answer that is there is not waited for";
  EXPECT_TRUE(marked());
  ::DestroyMenu(bar);
}

}  // namespace
