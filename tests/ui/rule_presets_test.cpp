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
  // Rules that nobody keeps: the file cannot be made, which a change survives.
  RuleStore rules([] { return std::wstring(L"missing-folder/rules.csv"); });
  const struct {
    std::uint32_t menuId;
    std::uint32_t labelId;
    RuleList added;
  } kEntries[] = {
      {40001,
       216,
       {Expected(L"chrome.exe", 5000, kFourGb, 0, 0, 0, 120), Expected(L"firefox.exe", 5000, kFourGb, 0, 0, 0, 120),
        Expected(L"msedge.exe", 5000, kFourGb, 0, 0, 0, 120)}},
      {40002, 217, {Expected(L"*", 0, 0, 95.0, 0, 0, 300)}},
      {40003, 218, {Expected(L"*", 20000, 0, 0, 0, 0, 120)}},
      {40004, 219, {Expected(L"*", 0, kFourGb, 0, 0, 0, 120)}},
      {40005, 220, {Expected(L"*", 0, 0, 0, 0, 8000, 120)}},
      {40006, 221, {Expected(L"*", 0, 0, 0, 500, 0, 60)}},
  };
  ASSERT_EQ(RulePresets().size(), std::size(kEntries));
  RuleList expected;
  // Twice over: an entry chosen again adds its rules again.
  for (int round = 0; round < 2; ++round) {
    for (std::size_t i = 0; i < std::size(kEntries); ++i) {
      EXPECT_EQ(RulePresets()[i].menuId, kEntries[i].menuId);
      EXPECT_EQ(RulePresets()[i].labelStringId, kEntries[i].labelId);
      for (ThresholdRule rule : kEntries[i].added) {
        rule.ruleId = static_cast<std::uint32_t>(expected.size() + 1);
        expected.push_back(rule);
      }
      EXPECT_TRUE(AddPresetRules(rules, kEntries[i].menuId));
      EXPECT_EQ(*rules.Snapshot(), expected) << "entry " << i;
    }
  }
}

}  // namespace
