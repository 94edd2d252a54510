#include "app/tray_updates.h"

#include <utility>

#include "platform/diagnostics.h"
#include "platform/thread.h"
#include "res/messages.h"
#include "res/resource.h"
#include "ui/framework/resources.h"
#include "ui/main_window/version_link.h"
#include "ui/message_box/message_box.h"
#include "update/update_values.h"
#include "update/version.h"

namespace {

constexpr UINT kPollPeriodMs = 500;
constexpr UINT kMsPerHour = 3'600'000;
constexpr UINT kLinkTextTimeoutMs = 2'000;

void SetLinkText(HWND mainWindow, const std::wstring& text) {
  HWND link = mainWindow != nullptr ? ::GetDlgItem(mainWindow, IDC_VERSION_LINK) : nullptr;
  // The window lives on another thread, which may be busy: the tray must not hang with it.
  if (link != nullptr) {
    ::SendMessageTimeoutW(link, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()), SMTO_ABORTIFHUNG, kLinkTextTimeoutMs,
                          nullptr);
  }
}

}  // namespace

TrayUpdates::TrayUpdates(Program& program, TrayIcon& icon, CheckRoutine check, std::function<void()> install)
    : program_(program), icon_(icon), check_(std::move(check)), install_(std::move(install)), progress_(program.instance) {}

void TrayUpdates::OnCreate(HWND window) {
  window_ = window;
  std::uint32_t error = 0;
  // Without the event no check is ever seen to end, so RequestCheck then starts none.
  if (!UpdateCheckDoneEvent_->Create(Event::Reset::kAuto, error))
    DebugLog(L"TrayUpdates::OnCreate - CreateEvent failed: %u", error);
  ArmCheckTimer();
  ::PostMessageW(window_, WM_TIMER, IDT_UPDATE_CHECK, 0);
  if (TakeUpdateFinished()) ::PostMessageW(window_, UWM_SHOW_POST_UPDATE_NOTIFICATION, 0, 0);
}

void TrayUpdates::ArmCheckTimer() {
  ::SetTimer(window_, IDT_UPDATE_CHECK, program_.settings.Get().updateCheckIntervalHours * kMsPerHour, nullptr);
}

void TrayUpdates::PostAutomaticCheck() { ::PostMessageW(window_, UWM_CHECK_FOR_UPDATES, 0, 0); }

void TrayUpdates::RequestCheck(bool manual) {
  if (!UpdateCheckDoneEvent_->IsOpen()) return;
  if (manual && boxOpen_) {
    BringMessageBoxForward(boxCaption_);
    return;
  }
  if (manual) ManualUpdateCheck_ = true;
  if (!checkRunning_) StartCheck();
  if (ManualUpdateCheck_) progress_.Open();
}

void TrayUpdates::StartCheck() {
  std::function<void()> routine = [check = check_, done = UpdateCheckDoneEvent_] { check(*done); };
  program_.updates.UpdateAvailableEvent.Clear();
  UpdateCheckDoneEvent_->Clear();
  ::SetTimer(window_, IDT_UPDATE_POLL, kPollPeriodMs, nullptr);
  checkRunning_ = true;
  if (StartDetachedThread(std::move(routine))) return;
  // A check that cannot even start ends as one that failed.
  program_.updates.SetLatestVersion(AppVersionDisplay);
  UpdateCheckDoneEvent_->Signal();
}

void TrayUpdates::PollCheck() {
  if (!checkRunning_ || UpdateCheckDoneEvent_->Wait(0) != WaitResult::kSignaled) return;
  DebugLog(L"Update check finished. Handling results.");
  progress_.Close();
  // Settled before the boxes below, which run a message loop of their own: a request that arrives under one starts a new check.
  const bool manual = std::exchange(ManualUpdateCheck_, false);
  checkRunning_ = false;
  ::KillTimer(window_, IDT_UPDATE_POLL);
  if (IsNewerVersion(program_.updates.LatestVersion())) {
    HandleUpdate(manual);
  } else {
    HandleNoUpdate(manual);
  }
}

void TrayUpdates::HandleNoUpdate(bool manual) {
  program_.updates.UpdateAvailableEvent.Clear();
  if (manual) (void)ShowBox(LoadResString(IDS_NO_UPDATE), IDS_APP_TITLE, MB_OK | MB_ICONINFORMATION);
  // The box may have been open for so long that a later check has found something.
  SetLinkText(program_.MainDialogHandle.Get(), VersionLinkText(program_.updates));
}

void TrayUpdates::HandleUpdate(bool manual) {
  DebugLog(L"Update available. Signaling.");
  program_.updates.UpdateAvailableEvent.Signal();
  if (!manual) ::PostMessageW(window_, UWM_SHOW_UPDATE_AVAILABLE_NOTIFICATION, 0, 0);
  if (HWND mainWindow = program_.MainDialogHandle.Get()) ::PostMessageW(mainWindow, UWM_UPDATE_AVAILABLE, 0, 0);
  if (!manual) return;
  const std::wstring question = FormatResString(IDS_ASK_UPDATE_NOW, program_.updates.LatestVersion().c_str());
  if (ShowBox(question, IDS_UPDATE_AVAILABLE_TITLE, MB_YESNO | MB_ICONQUESTION) == IDYES) StartInstallation();
}

int TrayUpdates::ShowBox(const std::wstring& text, UINT captionId, UINT style) {
  boxCaption_ = LoadResString(captionId);
  boxOpen_ = true;
  const int answer = XMessageBox(nullptr, text.c_str(), boxCaption_.c_str(), style | MB_SETFOREGROUND);
  boxOpen_ = false;
  return answer;
}

void TrayUpdates::StartInstallation() { StartDetachedThread(install_); }

void TrayUpdates::ShowPostUpdateBalloon() {
  DebugLog(L"UWM_SHOW_POST_UPDATE_NOTIFICATION");
  icon_.ShowBalloon(LoadResString(IDS_UPDATED_TITLE), FormatResString(IDS_UPDATED_TEXT, AppVersionDisplay));
  PostUpdateBalloonShown_ = true;
}

void TrayUpdates::ShowUpdateAvailableBalloon() {
  DebugLog(L"UWM_SHOW_UPDATE_AVAILABLE_NOTIFICATION");
  icon_.ShowBalloon(LoadResString(IDS_UPDATE_AVAILABLE_TITLE),
                    FormatResString(IDS_UPDATE_AVAILABLE_TEXT, program_.updates.LatestVersion().c_str()));
  UpdateBalloonShown_ = true;
}

void TrayUpdates::OnBalloonClosed() {
  UpdateBalloonShown_ = false;
  PostUpdateBalloonShown_ = false;
}

bool TrayUpdates::OnBalloonClicked() {
  if (std::exchange(UpdateBalloonShown_, false)) {
    StartInstallation();
    return true;
  }
  return std::exchange(PostUpdateBalloonShown_, false);
}

bool TrayUpdates::TranslateProgressMessage(MSG& message) {
  return progress_.IsOpen() && ::IsDialogMessageW(progress_.Window(), &message) != FALSE;
}

void TrayUpdates::OnDestroy() { progress_.Close(); }
