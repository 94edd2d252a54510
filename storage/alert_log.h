#pragma once

// The text forms of alerts: the log file's lines, written and read back, and the CSV export.

#include <string>
#include <string_view>
#include <vector>

#include "core/recent_alerts.h"
#include "core/records.h"

/// "2026-03-05 09:07:03".
[[nodiscard]] std::wstring FormatAlertTime(const LocalTime& time);
/// One line of alerts.log, with its line end.
[[nodiscard]] std::wstring FormatAlertLogLine(const AlertRecord& record);
/// False when the line holds no alert. Accepts whatever a user's editor may have left.
[[nodiscard]] bool ParseAlertLogLine(std::wstring_view line, AlertRecord& record);

/// Appends one line; a file that cannot be opened loses it silently.
void AppendAlertLog(const std::wstring& path, const AlertRecord& record);
/// Fills the list with the file's last 1000 alerts, oldest first; without a readable file leaves it alone. Reads only the file's
/// end.
void LoadAlertLog(const std::wstring& path, RecentAlerts& recentAlerts);

/// Writes the header line and every alert of the list, oldest first. False when the file cannot be opened or written.
bool ExportAlertCsv(const std::wstring& path, const std::wstring& header, const RecentAlerts& recentAlerts);
