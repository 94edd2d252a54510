#pragma once

// The page of the main window that shows the newest alerts. Nobody tells it of an alert: the window's timer makes it look.

#include "ui/alerts/recent_alerts_rows.h"
#include "ui/program.h"

/// Used on the window's thread; lives as long as the window.
class RecentAlertsPage {
 public:
  explicit RecentAlertsPage(Program& program);

  /// Columns; the first Refresh then shows what there is.
  void OnInitDialog(HWND dialog);
  /// The list has another size: its last column takes the room there is.
  void FitColumns();
  /// Brings the rows up to date with one repaint. Cheap when nothing has changed.
  void Refresh();
  /// At the mouse pointer, or, asked for by the keyboard, in the list's corner; the choice arrives as the dialog's WM_COMMAND.
  void ShowContextMenu();
  void ShowContextMenuByKeyboard();
  /// Clear Log, without asking.
  void Clear();

 private:
  void ShowContextMenuAt(POINT screen);

  Program& program_;
  RecentAlertsRows rows_;
  HWND dialog_ = nullptr;
  HWND list_ = nullptr;
};
