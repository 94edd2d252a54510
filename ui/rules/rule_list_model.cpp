#include "ui/rules/rule_list_model.h"

#include "res/resource.h"
#include "ui/rules/number_text.h"
#include "ui/rules/rule_field_text.h"

namespace {

constexpr wchar_t kNoLimit[] = L"-";

template <auto Text>
std::wstring OrNoLimit(const ThresholdRule& rule) {
  std::wstring text = Text(rule);
  return text.empty() ? kNoLimit : text;
}

std::wstring EnabledText(const ThresholdRule& rule) { return rule.enabled ? L"Yes" : L"No"; }
std::wstring PatternText(const ThresholdRule& rule) { return rule.processPattern; }

void FlipEnabled(ThresholdRule& rule, std::wstring_view) { rule.enabled = !rule.enabled; }
void ApplyPattern(ThresholdRule& rule, std::wstring_view text) { rule.processPattern = text.substr(0, kMaxPatternChars); }
void ApplyCpu(ThresholdRule& rule, std::wstring_view text) { rule.maxCpuPercent = ReadDecimal(text); }

template <std::uint32_t ThresholdRule::*Field>
void ApplyCount(ThresholdRule& rule, std::wstring_view text) {
  rule.*Field = ReadCellInteger(text);
}

template <std::uint64_t ThresholdRule::*Field>
void ApplyMegabytes(ThresholdRule& rule, std::wstring_view text) {
  rule.*Field = ReadCellInteger(text) * kBytesPerMb;
}

template <std::uint32_t ThresholdRule::*Field>
constexpr RuleColumn CountColumn(std::uint32_t headerStringId, int widthPx) {
  return {{headerStringId, widthPx}, OrNoLimit<CountText<Field>>, ApplyCount<Field>};
}

template <std::uint64_t ThresholdRule::*Field>
constexpr RuleColumn MegabytesColumn(std::uint32_t headerStringId, int widthPx) {
  return {{headerStringId, widthPx}, OrNoLimit<MegabytesText<Field>>, ApplyMegabytes<Field>};
}

constexpr RuleColumn kColumns[] = {
    {{IDS_COLUMN_ENABLED, 55}, EnabledText, FlipEnabled},
    {{IDS_COLUMN_PATTERN, 150}, PatternText, ApplyPattern},
    CountColumn<&ThresholdRule::maxHandles>(IDS_COLUMN_HANDLES, 65),
    MegabytesColumn<&ThresholdRule::maxWorkingSet>(IDS_COLUMN_WORKING_SET, 65),
    MegabytesColumn<&ThresholdRule::maxPrivateBytes>(IDS_COLUMN_PRIVATE_BYTES, 65),
    {{IDS_COLUMN_CPU, 55}, OrNoLimit<CpuText>, ApplyCpu},
    CountColumn<&ThresholdRule::maxThreads>(IDS_COLUMN_THREADS, 60),
    CountColumn<&ThresholdRule::maxGdiObjects>(IDS_COLUMN_GDI, 50),
    CountColumn<&ThresholdRule::maxUserObjects>(IDS_COLUMN_USER, 50),
};

}  // namespace

std::span<const RuleColumn> RuleColumns() { return kColumns; }

std::vector<ListColumn> RuleListColumns() {
  std::vector<ListColumn> columns;
  for (const RuleColumn& row : kColumns) columns.push_back(row.column);
  return columns;
}

bool IsRuleColumn(int column) { return column >= 0 && column < static_cast<int>(std::size(kColumns)); }

std::wstring RuleCellText(int column, const ThresholdRule& rule) {
  return IsRuleColumn(column) ? kColumns[column].cellText(rule) : std::wstring();
}

std::wstring EditTextOfCell(const std::wstring& cellText) { return cellText == kNoLimit ? std::wstring() : cellText; }

void ApplyCellText(int column, std::wstring_view text, ThresholdRule& rule) {
  if (IsRuleColumn(column)) kColumns[column].applyText(rule, text);
}
