#include "storage/alert_log.h"

#include "platform/out_of_memory.h"
#include "platform/text_file.h"
#include "platform/text_format.h"
#include "storage/alert_log_line.h"
#include "storage/alert_log_reader.h"

namespace {

std::wstring FormatCsvRow(const AlertRecord& record) {
  return FormatText(L"\"%ls\",%u,\"%ls\",\"%ls\"\n", FormatAlertTime(record.time).c_str(), record.pid, record.processName.c_str(),
                    record.violation.c_str());
}

}  // namespace

void AppendAlertLog(const std::wstring& path, const AlertRecord& record) {
  (void)DoUnlessOutOfMemory(L"AppendAlertLog", [&] { (void)AppendTextFile(path, FormatAlertLogLine(record)); });
}

void LoadAlertLog(const std::wstring& path, RecentAlerts& recentAlerts) {
  if (path.empty()) return;
  (void)DoUnlessOutOfMemory(L"LoadAlertLog", [&] {
    std::optional<std::vector<AlertRecord>> alerts = ReadNewestAlerts(path, RecentAlerts::kMaxAlerts);
    if (alerts) recentAlerts.Replace(std::move(*alerts));
  });
}

bool ExportAlertCsv(const std::wstring& path, const std::wstring& header, const RecentAlerts& recentAlerts) {
  return UnlessOutOfMemory(L"ExportAlertCsv", false, [&] {
    std::wstring text = header + L"\n";
    recentAlerts.ForEachLocked([&](const AlertRecord& record) { text += FormatCsvRow(record); });
    return WriteTextFile(path, text) == WriteResult::kWritten;
  });
}
