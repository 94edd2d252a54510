#include "ui/rule_presets.h"

#include <gtest/gtest.h>

#include "storage/rule_store.h"

namespace {

constexpr std::uint64_t kFourGb = 4'294'967'296;

ThresholdRule Expected(const wchar_t* pattern, std::uint32_t handles, std::uint64_t memory, double cpu, std::uint32_t threads,
                       std::uint32_t gdi, std::uint32_t cooldownSec) {
  ThresholdRule rule;
  rule.processPattern = pattern;
  rule.enabled = true;
  rule.maxHandles = handles;
  rule.maxWorkingSet = memory;
  rule.maxPrivateBytes = memory;
  rule.maxCpuPercent = cpu;
  rule.maxThreads = threads;
  rule.maxGdiObjects = gdi;
  rule.maxUserObjects = 0;
  rule.alertActions = 3;
  rule.cooldownSec = cooldownSec;
  return rule;
}

TEST(RulePresets, EveryEntryAddsItsRulesAtTheEndWithIdsOfTheirOwn) {
  const RuleList kAdded[] = {
      {Expected(L"chrome.exe", 5000, kFourGb, 0, 0, 0, 120), Expected(L"firefox.exe", 5000, kFourGb, 0, 0, 0, 120),
       Expected(L"msedge.exe", 5000, kFourGb, 0, 0, 0, 120)},
      {Expected(L"*", 0, 0, 95.0, 0, 0, 300)},
      {Expected(L"*", 20000, 0, 0, 0, 0, 120)},
      {Expected(L"*", 0, kFourGb, 0, 0, 0, 120)},
      {Expected(L"*", 0, 0, 0, 0, 8000, 120)},
      {Expected(L"*", 0, 0, 0, 500, 0, 60)},
  };
  ASSERT_EQ(RulePresets().size(), std::size(kAdded));
  // Rules that nobody keeps: the file cannot be made, which a change survives.
  RuleStore rules([] { return std::wstring(L"missing-folder/rules.csv"); });
  RuleList expected;
  for (std::size_t i = 0; i < 2 * std::size(kAdded); ++i) {  // twice over: an entry chosen again adds its rules again
    for (ThresholdRule rule : kAdded[i % std::size(kAdded)]) {
      rule.ruleId = static_cast<std::uint32_t>(expected.size() + 1);
      expected.push_back(rule);
    }
    EXPECT_TRUE(AddPresetRules(rules, RulePresets()[i % std::size(kAdded)].menuId));
    EXPECT_EQ(*rules.Snapshot(), expected) << "entry " << i;
  }
}

}  // namespace
