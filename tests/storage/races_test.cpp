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

/// Every change keeps the rules in pairs, and one of the two processes is excluded at any time: alerts come in pairs as well.
struct PairSink final : IAlertSink {
  void OnAlert(const AlertRecord& alert) override {
    const bool matches = alert.pid == last.pid && alert.violation == last.violation && alert.ruleId != last.ruleId;
    if (++alerts % 2 == 0 && !matches) ++broken;
    last = alert;
  }
  AlertRecord last;
  std::size_t alerts = 0;
  std::size_t broken = 0;
};

class Races : public testing::Test {
 protected:
  Races() {
    for (const std::uint32_t pid : {10U, 11U}) table->Put(MakeProcess(pid, pid == 10 ? L"first.exe" : L"second.exe", 1'000'000));
    engine.SetRules(&store);
    engine.SetSink(&sink);
    engine.SetExclusions({L"first*"});
  }

  const DiagnosticLines lines;
  const ThrowawayFolder folder;
  const std::wstring path = folder.Path("rules.csv");
  RuleStore store{[this] { return path; }};
  std::shared_ptr<SimulatedProcessTable> table = std::make_shared<SimulatedProcessTable>();
  FakeClock clock;
  PairSink sink;
  MonitorEngine engine{table, clock, 1};
};

TEST_F(Races, CyclesSeeWholeChangesWhileWritersEditImportAndReset) {
  std::atomic<int> cycles{0};
  clock.onWait = [&](Event& event, std::uint32_t) {
    ++cycles;
    std::this_thread::yield();
    return event.Wait(0);
  };
  engine.Start();
  std::vector<std::thread> writers;
  const auto write = [&](auto change) {
    writers.emplace_back([&cycles, change] {
      for (std::uint32_t round = 0; round < 100 || cycles < 300; ++round) change(round);
    });
  };
  write([&](std::uint32_t round) {
    const RuleList pair = {ThreadRule(store.TakeRuleId(), 1 + round), ThreadRule(store.TakeRuleId(), 1 + round)};
    store.Append(pair);
    (void)store.Edit(pair[0].ruleId, [](ThresholdRule& rule) { ++rule.maxHandles; });
    store.Remove({pair[0].ruleId, pair[1].ruleId});
  });
  write([&](std::uint32_t) {
    constexpr wchar_t kRule[] = LR"({"processPattern":"**","enabled":true,"maxThreads":7,"cooldownSeconds":0})";
    EXPECT_TRUE(store.ImportJsonString(std::wstring(L"\"rules\"") + kRule + kRule));
  });
  write([&](std::uint32_t round) {
    if (round % 20 == 0) store.RemoveAll();
    (void)store.Save(path);
  });
  write([&](std::uint32_t round) {
    engine.SetExclusions({round % 2 == 0 ? L"second*" : L"first*", L"nobody"});
    engine.SetIntervalMs(1000 + round);
    engine.SetPaused(round % 16 == 0);
    (void)engine.Exclusions();
    std::this_thread::yield();
  });
  for (std::thread& writer : writers) writer.join();
  engine.Stop();
  EXPECT_GT(sink.alerts, 2U);
  EXPECT_EQ(sink.broken, 0U);  // the end may have come between the last two
  for (const ThresholdRule& rule : *store.Snapshot()) EXPECT_EQ(rule.processPattern, L"**") << "a removal was lost";
  // Saves never interleaved, and the last one wrote the last list.
  EXPECT_EQ(ParseRulesCsv(ReadTextFile(path).value_or(L"")), *store.Snapshot());
}

// Stop meets the worker at every point of its cycle.
TEST_F(Races, StopAtAnyMomentEndsTheWorker) {
  store.Append({ThreadRule(1, 1), ThreadRule(2, 1)});
  for (int round = 0; round < 100; ++round) {
    engine.Start();
    for (int pause = 0; pause < round; ++pause) std::this_thread::yield();
    engine.Stop();
    EXPECT_EQ(engine.CooldownCount(), 0U);
  }
}

}  // namespace
