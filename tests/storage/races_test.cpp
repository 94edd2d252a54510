// Under the thread sanitizer: nobody sees half of a change, and an end meets the worker anywhere.

#include <gtest/gtest.h>

#include <thread>

#include "core/monitor_engine.h"
#include "platform/text_file.h"
#include "storage/rule_store.h"
#include "storage/rules_csv.h"
#include "tests/support/monitor_doubles.h"
#include "tests/support/throwaway_folder.h"

namespace {

// The window threads change rules and exclusions without pause while the worker runs its cycles. Each change must be one step for
// a cycle: never half of one list and half of another.

constexpr int kChanges = 3000;
constexpr std::size_t kCycles = 300;

class EngineRace : public testing::Test {
 protected:
  EngineRace() {
    table->Put(MakeProcess(10, L"first.exe", 1'000'000));
    table->Put(MakeProcess(11, L"second.exe", 1'000'000));
  }
  static RuleList TwoRules(std::uint32_t maxThreads) { return {ThreadRule(1, maxThreads), ThreadRule(2, maxThreads)}; }

  const DiagnosticLines lines;
  std::shared_ptr<SimulatedProcessTable> table = std::make_shared<SimulatedProcessTable>();
  FakeClock clock;
  FakeRules rules{TwoRules(1)};
  RecordingSink sink;
};

TEST_F(EngineRace, EveryCycleSeesWholeListsWhileTheyChange) {
  std::atomic<std::size_t> cycles{0};
  clock.onWait = [&](Event& event, std::uint32_t) {
    ++cycles;
    std::this_thread::yield();
    return event.Wait(0);
  };
  MonitorEngine engine(table, clock, 1);
  engine.SetRules(&rules);
  engine.SetSink(&sink);
  engine.SetExclusions({L"first*"});
  engine.Start();
  for (int change = 0; change < kChanges || cycles < kCycles; ++change) {
    rules.Set(TwoRules(1 + static_cast<std::uint32_t>(change) % 1000));
    engine.SetExclusions({change % 2 == 0 ? L"second*" : L"first*", L"nobody"});
    engine.SetIntervalMs(1000 + static_cast<std::uint32_t>(change));
    engine.SetPaused(change % 16 == 0);
    (void)engine.Exclusions();
    if (change % 3 == 0) std::this_thread::yield();
  }
  engine.Stop();

  // A cycle spares exactly one of the two processes and finds one ceiling in both rules.
  const std::vector<AlertRecord> alerts = sink.Take();
  ASSERT_GT(alerts.size(), 2u);
  ASSERT_EQ(alerts.size() % 2, 0u);
  for (std::size_t index = 0; index < alerts.size(); index += 2) {
    ASSERT_EQ(alerts[index].ruleId, 1u);
    ASSERT_EQ(alerts[index + 1].ruleId, 2u);
    ASSERT_EQ(alerts[index].pid, alerts[index + 1].pid);
    ASSERT_EQ(alerts[index].violation, alerts[index + 1].violation);
  }
}

// Stop meets the worker at every point of its cycle.
TEST_F(EngineRace, StopAtAnyMomentEndsTheWorker) {
  for (int round = 0; round < 100; ++round) {
    MonitorEngine engine(table, clock, 1);
    engine.SetRules(&rules);
    engine.SetSink(&sink);
    engine.Start();
    for (int pause = 0; pause < round; ++pause) std::this_thread::yield();
    engine.Stop();
    EXPECT_EQ(engine.CooldownCount(), 0u);
  }
}

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
