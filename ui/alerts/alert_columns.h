#pragma once

// The columns of the two lists that show alerts: the same four cells, at widths of their own.

#include <cstddef>
#include <span>
#include <string>

#include "core/records.h"
#include "ui/framework/list_columns.h"

inline constexpr std::size_t kAlertColumnCount = 4;

[[nodiscard]] std::span<const ListColumn, kAlertColumnCount> RecentAlertsColumns();
[[nodiscard]] std::span<const ListColumn, kAlertColumnCount> AlertLogColumns();

/// The text of one cell; `column` is less than kAlertColumnCount.
[[nodiscard]] std::wstring AlertCellText(const AlertRecord& alert, std::size_t column);
