#include "ui/rule_presets.h"

#include <gtest/gtest.h>

#include "storage/rule_store.h"

namespace {

TEST(RulePresets, EveryEntryAddsItsRulesAtTheEndWithIdsOfTheirOwn) {
  constexpr std::uint64_t kFourGb = 4'294'967'296;
  // Handles, working set, private bytes, CPU, threads, GDI, USER, actions, cooldown.
  const RuleList kAdded[] = {
      {{0, L"chrome.exe", true, 5000, kFourGb, kFourGb, 0, 0, 0, 0, 3, 120},
       {0, L"firefox.exe", true, 5000, kFourGb, kFourGb, 0, 0, 0, 0, 3, 120},
       {0, L"msedge.exe", true, 5000, kFourGb, kFourGb, 0, 0, 0, 0, 3, 120}},
      {{0, L"*", true, 0, 0, 0, 95.0, 0, 0, 0, 3, 300}},
      {{0, L"*", true, 20000, 0, 0, 0, 0, 0, 0, 3, 120}},
      {{0, L"*", true, 0, kFourGb, kFourGb, 0, 0, 0, 0, 3, 120}},
      {{0, L"*", true, 0, 0, 0, 0, 0, 8000, 0, 3, 120}},
      {{0, L"*", true, 0, 0, 0, 0, 500, 0, 0, 3, 60}},
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
