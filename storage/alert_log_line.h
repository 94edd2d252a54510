#pragma once

// One alert as a line of text, written and read back.

#include <string>
#include <string_view>

#include "core/records.h"

/// "2026-03-05 09:07:03".
[[nodiscard]] std::wstring FormatAlertTime(const LocalTime& time);
/// One line of alerts.log, with its line end.
[[nodiscard]] std::wstring FormatAlertLogLine(const AlertRecord& record);
/// False when the line holds no alert. Accepts whatever a user's editor may have left.
[[nodiscard]] bool ParseAlertLogLine(std::wstring_view line, AlertRecord& record);
