#include "ui/rules/rule_list_model.h"

#include "res/resource.h"
#include "ui/rules/number_text.h"
#include "ui/rules/rule_field_text.h"

namespace {

constexpr wchar_t kNoLimit[] = L"-";
constexpr int kFirstCeilingColumn = 2;

constexpr ListColumn kColumns[kFirstCeilingColumn + kCeilingCount] = {
    {IDS_COLUMN_ENABLED, 55},     {IDS_COLUMN_PATTERN, 150},      {IDS_COLUMN_HANDLES, 65},
    {IDS_COLUMN_WORKING_SET, 65}, {IDS_COLUMN_PRIVATE_BYTES, 65}, {IDS_COLUMN_CPU, 55},
    {IDS_COLUMN_THREADS, 60},     {IDS_COLUMN_GDI, 50},           {IDS_COLUMN_USER, 50},
};

const Ceiling& CeilingOf(int column) { return Ceilings()[static_cast<std::size_t>(column - kFirstCeilingColumn)]; }

}  // namespace

std::span<const ListColumn> RuleListColumns() { return kColumns; }

bool IsRuleColumn(int column) { return column >= 0 && column < static_cast<int>(std::size(kColumns)); }

std::wstring RuleCellText(int column, const ThresholdRule& rule) {
  if (!IsRuleColumn(column)) return {};
  if (column == kEnabledColumn) return rule.enabled ? L"Yes" : L"No";
  if (column == kPatternColumn) return rule.processPattern;
  const std::wstring text = CeilingText(CeilingOf(column), rule);
  return text.empty() ? kNoLimit : text;
}

std::wstring EditTextOfCell(const std::wstring& cellText) { return cellText == kNoLimit ? std::wstring() : cellText; }

void ApplyCellText(int column, std::wstring_view text, ThresholdRule& rule) {
  if (!IsRuleColumn(column)) return;
  if (column == kEnabledColumn) {
    rule.enabled = !rule.enabled;
  } else if (column == kPatternColumn) {
    rule.processPattern = text.substr(0, kMaxPatternChars);
  } else {
    StoreCeiling(CeilingOf(column), rule, text, ReadCellInteger);
  }
}
