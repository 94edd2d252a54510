#include <gtest/gtest.h>

#include <thread>

#include "core/monitor_engine.h"
#include "tests/support/monitor_doubles.h"

// The window threads change rules and exclusions without pause while the worker runs its cycles. Each change must be one step for
// a cycle: never half of one list and half of another.

namespace {

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

}  // namespace
