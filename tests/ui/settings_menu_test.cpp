#include "ui/settings_menu.h"

#include <commctrl.h>

#include <future>
#include <map>

#include "app/messages.h"
#include "system/elevation_system.h"
#include "system/executable_path.h"
#include "system/run_value.h"
#include "tests/system/fake_task_scheduler.h"
#include "tests/ui/settings_fixture.h"
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

class SettingsMenuTest : public SettingsFixture {
 protected:
  void SetUp() override {
    SettingsFixture::SetUp();
    elevated = TRUE;
    promptAccepted = true;
    elevatedArguments.clear();
    SetElevationSystem(&kMadeUpElevation);
  }
  void TearDown() override {
    SettingsFixture::TearDown();
    SetElevationSystem(nullptr);
  }

  /// The item's state as the popup at `position` of the menu bar opens.
  [[nodiscard]] UINT State(int position, UINT id) const {
    const HMENU popup = ::GetSubMenu(::GetMenu(window), position);
    ::SendMessageW(window, WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(popup), position);
    return ::GetMenuState(popup, id, MF_BYCOMMAND);
  }
  static constexpr int kMonitoring = 2;
  static constexpr int kSettings = 3;
  [[nodiscard]] bool Marked(UINT id) const { return (State(kSettings, id) & MF_CHECKED) != 0; }
  [[nodiscard]] bool Greyed(int position, UINT id) const { return (State(position, id) & MF_GRAYED) != 0; }

  /// Runs a reset command and answers its question.
  void Reset(WORD command, UINT questionId, int answer) const {
    PostCommand(window, command);
    const HWND box = WaitForDialog(IDNO);
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(TextOf(box), L"Confirm Reset");
    EXPECT_EQ(::GetWindow(box, GW_OWNER), window);
    GUITHREADINFO focus{};
    focus.cbSize = sizeof focus;
    ::GetGUIThreadInfo(::GetWindowThreadProcessId(box, nullptr), &focus);
    EXPECT_EQ(focus.hwndFocus, ::GetDlgItem(box, IDNO)) << "No is the default";
    bool asked = false;
    for (HWND child = nullptr; (child = ::FindWindowExW(box, child, nullptr, nullptr)) != nullptr;) {
      asked = asked || TextOf(child) == LoadResString(questionId);
    }
    EXPECT_TRUE(asked);
    Answer(box, answer);
    ::SendMessageW(window, WM_NULL, 0, 0);
  }
};

TEST_F(SettingsMenuTest, ActionTogglesSaveAtOnceAndLeaveThePageAlone) {
  OpenWindow();
  struct Row {
    WORD command;
    int box;
    std::uint32_t action;
  };
  for (const Row& row :
       {Row{IDM_NOTIFY, IDC_NOTIFY, ACTION_NOTIFY}, {IDM_LOG, IDC_LOG, ACTION_LOG}, {IDM_SOUND, IDC_SOUND, ACTION_SOUND}}) {
    for (int times = 0; times < 2; ++times) {
      const std::uint32_t flipped = settings.Get().alertActions ^ row.action;
      Type(IDC_THROTTLE, L"99");  // a pending edit stays one
      Click(IDC_APPLY);
      Type(IDC_THROTTLE, L"98");
      ::EnableWindow(Item(IDC_APPLY), FALSE);
      Command(row.command);
      EXPECT_EQ(settings.Get().alertActions, flipped);
      EXPECT_EQ(Checked(row.box), (flipped & row.action) != 0);
      EXPECT_EQ(Marked(row.command), (flipped & row.action) != 0);
      EXPECT_FALSE(ApplyEnabled());
      EXPECT_EQ(Text(IDC_THROTTLE), L"98");
      EXPECT_EQ(settings.Get().notificationThrottleSec, 99U);
      EXPECT_TRUE(SavedAsInMemory());
    }
  }
}

TEST_F(SettingsMenuTest, PauseAndResumeFollowTheEngine) {
  OpenWindow();
  for (const bool paused : {true, false}) {
    Command(paused ? IDM_PAUSE : IDM_RESUME);
    EXPECT_EQ(engine.Paused(), paused);
    EXPECT_EQ(Greyed(kMonitoring, IDM_PAUSE), paused);
    EXPECT_EQ(Greyed(kMonitoring, IDM_RESUME), !paused);
  }
  engine.SetPaused(true);  // from the tray menu
  EXPECT_TRUE(Greyed(kMonitoring, IDM_PAUSE));
}

