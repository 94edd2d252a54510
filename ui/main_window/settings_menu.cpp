#include "ui/main_window/settings_menu.h"

#include <string>
#include <utility>

#include "autostart/elevation.h"
#include "autostart/run_value.h"
#include "platform/thread.h"
#include "res/messages.h"
#include "res/resource.h"
#include "storage/data_folder.h"
#include "storage/settings_registry.h"
#include "ui/alerts/alert_log_window.h"
#include "ui/dialogs/about_dialog.h"
#include "ui/dialogs/exclusions_dialog.h"
#include "ui/framework/commands.h"
#include "ui/framework/resources.h"
#include "ui/main_window/main_window_frame.h"
#include "ui/main_window/menu_marks.h"
#include "ui/main_window/settings_page.h"
#include "ui/message_box/message_box.h"

namespace {

/// How long the opening of a popup waits for the Task Scheduler, which usually answers within milliseconds.
constexpr std::uint32_t kAnswerWaitMs = 200;
/// How often an open popup looks for an answer that did not come in that time.
constexpr UINT kAnswerPollMs = 100;

class WaitCursor {
 public:
  WaitCursor() : previous_(::SetCursor(::LoadCursorW(nullptr, IDC_WAIT))) {}
  ~WaitCursor() { ::SetCursor(previous_); }
  WaitCursor(const WaitCursor&) = delete;
  WaitCursor& operator=(const WaitCursor&) = delete;

 private:
  HCURSOR previous_;
};

/// The fields that a fresh installation starts with; the window's place is not among them.
void SetDefaults(AppSettings& settings) {
  const AppSettings defaults;
  settings.alertActions = defaults.alertActions;
  settings.notificationThrottleSec = defaults.notificationThrottleSec;
  settings.updateCheckIntervalHours = defaults.updateCheckIntervalHours;
  settings.includeBetas = defaults.includeBetas;
  settings.soundFilePath.clear();
}

void ToggleAdminAtLogin() {
  // All of it blocks this window, an elevated copy's prompt included.
  const WaitCursor waiting;
  const bool installed = IsAdminTaskInstalled();
  if (!IsProcessElevated()) {
    DWORD exitCode = 1;
    RunElevated(installed ? L"--remove-admin-task" : L"--install-admin-task", true, &exitCode);
  } else if (installed) {
    RemoveAdminTask();
  } else {
    InstallAdminTask();
  }
}

}  // namespace

struct SettingsMenu::CommandTable {
  static constexpr CommandRow<SettingsMenu> kRows[] = {
      {IDM_PAUSE, [](SettingsMenu& menu) { menu.program_.engine.SetPaused(true); }},
      {IDM_RESUME, [](SettingsMenu& menu) { menu.program_.engine.SetPaused(false); }},
      {IDM_ALERT_LOG,
       [](SettingsMenu& menu) { StartDetachedThread([&program = menu.program_] { AlertLogDialogThread(program); }); }},
      {IDM_ABOUT, [](SettingsMenu& menu) { RunAboutDialog(menu.host_.MainWindow(), menu.program_); }},
      {IDM_CHECK_FOR_UPDATES, [](SettingsMenu& menu) { menu.PostToTray(UWM_CHECK_FOR_UPDATES, 1); }},
      {IDM_START_WITH_WINDOWS, [](SettingsMenu&) { ToggleStartWithWindows(); }},
      {IDM_INCLUDE_BETAS, [](SettingsMenu& menu) { menu.ToggleBetas(); }},
      {IDM_EXCLUSIONS, [](SettingsMenu& menu) { RunExclusionsDialog(menu.host_.MainWindow(), menu.program_); }},
      {IDM_RESET_SETTINGS, [](SettingsMenu& menu) { menu.ResetSettings(); }},
      {IDM_RESET_RULES, [](SettingsMenu& menu) { menu.ResetRules(); }},
      {IDM_ADMIN_AT_LOGIN, [](SettingsMenu&) { ToggleAdminAtLogin(); }},
      {IDM_RUN_AS_ADMIN, [](SettingsMenu& menu) { menu.RunAsAdmin(); }},
  };
};

SettingsMenu::SettingsMenu(Program& program, MainWindowHost& host, SettingsPage& page,
                           BackgroundQuery::Question isAdminTaskInstalled)
    : program_(program), host_(host), page_(page), adminTask_(std::move(isAdminTaskInstalled)) {}

SettingsMenu::~SettingsMenu() { StopWaitingForAnswer(); }

bool SettingsMenu::OnCommand(WORD id) {
  for (const AlertActionRow& row : kAlertActionRows) {
    if (row.menuItem != id) continue;
    ToggleAction(row);
    return true;
  }
  for (const UpdateIntervalRow& row : kUpdateIntervalRows) {
    if (row.menuItem != id) continue;
    SetUpdateInterval(row.hours);
    return true;
  }
  return RunCommand<SettingsMenu>(*this, CommandTable::kRows, id);
}

