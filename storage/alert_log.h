#pragma once

// The alert log file and the CSV export of alerts.

#include <string>

#include "core/recent_alerts.h"
#include "core/records.h"

/// Appends one line; a file that cannot be opened, or no memory, loses it without a word to the user.
void AppendAlertLog(const std::wstring& path, const AlertRecord& record);
/// Fills the list with the file's last 1000 alerts, oldest first; without a readable file or memory leaves it alone. Reads only
/// the file's end.
void LoadAlertLog(const std::wstring& path, RecentAlerts& recentAlerts);

/// Writes the header line and every alert of the list, oldest first. False when the file cannot be opened or written.
bool ExportAlertCsv(const std::wstring& path, const std::wstring& header, const RecentAlerts& recentAlerts);
