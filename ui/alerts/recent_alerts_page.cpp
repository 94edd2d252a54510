#include "ui/alerts/recent_alerts_page.h"

#include <commctrl.h>

#include "platform/handles.h"
#include "res/resource.h"
#include "ui/alerts/alert_columns.h"
#include "ui/alerts/clear_alerts.h"
#include "ui/framework/list_view.h"
#include "ui/framework/resources.h"

RecentAlertsPage::RecentAlertsPage(Program& program) : program_(program), rows_(program.recentAlerts) {}

void RecentAlertsPage::OnInitDialog(HWND dialog) {
  dialog_ = dialog;
  list_ = ::GetDlgItem(dialog, IDC_RECENT_ALERTS);
  if (list_ == nullptr) return;
  InsertListColumns(list_, RecentAlertsColumns());
  rows_.OnViewOpened();
  FitColumns();
}

void RecentAlertsPage::FitColumns() {
  if (list_ != nullptr) FillWithLastColumn(list_, RecentAlertsColumns());
}

void RecentAlertsPage::Refresh() {
  if (list_ == nullptr) return;
  RecentAlertsRows::Update update;
  if (!rows_.Take(update)) return;
  {
    const RedrawPause pause(list_);
    if (update.deleteAll) ::SendMessageW(list_, LVM_DELETEALLITEMS, 0, 0);
    for (const AlertRecord& alert : update.alerts) InsertAlertRow(list_, 0, alert);
    auto count = static_cast<std::size_t>(::SendMessageW(list_, LVM_GETITEMCOUNT, 0, 0));
    for (; count > RecentAlertsRows::kMaxRows; --count) ::SendMessageW(list_, LVM_DELETEITEM, count - 1, 0);
  }
  FitColumns();  // the rows may have brought a scroll bar, or taken it away
}

void RecentAlertsPage::ShowContextMenu() {
  POINT pointer{};
  ::GetCursorPos(&pointer);
  ShowContextMenuAt(pointer);
}

void RecentAlertsPage::ShowContextMenuByKeyboard() {
  // Below the row that the keyboard is at, as in other lists; at the list's corner when there is none.
  RECT row{};
  row.left = LVIR_LABEL;
  const auto focused = ::SendMessageW(list_, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), MAKELPARAM(LVNI_SELECTED, 0));
  POINT place{};
  if (focused >= 0 &&
      ::SendMessageW(list_, LVM_GETITEMRECT, static_cast<WPARAM>(focused), reinterpret_cast<LPARAM>(&row)) != FALSE) {
    place = {row.left, row.bottom};
  }
  ::ClientToScreen(list_, &place);
  ShowContextMenuAt(place);
}

void RecentAlertsPage::ShowContextMenuAt(POINT screen) {
  UniqueMenu menu(::CreatePopupMenu());
  ::AppendMenuW(menu.get(), MF_STRING, IDM_CLEAR_LOG, LoadResString(IDS_CLEAR_LOG).c_str());
  ::TrackPopupMenu(menu.get(), TPM_RIGHTBUTTON, screen.x, screen.y, 0, dialog_, nullptr);
}

void RecentAlertsPage::Clear() {
  ClearAlerts(program_.recentAlerts, program_.settings);
  if (list_ != nullptr) ::SendMessageW(list_, LVM_DELETEALLITEMS, 0, 0);
}