void SettingsMenu::OnInitMenuPopup(HMENU popup) {
  const SettingsMenuFacts facts{
      .settings = program_.settings.Get(),
      .paused = program_.engine.Paused(),
      .startsWithWindows = IsStartWithWindowsEnabled(),
      .elevated = IsProcessElevated(),
  };
  ShowMenuState(popup, facts);
  ShowAdminTaskState(popup);
}

void SettingsMenu::ShowAdminTaskState(HMENU popup) {
  if (::GetMenuState(popup, IDM_ADMIN_AT_LOGIN, MF_BYCOMMAND) == static_cast<UINT>(-1)) return;
  StopWaitingForAnswer();
  adminTask_.Ask();
  const bool answered = adminTask_.Wait(kAnswerWaitMs);
  ShowAdminTaskMark(popup, adminTask_.LastAnswer());
  if (answered) return;
  // The timer's number is this object, so that its routine needs no other way to find it.
  const HWND window = host_.MainWindow();
  if (::SetTimer(window, reinterpret_cast<UINT_PTR>(this), kAnswerPollMs, OnAnswerPoll) == 0) return;
  pollWindow_ = window;
  awaitingPopup_ = popup;
}

void SettingsMenu::StopWaitingForAnswer() {
  if (pollWindow_ != nullptr) ::KillTimer(pollWindow_, reinterpret_cast<UINT_PTR>(this));
  pollWindow_ = nullptr;
}

void CALLBACK SettingsMenu::OnAnswerPoll(HWND, UINT, UINT_PTR timerId, DWORD) noexcept {
  auto& menu = *reinterpret_cast<SettingsMenu*>(timerId);
  const HWND popupWindow = FindPopupWindow(menu.awaitingPopup_);
  if (popupWindow == nullptr) {
    menu.StopWaitingForAnswer();
  } else if (menu.adminTask_.Wait(0)) {
    ShowAdminTaskMark(menu.awaitingPopup_, menu.adminTask_.LastAnswer());
    ::InvalidateRect(popupWindow, nullptr, TRUE);
    menu.StopWaitingForAnswer();
  }
}

void SettingsMenu::ToggleBetas() {
  program_.settings.Update([](AppSettings& settings) { settings.includeBetas = !settings.includeBetas; });
  Save();
}

void SettingsMenu::ResetSettings() {
  if (!ConfirmReset(IDS_ASK_RESET_SETTINGS)) return;
  const std::wstring logFilePath = DefaultLogFilePath();
  program_.settings.Update([&logFilePath](AppSettings& settings) {
    SetDefaults(settings);
    if (!logFilePath.empty()) settings.logFilePath = logFilePath;
  });
  program_.engine.SetIntervalMs(MonitorEngine::kDefaultIntervalMs);
  program_.engine.SetExclusions({});
  Save();
  page_.Fill();
  PostToTray(UWM_UPDATE_INTERVAL_CHANGED, 0);
}

void SettingsMenu::ResetRules() {
  if (!ConfirmReset(IDS_ASK_RESET_RULES)) return;
  program_.rules.RemoveAll();
  host_.RefreshRuleList();
}

void SettingsMenu::RunAsAdmin() {
  if (IsProcessElevated() || !RunElevated(L"-restart", false, nullptr)) return;
  // The elevated copy asks the tray window to end this instance; only its main window goes now.
  host_.EndMainWindow(IDCANCEL);
}

void SettingsMenu::ToggleAction(const AlertActionRow& row) {
  program_.settings.Update([&row](AppSettings& settings) { settings.alertActions ^= row.action; });
  page_.ShowAction(row);
  Save();
}

void SettingsMenu::SetUpdateInterval(std::uint32_t hours) {
  program_.settings.Update([hours](AppSettings& settings) { settings.updateCheckIntervalHours = hours; });
  PostToTray(UWM_UPDATE_INTERVAL_CHANGED, 0);
  Save();
}

void SettingsMenu::Save() const { SaveSettings(program_.settings, program_.engine); }

void SettingsMenu::PostToTray(UINT message, WPARAM wParam) const {
  if (const HWND tray = program_.trayWindow) ::PostMessageW(tray, message, wParam, 0);
}

bool SettingsMenu::ConfirmReset(UINT questionId) const {
  const std::wstring question = LoadResString(questionId);
  const std::wstring title = LoadResString(IDS_CONFIRM_RESET_TITLE);
  return XMessageBox(host_.MainWindow(), question.c_str(), title.c_str(), MB_YESNO | MB_ICONWARNING | MB_DEFBUTTON2) == IDYES;
}
