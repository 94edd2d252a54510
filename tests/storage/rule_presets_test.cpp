#include "storage/rule_presets.h"

#include <gtest/gtest.h>

#include "storage/rule_store.h"

namespace {

TEST(RulePresets, EveryEntryAddsItsRulesAtTheEndWithIdsOfTheirOwn) {
  constexpr std::uint64_t kFourGb = 4'294'967'296;
  // Behind the pattern: enabled, handles, working set, private bytes, CPU, threads, GDI, USER, actions, cooldown.
  const RuleList kExpected = {
      {1, L"chrome.exe", true, 5000, kFourGb, kFourGb, 0, 0, 0, 0, 3, 120},
      {2, L"firefox.exe", true, 5000, kFourGb, kFourGb, 0, 0, 0, 0, 3, 120},
      {3, L"msedge.exe", true, 5000, kFourGb, kFourGb, 0, 0, 0, 0, 3, 120},
      {4, L"*", true, 0, 0, 0, 95.0, 0, 0, 0, 3, 300},
      {5, L"*", true, 20000, 0, 0, 0, 0, 0, 0, 3, 120},
      {6, L"*", true, 0, kFourGb, kFourGb, 0, 0, 0, 0, 3, 120},
      {7, L"*", true, 0, 0, 0, 0, 0, 8000, 0, 3, 120},
      {8, L"*", true, 0, 0, 0, 0, 500, 0, 0, 3, 60},
      {9, L"*", true, 0, 0, 0, 95.0, 0, 0, 0, 3, 300},  // an entry chosen again adds its rules again
  };
  // Rules that nobody keeps: the file cannot be made, which a change survives.
  RuleStore rules([] { return std::wstring(L"missing-folder/rules.csv"); });
  for (const RulePreset& preset : RulePresets()) AddPresetRules(rules, preset);
  AddPresetRules(rules, RulePresets()[1]);
  EXPECT_EQ(*rules.Snapshot(), kExpected);
}

}  // namespace
