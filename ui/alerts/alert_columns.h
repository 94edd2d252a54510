#pragma once

// The rows of the two lists that show alerts: the same four cells, in columns with widths of their own.

#include <windows.h>

#include <span>

#include "core/records.h"
#include "ui/framework/list_columns.h"

[[nodiscard]] std::span<const ListColumn> RecentAlertsColumns();
[[nodiscard]] std::span<const ListColumn> AlertLogColumns();

/// The list's thread.
void InsertAlertRow(HWND list, int row, const AlertRecord& alert);
