#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "platform/text_file.h"
#include "storage/rule_store.h"
#include "storage/rules_csv.h"
#include "tests/support/diagnostic_lines.h"
#include "tests/support/throwaway_folder.h"

namespace {

// Every change keeps the rules in pairs of one pattern, so a reader that saw half a change would meet a single.
TEST(RuleStoreThreads, ReadersSeeWholeChangesWhileWritersEditImportAndReset) {
  const DiagnosticLines lines;
  const ThrowawayFolder folder;
  const std::wstring path = folder.Path("rules.csv");
  RuleStore store([&] { return path; });
  std::atomic<int> writers = 3;
  std::vector<std::thread> threads;
  const auto write = [&](auto change) {
    threads.emplace_back([&writers, change] {
      for (int round = 0; round < 100; ++round) change(round);
      --writers;
    });
  };
  write([&](int round) {
    RuleList pair = {MakeNewRule(store.TakeRuleId()), MakeNewRule(store.TakeRuleId())};
    pair[0].processPattern = pair[1].processPattern = std::to_wstring(round);
    store.Append(pair);
    (void)store.Edit(pair[0].ruleId, [](ThresholdRule& rule) { ++rule.maxHandles; });
    store.Remove({pair[0].ruleId, pair[1].ruleId});
  });
  write(
      [&](int) { EXPECT_TRUE(store.ImportJsonString(L"\"rules\" {\"processPattern\":\"i,j\"} {\"processPattern\":\"i,j\"}")); });
  write([&](int round) {
    if (round % 20 == 0) store.RemoveAll();
    (void)store.Save(path);
  });
  for (int reader = 0; reader < 2; ++reader) {
    threads.emplace_back([&] {
      while (writers > 0) {
        const RuleSnapshot rules = store.Snapshot();
        ASSERT_EQ(rules->size() % 2, 0U);
        for (std::size_t index = 0; index < rules->size(); index += 2) {
          ASSERT_EQ((*rules)[index].processPattern, (*rules)[index + 1].processPattern);
          ASSERT_NE((*rules)[index].ruleId, (*rules)[index + 1].ruleId);
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const ThresholdRule& rule : *store.Snapshot()) EXPECT_EQ(rule.processPattern, L"i,j") << "a removal was lost";
  // Saves never interleaved, and the last one wrote the last list.
  EXPECT_EQ(ParseRulesCsv(ReadTextFile(path).value_or(L"")), *store.Snapshot());
}

}  // namespace
