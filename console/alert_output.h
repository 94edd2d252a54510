#pragma once

// One alert as the console companion prints it.

#include <string>

#include "core/records.h"

/// UTF-8 with what is no plain text escaped, between quotes.
[[nodiscard]] std::string JsonText(const std::wstring& text);

/// The alert log's line without its line end, in UTF-8; `color`: the violation stands out on a terminal.
[[nodiscard]] std::string FormatAlertText(const AlertRecord& record, bool color);

/// One JSON object without a line end. `rule` and `metrics` are what the alert was raised from.
[[nodiscard]] std::string FormatAlertJson(const AlertRecord& record, const ThresholdRule& rule, const ProcessMetrics& metrics,
                                          const std::string& host);
