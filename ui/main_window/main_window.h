#pragma once

// The main window: the settings dialog with its menu bar, the rule list and the two pages below it. It composes the subjects that
// work on its controls and routes messages to them; of its own it has opening, layout, placement, closing and the commands on
// rules.

#include <windows.h>

#include "ui/alerts/recent_alerts_page.h"
#include "ui/framework/dialog.h"
#include "ui/main_window/main_window_frame.h"
#include "ui/main_window/settings_menu.h"
#include "ui/main_window/settings_page.h"
#include "ui/main_window/shortcuts.h"
#include "ui/main_window/tabs.h"
#include "ui/main_window/version_link.h"
#include "ui/program.h"
#include "ui/rules/rule_list_commands.h"

class MainDialog : public Dialog, public MainWindowHost {
 public:
  explicit MainDialog(Program& program);

  [[nodiscard]] HWND MainWindow() const override { return Window(); }
  void RefreshRuleList() override { rules_.Refresh(); }
  void EndMainWindow(INT_PTR result) override;

 private:
  struct Tables;

  bool OnInitDialog() override;
  bool OnCommand(WORD id, WORD notification) override;
  INT_PTR OnNotify(const NMHDR& header) override;
  void OnTimer(UINT_PTR timerId) override;
  std::optional<INT_PTR> OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
  void OnDestroy() override;

  void AttachMenu() const;
  void PlaceGrip() const;
  void StartRecentAlerts() const;
  void ApplyDarkColours();
  void RestorePlacement() const;
  void StorePlacement() const;
  void Close(INT_PTR result);
  void OnExit();

  Program& program_;
  RuleListCommands rules_;
  MainWindowTabs tabs_;
  MainWindowShortcuts shortcuts_;
  RecentAlertsPage recentAlerts_;
  SettingsPage settingsPage_;
  SettingsMenu settingsMenu_;
  VersionLink versionLink_;
};
