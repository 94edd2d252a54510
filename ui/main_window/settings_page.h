#pragma once

// The Settings page of the main window: shows the global settings, notices changes, and stores them when Apply is pressed. Menu
// commands that change settings at once are in settings_menu.

#include <windows.h>

#include "res/resource.h"
#include "ui/main_window/settings_rows.h"
#include "ui/program.h"

/// The page's controls: shown together when its tab is selected, hidden otherwise.
inline constexpr int SettingsPageControls[] = {
    IDC_SETTINGS_GROUP, IDC_POLL_LABEL, IDC_POLL_INTERVAL, IDC_NOTIFY,     IDC_THROTTLE_LABEL, IDC_THROTTLE, IDC_LOG,
    IDC_LOG_PATH,       IDC_LOG_BROWSE, IDC_SOUND,         IDC_SOUND_PATH, IDC_SOUND_BROWSE,   IDC_APPLY,
};

/// Main window's thread only. Controls that the dialog lacks are skipped.
class SettingsPage {
 public:
  explicit SettingsPage(Program& program) : program_(program) {}

  /// Fills the page and disables Apply. Filling counts as a change of the fields, so Apply is disabled last.
  void OnInitDialog(HWND dialog);
  /// Shows the settings as they are now. The dialog's own notifications about it enable Apply.
  void Fill();
  /// Shows the one action only; what the user is changing elsewhere stays as it is, and so does Apply.
  void ShowAction(const AlertActionRow& row);
  /// True when the command was the page's: a change of a field, Apply, or a "..." button.
  bool OnCommand(WORD id, WORD notification);

 private:
  void ApplySettingsPanel();
  /// Lets `choose` replace the field's path.
  void ChoosePath(WORD fieldId, bool (*choose)(HWND owner, std::wstring& path));
  void EnableApply(bool enabled) const;

  Program& program_;
  HWND dialog_ = nullptr;
};
