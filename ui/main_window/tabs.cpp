#include "ui/main_window/tabs.h"

#include <commctrl.h>
#include <uxtheme.h>

#include <algorithm>
#include <iterator>
#include <span>

#include "platform/handles.h"
#include "res/resource.h"
#include "ui/dark/dark_mode.h"
#include "ui/framework/resources.h"
#include "ui/main_window/settings_page.h"

namespace {

constexpr UINT_PTR kDarkTabSubclassId = 1;
constexpr int kMaxTabTextChars = 127;

constexpr int kRecentAlertsControls[] = {IDC_RECENT_ALERTS};

/// One tab and what it shows, in the order of the tabs.
struct TabPage {
  UINT titleId;
  std::span<const int> controlIds;
};
constexpr TabPage kPages[] = {
    {IDS_TAB_RECENT_ALERTS, kRecentAlertsControls},
    {IDS_TAB_SETTINGS, SettingsPageControls},
};

void FillDark(HDC dc, const RECT& rect) {
  const UniqueBrush brush(::CreateSolidBrush(kDarkBackground));
  ::FillRect(dc, &rect, brush.get());
}

LRESULT CALLBACK DarkTabSubclassProc(HWND tabs, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id, DWORD_PTR) noexcept {
  if (message == WM_ERASEBKGND) {
    RECT client{};
    ::GetClientRect(tabs, &client);
    FillDark(reinterpret_cast<HDC>(wParam), client);
    return 1;
  }
  if (message == WM_NCDESTROY) ::RemoveWindowSubclass(tabs, &DarkTabSubclassProc, id);
  return ::DefSubclassProc(tabs, message, wParam, lParam);
}

}  // namespace

void MainWindowTabs::OnInitDialog(HWND dialog) {
  dialog_ = dialog;
  tabs_ = ::GetDlgItem(dialog, IDC_TABS);
  if (tabs_ == nullptr) return;
  WPARAM index = 0;
  for (const TabPage& page : kPages) {
    std::wstring title = LoadResString(page.titleId);
    TCITEMW item{};
    item.mask = TCIF_TEXT;
    item.pszText = title.data();
    ::SendMessageW(tabs_, TCM_INSERTITEMW, index++, reinterpret_cast<LPARAM>(&item));
  }
  ::SendMessageW(tabs_, TCM_SETCURSEL, 0, 0);
  ShowTabPage(0);
}

void MainWindowTabs::ApplyDarkMode() {
  if (tabs_ == nullptr) return;
  AllowDarkMode(tabs_);
  if (!DarkModeOn()) return;
  // The theme would paint its light page over the dark background.
  ::SetWindowTheme(tabs_, L"", L"");
  ::SetWindowLongPtrW(tabs_, GWL_STYLE, ::GetWindowLongPtrW(tabs_, GWL_STYLE) | TCS_OWNERDRAWFIXED);
  ::SetWindowSubclass(tabs_, &DarkTabSubclassProc, kDarkTabSubclassId, 0);
}

void MainWindowTabs::OnSelectionChange() { ShowTabPage(static_cast<int>(::SendMessageW(tabs_, TCM_GETCURSEL, 0, 0))); }

void MainWindowTabs::ShowTabPage(int index) const {
  for (int page = 0; page < static_cast<int>(std::size(kPages)); ++page) {
    for (const int id : kPages[page].controlIds) {
      if (HWND control = ::GetDlgItem(dialog_, id)) ::ShowWindow(control, page == index ? SW_SHOW : SW_HIDE);
    }
  }
}

bool MainWindowTabs::OnDrawItem(const DRAWITEMSTRUCT& item) const {
  if (item.CtlID != IDC_TABS || !DarkModeOn()) return false;
  wchar_t text[kMaxTabTextChars + 1] = {};
  TCITEMW tab{};
  tab.mask = TCIF_TEXT;
  tab.pszText = text;
  tab.cchTextMax = static_cast<int>(std::size(text));
  ::SendMessageW(item.hwndItem, TCM_GETITEMW, item.itemID, reinterpret_cast<LPARAM>(&tab));
  RECT rect = item.rcItem;
  FillDark(item.hDC, rect);
  ::SetTextColor(item.hDC, kDarkText);
  ::SetBkColor(item.hDC, kDarkBackground);
  ::DrawTextW(item.hDC, tab.pszText, -1, &rect, DT_CENTER | DT_VCENTER | DT_SINGLELINE);
  return true;
}

bool MainWindowTabs::PagesAreWhite() const { return tabs_ != nullptr && !DarkModeOn() && ::IsThemeActive(); }

bool MainWindowTabs::OnEraseBackground(HDC dc) const {
  HWND group = ::GetDlgItem(dialog_, IDC_SETTINGS_GROUP);
  if (!PagesAreWhite() || group == nullptr || !::IsWindowVisible(group)) return false;
  RECT client{};
  RECT frame{};
  ::GetClientRect(dialog_, &client);
  ::GetWindowRect(group, &frame);
  ::MapWindowPoints(HWND_DESKTOP, dialog_, reinterpret_cast<POINT*>(&frame), 2);
  ::FillRect(dc, &client, ::GetSysColorBrush(COLOR_3DFACE));
  // A themed group box paints what the dialog has behind its frame.
  ::FillRect(dc, &frame, ::GetSysColorBrush(COLOR_WINDOW));
  return true;
}

HBRUSH MainWindowTabs::OnControlColor(HDC dc, HWND control) const {
  // The pages' controls are the dialog's, lying over the tab control. With visual styles that is white, and the dialog's grey
  // behind their texts would show as patches.
  const auto& ids = SettingsPageControls;
  if (!PagesAreWhite()) return nullptr;
  if (std::find(std::begin(ids), std::end(ids), ::GetDlgCtrlID(control)) == std::end(ids)) return nullptr;
  ::SetBkColor(dc, ::GetSysColor(COLOR_WINDOW));
  return ::GetSysColorBrush(COLOR_WINDOW);
}
