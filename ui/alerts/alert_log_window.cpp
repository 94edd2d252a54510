#include "ui/alerts/alert_log_window.h"

// The alert log window: a snapshot of every alert held, with export and Clear Log. Any number of them may be open, each on a
// thread of its own.

#include <span>
#include <vector>

#include "platform/diagnostics.h"
#include "res/resource.h"
#include "storage/alert_log.h"
#include "ui/alerts/alert_columns.h"
#include "ui/alerts/clear_alerts.h"
#include "ui/dark/dark_list_view.h"
#include "ui/dark/dark_mode.h"
#include "ui/framework/accessible_names.h"
#include "ui/framework/commands.h"
#include "ui/framework/dialog.h"
#include "ui/framework/file_choosers.h"
#include "ui/framework/list_view.h"
#include "ui/framework/resources.h"

namespace {

constexpr AnchorRow kAnchors[] = {
    {IDC_ALERT_LIST, ANCHOR_WIDEN | ANCHOR_GROW_TALLER},
    {IDC_EXPORT_CSV, ANCHOR_MOVE_DOWN},
    {IDC_CLEAR_ALERT_LOG, ANCHOR_MOVE_DOWN},
    {IDCANCEL, ANCHOR_MOVE_RIGHT | ANCHOR_MOVE_DOWN},
    {IDC_ALERT_LOG_GRIP, ANCHOR_MOVE_RIGHT | ANCHOR_MOVE_DOWN},
};

constexpr AccessibleName kNames[] = {{IDC_ALERT_LIST, L"Alerts"}};

constexpr int kDarkControls[] = {IDC_EXPORT_CSV, IDC_CLEAR_ALERT_LOG, IDOK, IDCANCEL};

class AlertLogDialog final : public Dialog {
 public:
  explicit AlertLogDialog(Program& program) : Dialog(program.instance, IDD_ALERT_LOG), program_(program) {}

 private:
  bool OnInitDialog() override;
  bool OnCommand(WORD id, WORD notification) override;
  std::optional<INT_PTR> OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

  void OnDestroy() override { ClearAccessibleNames(Window(), kNames); }

  void FillList(HWND list);
  void OnExport();
  void OnClear();

  Program& program_;
};

bool AlertLogDialog::OnInitDialog() {
  HWND list = Item(IDC_ALERT_LIST);
  if (list != nullptr) FillList(list);
  SetAccessibleNames(Window(), kNames);
  if (DarkModeAvailable()) {
    ApplyDarkMode(kDarkControls);
    ApplyDarkModeToListView(list);
    if (DarkModeOn()) ShowItem(IDC_ALERT_LOG_GRIP, false);
  }
  StartLayout(kAnchors, 0, false);
  FitWorkArea();
  FillWithLastColumn(list, AlertLogColumns());
  // The newest are what one opens the log for.
  const auto rows = static_cast<WPARAM>(::SendMessageW(list, LVM_GETITEMCOUNT, 0, 0));
  if (rows > 0) ::SendMessageW(list, LVM_ENSUREVISIBLE, rows - 1, FALSE);
  ::BringWindowToTop(Window());
  ::SetForegroundWindow(Window());
  return true;
}

void AlertLogDialog::FillList(HWND list) {
  InsertListColumns(list, AlertLogColumns());
  const std::vector<AlertRecord> alerts = program_.recentAlerts.Copy();
  const RedrawPause pause(list);
  // The list sets its room aside once instead of growing row by row.
  ::SendMessageW(list, LVM_SETITEMCOUNT, alerts.size(), 0);
  int row = 0;
  for (const AlertRecord& alert : alerts) InsertAlertRow(list, row++, alert);
}

std::optional<INT_PTR> AlertLogDialog::OnMessage(UINT message, WPARAM, LPARAM) {
  if (message == WM_SIZE) FillWithLastColumn(Item(IDC_ALERT_LIST), AlertLogColumns());
  return std::nullopt;
}

bool AlertLogDialog::OnCommand(WORD id, WORD notification) {
  static constexpr CommandRow<AlertLogDialog> kCommands[] = {
      {IDC_EXPORT_CSV, [](AlertLogDialog& log) { log.OnExport(); }},
      {IDC_CLEAR_ALERT_LOG, [](AlertLogDialog& log) { log.OnClear(); }},
  };
  return RunCommand<AlertLogDialog>(*this, kCommands, id) || Dialog::OnCommand(id, notification);
}

void AlertLogDialog::OnExport() {
  const std::wstring path = AskSavePath(Window(), IDS_CSV_FILTER, L"csv");
  if (!path.empty()) ExportAlertCsv(path, LoadResString(IDS_CSV_HEADER), program_.recentAlerts);
}

void AlertLogDialog::OnClear() {
  ClearAlerts(program_.recentAlerts, program_.settings);
  ::SendMessageW(Item(IDC_ALERT_LIST), LVM_DELETEALLITEMS, 0, 0);
}

}  // namespace

void AlertLogDialogThread(Program& program) {
  DebugLog(L"AlertLogDialogThread");
  AlertLogDialog(program).RunModal(nullptr);
}
