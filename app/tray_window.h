#pragma once

// The program's hidden top-level window on the main thread: owns the icon and its menu, receives every message addressed to the
// program as a whole, and ends the program when it is destroyed. Icon, menu, updates and alert delivery are subjects of their
// own.

#include <windows.h>

#include <functional>

#include "app/alert_outputs.h"
#include "app/gui_alert_sink.h"
#include "app/running_instance.h"
#include "app/tray_icon.h"
#include "app/tray_menu.h"
#include "app/tray_updates.h"
#include "core/alert_delivery.h"
#include "ui/program.h"

/// What the tray window starts on threads of their own.
struct TrayRoutines {
  std::function<void()> runMainWindow;
  std::function<void()> runAlertLog;
  std::function<void()> installUpdate;
  TrayUpdates::CheckRoutine checkForUpdates;
};

/// Main thread only. Not movable: the window points at it.
class TrayWindow {
 public:
  TrayWindow(Program& program, GUIAlertSink& sink, TrayRoutines routines, PlaySoundFunction playSound);
  TrayWindow(const TrayWindow&) = delete;
  TrayWindow& operator=(const TrayWindow&) = delete;

  static bool RegisterWindowClass(HINSTANCE instance, const std::wstring& windowClass);

  /// Creates the window, never shown, and makes it the program's tray window and the sink's target. Null on failure.
  HWND Create(const InstanceName& name);

  /// To be asked for each message of the thread before it is dispatched: true when it is done with.
  bool TranslateDialogMessage(MSG& message) { return updates_.TranslateProgressMessage(message); }

 private:
  /// What a message does; all of these return 0 to their sender.
  struct MessageRow {
    UINT message;
    void (*handle)(TrayWindow& tray, WPARAM wParam, LPARAM lParam);
  };
  static const MessageRow kMessages[];

  static LRESULT CALLBACK TrayWndProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
  LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam);

  void OnCreate();
  void OnDestroy();
  void OnTimer(WPARAM timerId);
  void OnTrayIcon(LPARAM notification);
  void OnAddIcon();
  void OnAlert(LPARAM address);
  void OnBalloonClicked();
  void ShowMenu();
  void SetPaused(bool paused);

  Program& program_;
  GUIAlertSink& sink_;
  TrayRoutines routines_;
  HWND window_ = nullptr;
  UINT taskbarCreated_ = 0;
  int AddIconRetries_ = 0;
  TrayIcon icon_;
  TrayMenu menu_;
  TrayUpdates updates_;
  TrayAlertOutputs alertOutputs_;
  AlertDelivery alertDelivery_;
};
