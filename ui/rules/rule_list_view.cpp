#include "ui/rules/rule_list_view.h"

#include <commctrl.h>

#include <algorithm>

#include "res/resource.h"
#include "ui/framework/list_view.h"
#include "ui/rules/rule_list_model.h"

namespace {

int NextRow(HWND list, int after, UINT state) {
  return static_cast<int>(::SendMessageW(list, LVM_GETNEXTITEM, static_cast<WPARAM>(after), MAKELPARAM(state, 0)));
}

void FocusRow(HWND list, int row) {
  LVITEMW item{};
  item.state = LVIS_FOCUSED;
  item.stateMask = LVIS_FOCUSED;
  ::SendMessageW(list, LVM_SETITEMSTATE, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
}

/// Where the user is in the list, to be there again after the rows have been rebuilt.
struct ListPosition {
  int focusedRow;
  int topRow;

  explicit ListPosition(HWND list)
      : focusedRow(NextRow(list, -1, LVNI_FOCUSED)), topRow(static_cast<int>(::SendMessageW(list, LVM_GETTOPINDEX, 0, 0))) {}

  void Restore(HWND list, int rowCount) const {
    if (rowCount == 0) return;
    if (focusedRow >= 0) FocusRow(list, std::min(focusedRow, rowCount - 1));
    if (topRow > 0) {
      // Coming from the end, the row that is made visible ends up on top.
      ::SendMessageW(list, LVM_ENSUREVISIBLE, static_cast<WPARAM>(rowCount - 1), FALSE);
      ::SendMessageW(list, LVM_ENSUREVISIBLE, static_cast<WPARAM>(std::min(topRow, rowCount - 1)), FALSE);
    }
  }
};

}  // namespace

void RuleListView::OnInitDialog(HWND dialog) {
  list_ = ::GetDlgItem(dialog, IDC_RULE_LIST);
  if (list_ == nullptr) return;
  InsertListColumns(list_, RuleListColumns());
  Refresh();
}

void RuleListView::Refresh() {
  if (list_ == nullptr) return;
  const RuleSnapshot rules = rules_.Snapshot();
  const int count = static_cast<int>(rules->size());
  const ListPosition position(list_);
  // Thousands of rows would otherwise repaint the list thousands of times.
  const RedrawPause pause(list_);
  ::SendMessageW(list_, LVM_DELETEALLITEMS, 0, 0);
  ::SendMessageW(list_, LVM_SETITEMCOUNT, static_cast<WPARAM>(count), 0);
  int row = 0;
  for (const ThresholdRule& rule : *rules) {
    InsertListRow(list_, row++, static_cast<LPARAM>(rule.ruleId), RuleListColumns().size(),
                  [&rule](std::size_t column) { return RuleCellText(static_cast<int>(column), rule); });
  }
  position.Restore(list_, count);
}

void RuleListView::RefreshAdded(std::size_t before) {
  Refresh();
  const std::size_t count = rules_.Snapshot()->size();
  if (list_ == nullptr || before >= count) return;
  FocusRow(list_, static_cast<int>(before));
  // The last one first: when all of them fit, all are in view.
  for (const std::size_t row : {count - 1, before}) ::SendMessageW(list_, LVM_ENSUREVISIBLE, row, FALSE);
}

std::vector<std::uint32_t> RuleListView::SelectedRuleIds() const {
  std::vector<std::uint32_t> ids;
  if (list_ == nullptr) return ids;
  for (int row = NextRow(list_, -1, LVNI_SELECTED); row >= 0; row = NextRow(list_, row, LVNI_SELECTED)) {
    if (const auto id = RuleIdOfRow(row)) ids.push_back(*id);
  }
  return ids;
}

std::optional<std::uint32_t> RuleListView::RuleIdOfRow(int row) const {
  LVITEMW item{};
  item.mask = LVIF_PARAM;
  item.iItem = row;
  if (row < 0 || ::SendMessageW(list_, LVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item)) == FALSE) return std::nullopt;
  return static_cast<std::uint32_t>(item.lParam);
}
