#pragma once

// The columns of the rule list: what each shows of a rule, and what a text typed into a cell makes of it. Apart from the list
// control, which only carries these texts.

#include <span>
#include <string>
#include <string_view>

#include "core/records.h"
#include "ui/framework/list_columns.h"

/// In the order of the list, the Enabled column first.
[[nodiscard]] std::span<const ListColumn> RuleListColumns();

inline constexpr int kEnabledColumn = 0;
inline constexpr int kPatternColumn = 1;

[[nodiscard]] bool IsRuleColumn(int column);
/// Empty for a column that is none.
[[nodiscard]] std::wstring RuleCellText(int column, const ThresholdRule& rule);
/// What the edit box over a cell starts with: nothing where the cell shows that there is no limit.
[[nodiscard]] std::wstring EditTextOfCell(const std::wstring& cellText);
/// Changes the rule as the text says; the Enabled column flips whatever the text. Nothing for a column that is none.
void ApplyCellText(int column, std::wstring_view text, ThresholdRule& rule);