TEST_F(SettingsMenuTest, FrequencyItemsRearmTheTimerAndCarryTheRadioMark) {
  OpenWindow();
  struct Row {
    WORD command;
    std::uint32_t hours;
  };
  for (const Row& row : {Row{IDM_UPDATE_3_DAYS, 72}, {IDM_UPDATE_WEEKLY, 168}, {IDM_UPDATE_DAILY, 24}}) {
    Command(row.command);
    EXPECT_EQ(settings.Get().updateCheckIntervalHours, row.hours);
    EXPECT_TRUE(SavedAsInMemory());
    EXPECT_EQ(TakePosted(), (std::vector<Posted>{{UWM_UPDATE_INTERVAL_CHANGED, 0}}));
  }
  const std::map<std::uint32_t, UINT> marks = {{0, IDM_UPDATE_DAILY},   {24, IDM_UPDATE_DAILY},  {25, IDM_UPDATE_3_DAYS},
                                               {72, IDM_UPDATE_3_DAYS}, {73, IDM_UPDATE_WEEKLY}, {168, IDM_UPDATE_WEEKLY}};
  for (const auto& [hours, marked] : marks) {
    settings.Update([&hours](AppSettings& s) { s.updateCheckIntervalHours = hours; });
    for (UINT id = IDM_UPDATE_DAILY; id <= IDM_UPDATE_WEEKLY; ++id) EXPECT_EQ(Marked(id), id == marked) << hours;
  }
  MENUITEMINFOW info{};
  info.cbSize = sizeof info;
  info.fMask = MIIM_FTYPE;
  ::GetMenuItemInfoW(::GetSubMenu(::GetMenu(window), kSettings), IDM_UPDATE_WEEKLY, FALSE, &info);
  EXPECT_NE(info.fType & MFT_RADIOCHECK, 0U);
}

TEST_F(SettingsMenuTest, BetasAndStartWithWindowsShowWhatTheyAre) {
  OpenWindow();
  for (const bool betas : {false, true}) {
    Command(IDM_INCLUDE_BETAS);
    EXPECT_EQ(settings.Get().includeBetas, betas);
    EXPECT_EQ(Marked(IDM_INCLUDE_BETAS), betas);
    EXPECT_TRUE(SavedAsInMemory());
  }
  EXPECT_FALSE(Marked(IDM_START_WITH_WINDOWS));
  ::RegSetKeyValueW(HKEY_CURRENT_USER, kRunKey, L"Vantora", REG_SZ, L"", 2);  // by somebody else
  EXPECT_TRUE(Marked(IDM_START_WITH_WINDOWS));
  Command(IDM_START_WITH_WINDOWS);
  EXPECT_FALSE(IsStartWithWindowsEnabled());
  Command(IDM_START_WITH_WINDOWS);
  EXPECT_TRUE(Marked(IDM_START_WITH_WINDOWS));
}

TEST_F(SettingsMenuTest, CommandsThatOpenWindowsOpenThem) {
  OpenWindow();
  Command(IDM_CHECK_FOR_UPDATES);
  EXPECT_EQ(TakePosted(), (std::vector<Posted>{{UWM_CHECK_FOR_UPDATES, 1}}));
  for (const auto& [command, control] : {std::pair{IDM_ABOUT, IDC_ABOUT_NAME}, {IDM_EXCLUSIONS, IDC_EXCLUSIONS}}) {
    PostCommand(window, command);
    const HWND dialog = WaitForDialog(control);
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(::GetWindow(dialog, GW_OWNER), window);
    EXPECT_FALSE(::IsWindowEnabled(window));
    Answer(dialog, IDCANCEL);
  }
  Command(IDM_ALERT_LOG);
  Command(IDM_ALERT_LOG);
  ASSERT_TRUE(WaitUntil([] { return DialogsWith(IDC_EXPORT_CSV).size() == 2; }));
  EXPECT_TRUE(::IsWindowEnabled(window));
  for (const HWND log : DialogsWith(IDC_EXPORT_CSV)) Answer(log, IDCANCEL);
}

