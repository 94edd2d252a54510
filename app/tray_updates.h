#pragma once

// The tray window's part in updates: when a check runs, what is shown while it runs, and what its result brings. The check and
// the installation themselves run on threads of their own and know nothing of windows.

#include <windows.h>

#include <functional>
#include <memory>
#include <string>

#include "app/tray_icon.h"
#include "platform/event.h"
#include "ui/dialogs/update_progress_dialog.h"
#include "ui/program.h"

/// Tray window's thread only.
class TrayUpdates {
 public:
  /// Runs one check on the calling thread and signals the event at its end.
  using CheckRoutine = std::function<void(Event& done)>;

  TrayUpdates(Program& program, TrayIcon& icon, CheckRoutine check, std::function<void()> install);

  /// Creation of the tray window: arms the periodic check, asks for the first one, and reports an update that has just finished.
  void OnCreate(HWND window);
  /// Starts the periodic timer anew with the period in the settings.
  void ArmCheckTimer();
  /// Asks for a check as the periodic timer does.
  void PostAutomaticCheck();

  /// Starts a check. While one runs the request joins it; a request of the user makes the running check one of the user's, or
  /// brings the box with the last one's result forward while that is open.
  void RequestCheck(bool manual);
  /// Handles the result of a check that has ended; otherwise does nothing.
  void PollCheck();

  void ShowPostUpdateBalloon();
  void ShowUpdateAvailableBalloon();
  void OnBalloonClosed();
  /// True when the clicked balloon was about updates; an offered update is then being installed.
  bool OnBalloonClicked();

  /// Keyboard handling of the progress window; true when the message was meant for it and is done with.
  bool TranslateProgressMessage(MSG& message);
  /// The tray window is going away.
  void OnDestroy();

 private:
  void StartCheck();
  void HandleNoUpdate(bool manual);
  void HandleUpdate(bool manual);
  void StartInstallation();
  /// The result of the user's check; one at a time.
  int ShowBox(const std::wstring& text, UINT captionId, UINT style);

  Program& program_;
  TrayIcon& icon_;
  CheckRoutine check_;
  std::function<void()> install_;
  HWND window_ = nullptr;
  /// Shared with the check's thread, which may outlive the tray window.
  std::shared_ptr<Event> UpdateCheckDoneEvent_ = std::make_shared<Event>();
  UpdateProgressDialog progress_;
  std::wstring boxCaption_;
  bool boxOpen_ = false;
  bool checkRunning_ = false;
  bool ManualUpdateCheck_ = false;
  bool UpdateBalloonShown_ = false;
  bool PostUpdateBalloonShown_ = false;
};
