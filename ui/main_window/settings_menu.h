#pragma once

// The commands of the Monitoring, Settings and Help menus, which act at once, and the marks and greyed items that the menu bar
// shows.

#include <windows.h>

#include "autostart/logon_task.h"
#include "platform/background_query.h"
#include "ui/main_window/settings_rows.h"
#include "ui/program.h"

class MainWindowHost;
class SettingsPage;

/// Main window's thread only. Everything passed in must outlive it.
class SettingsMenu {
 public:
  /// `isAdminTaskInstalled` is asked on a thread of its own each time the Settings popup opens; a command asks the Task Scheduler
  /// itself.
  SettingsMenu(Program& program, MainWindowHost& host, SettingsPage& page,
               BackgroundQuery::Question isAdminTaskInstalled = IsAdminTaskInstalled);
  ~SettingsMenu();
  SettingsMenu(const SettingsMenu&) = delete;
  SettingsMenu& operator=(const SettingsMenu&) = delete;

  /// Sets every item's state on the popup that is about to open (WM_INITMENUPOPUP). Waits for the Task Scheduler only so long; a
  /// later answer corrects the mark while the popup is open.
  void OnInitMenuPopup(HMENU popup);
  /// True when the command is one of these menus'. May end the main window (Run as Administrator).
  bool OnCommand(WORD id);

 private:
  struct CommandTable;

  void ToggleAction(const AlertActionRow& row);
  void SetUpdateInterval(std::uint32_t hours);
  void ToggleBetas();
  void ResetSettings();
  void ResetRules();
  void RunAsAdmin();

  void Save() const;
  void PostToTray(UINT message, WPARAM wParam) const;
  [[nodiscard]] bool ConfirmReset(UINT questionId) const;

  void ShowAdminTaskState(HMENU popup);
  void StopWaitingForAnswer();
  static void CALLBACK OnAnswerPoll(HWND window, UINT message, UINT_PTR timerId, DWORD tick) noexcept;

  Program& program_;
  MainWindowHost& host_;
  SettingsPage& page_;
  BackgroundQuery adminTask_;
  HWND pollWindow_ = nullptr;  ///< the window that carries the poll timer; null: nothing is awaited
  HMENU awaitingPopup_ = nullptr;
};
