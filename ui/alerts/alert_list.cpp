#include "ui/alerts/alert_list.h"

#include <commctrl.h>

#include <string>

#include "ui/alerts/alert_columns.h"
#include "ui/framework/resources.h"

void InsertAlertRow(HWND list, int row, const AlertRecord& alert) {
  std::wstring text = AlertCellText(alert, 0);
  LVITEMW item{};
  item.mask = LVIF_TEXT;
  item.iItem = row;
  item.pszText = text.data();
  const auto inserted = static_cast<int>(::SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item)));
  if (inserted < 0) return;
  for (std::size_t column = 1; column < kAlertColumnCount; ++column) {
    SetListCell(list, inserted, static_cast<int>(column), AlertCellText(alert, column));
  }
}
