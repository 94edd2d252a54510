#pragma once

// The tab control of the main window: which page is shown, and how the tabs look in dark mode, which the control cannot draw
// itself.

#include <windows.h>

#include <optional>

/// Main window's thread only. A dialog without the tab control is left alone.
class MainWindowTabs {
 public:
  /// Makes the two tabs and shows the first page.
  void OnInitDialog(HWND dialog);
  /// After the dialog's own dark mode: the tabs are then drawn here.
  void ApplyDarkMode();
  /// The user has chosen another tab.
  void OnSelectionChange();
  /// WM_DRAWITEM; false when the item is none of ours.
  [[nodiscard]] bool OnDrawItem(const DRAWITEMSTRUCT& item) const;

  /// WM_ERASEBKGND; false: leave it to the system.
  [[nodiscard]] bool OnEraseBackground(HDC dc) const;
  /// WM_CTLCOLORSTATIC and WM_CTLCOLORBTN: the brush behind a label or check box of a page; null: leave it to the system.
  [[nodiscard]] HBRUSH OnControlColor(HDC dc, HWND control) const;

 private:
  void ShowTabPage(int index) const;
  [[nodiscard]] bool PagesAreWhite() const;

  HWND dialog_ = nullptr;
  HWND tabs_ = nullptr;
};
