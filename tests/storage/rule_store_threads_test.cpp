#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "platform/diagnostics.h"
#include "platform/text_file.h"
#include "storage/rule_store.h"
#include "storage/rules_csv.h"
#include "tests/storage/throwaway_folder.h"

namespace {

// Every change keeps the rules in pairs of one pattern, so a reader that saw half a change would meet a single.
void ExpectPairs(const RuleList& rules) {
  ASSERT_EQ(rules.size() % 2, 0U);
  for (std::size_t index = 0; index < rules.size(); index += 2) {
    ASSERT_EQ(rules[index].processPattern, rules[index + 1].processPattern);
    ASSERT_NE(rules[index].ruleId, rules[index + 1].ruleId);
  }
}

TEST(RuleStoreThreads, ReadersSeeWholeChangesWhileWritersEditImportAndReset) {
  SetDiagnosticHook([](std::wstring_view) {});
  const ThrowawayFolder folder;
  const std::wstring path = folder.Path("rules.csv");
  RuleStore store([&] { return path; });
  const std::wstring json = L"\"rules\" {\"processPattern\":\"i,j\"} {\"processPattern\":\"i,j\"}";
  std::atomic<int> writers = 3;
  std::vector<std::thread> threads;
  const auto write = [&](auto change) {
    threads.emplace_back([&writers, change] {
      for (int round = 0; round < 100; ++round) change(round);
      --writers;
    });
  };
  write([&](int round) {
    ThresholdRule first = MakeNewRule(store.TakeRuleId());
    ThresholdRule second = MakeNewRule(store.TakeRuleId());
    first.processPattern = second.processPattern = std::to_wstring(round);
    store.Append({first, second});
    (void)store.Edit(first.ruleId, [](ThresholdRule& rule) { ++rule.maxHandles; });
    store.Remove({first.ruleId, second.ruleId});
  });
  write([&](int) { EXPECT_TRUE(store.ImportJsonString(json)); });
  write([&](int round) {
    if (round % 20 == 0) store.RemoveAll();
    (void)store.Save(path);
  });
  for (int reader = 0; reader < 2; ++reader) {
    threads.emplace_back([&] {
      while (writers > 0) {
        ExpectPairs(*store.Snapshot());
        (void)store.NextRuleId();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  SetDiagnosticHook(nullptr);
  // Saves never interleaved, and the last one wrote the last list.
  EXPECT_EQ(ParseRulesCsv(ReadTextFile(path).value_or(L"")), *store.Snapshot());
}

}  // namespace
