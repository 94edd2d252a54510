#include "ui/alerts/alert_columns.h"

#include <iterator>
#include <string>

#include "platform/text_format.h"
#include "res/resource.h"
#include "storage/alert_log_line.h"
#include "ui/framework/list_view.h"

namespace {

constexpr ListColumn kRecentAlertsColumns[] = {
    {IDS_COLUMN_TIME, 120}, {IDS_COLUMN_PID, 50}, {IDS_COLUMN_PROCESS, 110}, {IDS_COLUMN_VIOLATION, 300}};
constexpr ListColumn kAlertLogColumns[] = {
    {IDS_COLUMN_TIME, 130}, {IDS_COLUMN_PID, 60}, {IDS_COLUMN_PROCESS, 120}, {IDS_COLUMN_VIOLATION, 350}};

using CellText = std::wstring (*)(const AlertRecord&);
constexpr CellText kCellTexts[] = {
    [](const AlertRecord& alert) { return FormatAlertTime(alert.time); },
    [](const AlertRecord& alert) { return FormatText(L"%u", static_cast<unsigned>(alert.pid)); },
    [](const AlertRecord& alert) { return alert.processName; },
    [](const AlertRecord& alert) { return alert.violation; },
};

}  // namespace

std::span<const ListColumn> RecentAlertsColumns() { return kRecentAlertsColumns; }

std::span<const ListColumn> AlertLogColumns() { return kAlertLogColumns; }

void InsertAlertRow(HWND list, int row, const AlertRecord& alert) {
  InsertListRow(list, row, 0, std::size(kCellTexts), [&](std::size_t column) { return kCellTexts[column](alert); });
}
