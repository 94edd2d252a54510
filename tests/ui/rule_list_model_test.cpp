#include "ui/rule_list_model.h"

#include <gtest/gtest.h>

#include <set>

#include "res/resource.h"

namespace {

enum Column { kEnabled, kPattern, kHandles, kWorkingSet, kPrivateBytes, kCpu, kThreads, kGdi, kUser };

ThresholdRule FullRule() {
  ThresholdRule rule;
  rule.ruleId = 7;
  rule.processPattern = L"a?*.exe";
  rule.maxHandles = 1;
  rule.maxWorkingSet = 1'572'864;
  rule.maxPrivateBytes = 524'288;
  rule.maxCpuPercent = 12.5;
  rule.maxThreads = 2;
  rule.maxGdiObjects = 3;
  rule.maxUserObjects = 4294967295U;
  return rule;
}

TEST(RuleListModel, CellsShowTheRule) {
  const wchar_t* const full[] = {L"Yes", L"a?*.exe", L"1", L"1", L"0", L"12", L"2", L"3", L"4294967295"};
  const wchar_t* const bare[] = {L"No", L"", L"-", L"-", L"-", L"-", L"-", L"-", L"-"};
  ThresholdRule empty;
  empty.enabled = false;
  ASSERT_EQ(RuleColumns().size(), std::size(full));
  for (int column = 0; column < static_cast<int>(std::size(full)); ++column) {
    EXPECT_EQ(RuleCellText(column, FullRule()), full[column]) << column;
    EXPECT_EQ(RuleCellText(column, empty), bare[column]) << column;
  }
}

TEST(RuleListModel, CpuIsRoundedAndNothingWhenNotAboveZero) {
  const struct {
    double cpu;
    const wchar_t* text;
  } cases[] = {{0.4, L"0"}, {0.0, L"-"}, {-5.0, L"-"}, {87.5, L"88"}, {12.5, L"12"}, {100.0, L"100"}};
  for (const auto& c : cases) {
    ThresholdRule rule;
    rule.maxCpuPercent = c.cpu;
    EXPECT_EQ(RuleCellText(kCpu, rule), c.text) << c.cpu;
  }
}

TEST(RuleListModel, TypedTextChangesItsFieldAndNoOther) {
  ThresholdRule changed = FullRule();
  const struct {
    int column;
    const wchar_t* typed;
    const wchar_t* cell;
    void (*expect)(ThresholdRule&);
  } cases[] = {
      {kEnabled, L"Yes", L"No", [](ThresholdRule& r) { r.enabled = false; }},
      {kPattern, L"", L"", [](ThresholdRule& r) { r.processPattern.clear(); }},
      {kPattern, L"-", L"-", [](ThresholdRule& r) { r.processPattern = L"-"; }},
      {kHandles, L"abc", L"-", [](ThresholdRule& r) { r.maxHandles = 0; }},
      {kHandles, L"12abc", L"12", [](ThresholdRule& r) { r.maxHandles = 12; }},
      {kHandles, L"-5", L"4294967291", [](ThresholdRule& r) { r.maxHandles = 4294967291U; }},
      {kWorkingSet, L"2048", L"2048", [](ThresholdRule& r) { r.maxWorkingSet = 2'147'483'648ULL; }},
      {kWorkingSet, L"4294967295", L"4294967295", [](ThresholdRule& r) { r.maxWorkingSet = 4'503'599'626'321'920ULL; }},
      {kPrivateBytes, L"0.5", L"-", [](ThresholdRule& r) { r.maxPrivateBytes = 0; }},
      {kCpu, L"-5", L"-", [](ThresholdRule& r) { r.maxCpuPercent = -5.0; }},
      {kCpu, L"99.9", L"100", [](ThresholdRule& r) { r.maxCpuPercent = 99.9; }},
      {kThreads, L"500", L"500", [](ThresholdRule& r) { r.maxThreads = 500; }},
      {kGdi, L"8000", L"8000", [](ThresholdRule& r) { r.maxGdiObjects = 8000; }},
      {kUser, L" 9", L"9", [](ThresholdRule& r) { r.maxUserObjects = 9; }},
  };
  for (const auto& c : cases) {
    ThresholdRule rule = FullRule();
    ApplyCellText(c.column, c.typed, rule);
    ThresholdRule expected = FullRule();
    c.expect(expected);
    EXPECT_EQ(rule, expected) << c.column << testing::PrintToString(std::wstring(c.typed));
    EXPECT_EQ(RuleCellText(c.column, rule), c.cell) << c.column << testing::PrintToString(std::wstring(c.typed));
  }
  for (const int column : {-1, 9, 1000}) {
    ApplyCellText(column, L"1", changed);
    EXPECT_EQ(changed, FullRule()) << column;
  }
}

TEST(RuleListModel, EditBoxStartsEmptyWhereThereIsNoLimit) {
  EXPECT_EQ(EditTextOfCell(L"-"), L"");
  EXPECT_EQ(EditTextOfCell(L"-5"), L"-5");
  EXPECT_EQ(EditTextOfCell(L"20"), L"20");
}

TEST(RuleListModel, PatternIsCutToWhatAnEditBoxHolds) {
  ThresholdRule rule;
  ApplyCellText(kPattern, std::wstring(300, L'x'), rule);
  EXPECT_EQ(rule.processPattern, std::wstring(255, L'x'));
}

}  // namespace