TEST_F(SettingsMenuTest, ResetSettingsAsksAndRestoresTheDefaults) {
  settings.Update([](AppSettings& s) { s = {7, 99, 168, false, L"C:\\l", L"C:\\s", {1, 2, 700, 600}}; });
  engine.SetIntervalMs(5'000);
  engine.SetExclusions({L"a.exe"});
  engine.SetPaused(true);
  ToggleStartWithWindows();
  OpenWindow();
  const AppSettings before = settings.Get();
  Reset(IDM_RESET_SETTINGS, IDS_ASK_RESET_SETTINGS, IDNO);
  EXPECT_EQ(settings.Get(), before);
  EXPECT_EQ(engine.IntervalMs(), 5'000U);
  EXPECT_FALSE(ApplyEnabled());
  EXPECT_TRUE(TakePosted().empty());

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
  EXPECT_EQ(TakePosted(), (std::vector<Posted>{{UWM_UPDATE_INTERVAL_CHANGED, 0}}));
  EXPECT_TRUE(engine.Paused() && IsStartWithWindowsEnabled()) << "not among what is reset";
}

TEST_F(SettingsMenuTest, ResetRulesAsksAndEmptiesListAndFile) {
  RuleList five;
  for (int i = 0; i < 5; ++i) five.push_back(MakeNewRule(rules.TakeRuleId()));
  rules.Append(five);
  OpenWindow();
  const auto rows = [this] { return ::SendMessageW(Item(IDC_RULE_LIST), LVM_GETITEMCOUNT, 0, 0); };
  Reset(IDM_RESET_RULES, IDS_ASK_RESET_RULES, IDNO);
  EXPECT_EQ(rows(), 5);
  Reset(IDM_RESET_RULES, IDS_ASK_RESET_RULES, IDYES);
  EXPECT_EQ(rows(), 0);
  EXPECT_TRUE(rules.Snapshot()->empty());
  EXPECT_EQ(rules.TakeRuleId(), 6U);
  RuleStore saved([] { return std::wstring(); });
  EXPECT_TRUE(saved.Load(folder.File(L"rules.csv"))) << "the file keeps its header";
  EXPECT_TRUE(saved.Snapshot()->empty());
}

TEST_F(SettingsMenuTest, RunAsAdministratorEndsTheWindowOnceTheCopyRuns) {
  OpenWindow();
  EXPECT_TRUE(Greyed(kSettings, IDM_RUN_AS_ADMIN));
  Command(IDM_RUN_AS_ADMIN);
  elevated = FALSE;
  EXPECT_FALSE(Greyed(kSettings, IDM_RUN_AS_ADMIN));
  promptAccepted = false;
  Command(IDM_RUN_AS_ADMIN);
  EXPECT_EQ(program.MainDialogHandle, window);
  EXPECT_EQ(elevatedArguments, L"-restart;") << "only the unelevated program asks";
  promptAccepted = true;
  Command(IDM_RUN_AS_ADMIN);
  EXPECT_EQ(program.MainDialogHandle, nullptr);
  EXPECT_TRUE(WaitUntil([this] { return ::IsWindow(window) == FALSE; }));
  EXPECT_TRUE(TakePosted().empty()) << "the copy itself asks this program to end";
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
  const auto gate = std::make_shared<std::promise<bool>>();
  auto answer = std::make_shared<std::shared_future<bool>>(gate->get_future());
  SettingsMenu menu(program, *this, page, [answer] { return answer->get(); });
  const HMENU bar = ::LoadMenuW(program.instance, MAKEINTRESOURCEW(IDR_MAIN_MENU));
  const auto millisecondsToOpen = [&](int position) {
    const ULONGLONG start = ::GetTickCount64();
    menu.OnInitMenuPopup(::GetSubMenu(bar, position));
    return ::GetTickCount64() - start;
  };
  const HMENU popup = ::GetSubMenu(bar, kSettings);
  const auto marked = [popup] { return (::GetMenuState(popup, IDM_ADMIN_AT_LOGIN, MF_BYCOMMAND) & MF_CHECKED) != 0; };
  EXPECT_LT(millisecondsToOpen(kMonitoring), 150U) << "the other popups do not ask";
  const ULONGLONG slow = millisecondsToOpen(kSettings);
  EXPECT_GE(slow, 190U);
  EXPECT_LT(slow, 1'000U);
  EXPECT_FALSE(marked());

  // The answer comes while the popup is open: the mark appears in it.
  std::thread user([&] {
    EXPECT_TRUE(WaitUntil([] { return ::FindWindowW(L"#32768", nullptr) != nullptr; }));
    EXPECT_FALSE(marked());
    gate->set_value(true);
    EXPECT_TRUE(WaitUntil(marked));
    ::PostMessageW(program.trayWindow, WM_CANCELMODE, 0, 0);
  });
  menu.OnInitMenuPopup(popup);
  ::TrackPopupMenu(popup, TPM_RETURNCMD, 10, 10, 0, program.trayWindow, nullptr);
  user.join();
  EXPECT_LT(millisecondsToOpen(kSettings), 190U) << "an answer that is there is not waited for";
  EXPECT_TRUE(marked());
  ::DestroyMenu(bar);
}

}  // namespace
