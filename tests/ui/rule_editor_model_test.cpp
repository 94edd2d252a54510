#include "ui/rule_editor_model.h"

#include <gtest/gtest.h>

#include <map>

#include "res/resource.h"

namespace {

std::map<int, std::wstring> Texts(const ThresholdRule& rule) {
  std::map<int, std::wstring> texts;
  for (const RuleEditorField& field : RuleEditorFields()) texts[field.controlId] = field.text(rule);
  return texts;
}

void Store(ThresholdRule& rule, const std::map<int, std::wstring>& texts) {
  for (const RuleEditorField& field : RuleEditorFields()) field.store(rule, texts.at(field.controlId).substr(0, field.maxChars));
}

TEST(RuleEditorModel, FieldsShowRoundedValuesAndStoreWhatTheyShow) {
  ThresholdRule rule;
  rule.processPattern = L"-";
  rule.maxHandles = 4294967295U;
  rule.maxWorkingSet = 1'572'864;
  rule.maxPrivateBytes = 4'294'967'296ULL;
  rule.maxCpuPercent = 87.5;
  rule.maxThreads = 1;
  rule.maxGdiObjects = 2;
  rule.maxUserObjects = 3;
  rule.cooldownSec = 120;
  const auto texts = Texts(rule);
  const std::map<int, std::wstring> shown = {
      {IDC_PATTERN, L"-"},    {IDC_MAX_HANDLES, L"4294967295"}, {IDC_MAX_WORKING_SET, L"1"}, {IDC_MAX_PRIVATE_BYTES, L"4096"},
      {IDC_MAX_CPU, L"88"},   {IDC_MAX_THREADS, L"1"},          {IDC_MAX_GDI, L"2"},         {IDC_MAX_USER, L"3"},
      {IDC_COOLDOWN, L"120"},
  };
  EXPECT_EQ(texts, shown);

  ThresholdRule expected = rule;
  expected.maxWorkingSet = 1'048'576;
  expected.maxCpuPercent = 88.0;
  Store(rule, texts);
  EXPECT_EQ(rule, expected);
}

TEST(RuleEditorModel, AnyTextIsAccepted) {
  ThresholdRule rule;
  rule.maxHandles = 5;
  rule.maxCpuPercent = 5.0;
  rule.cooldownSec = 5;
  Store(rule, {{IDC_PATTERN, std::wstring(300, L'p')},
               {IDC_MAX_HANDLES, L""},
               {IDC_MAX_WORKING_SET, L"99999999999"},
               {IDC_MAX_PRIVATE_BYTES, L"-1"},
               {IDC_MAX_CPU, L" 12.5%"},
               {IDC_MAX_THREADS, L"x"},
               {IDC_MAX_GDI, L"7x"},
               {IDC_MAX_USER, L" 8"},
               {IDC_COOLDOWN, L""}});
  ThresholdRule expected;
  expected.processPattern = std::wstring(255, L'p');
  expected.maxWorkingSet = 4294967295ULL * kBytesPerMb;
  expected.maxCpuPercent = 12.5;
  expected.maxGdiObjects = 7;
  expected.maxUserObjects = 8;
  expected.cooldownSec = 0;
  EXPECT_EQ(rule, expected);
}

}  // namespace
