#include "core/monitor_engine.h"

#include <gtest/gtest.h>

#include "core/simulated_process_table.h"
#include "tests/core/monitor_doubles.h"

namespace {

using Texts = std::vector<std::wstring>;

constexpr std::uint32_t kProcessors = 8;
constexpr std::uint64_t kUnitsPerMs = 10'000;

ThresholdRule ThreadRule(std::uint32_t ruleId, std::uint32_t maxThreads, std::uint32_t cooldownSec,
                         const wchar_t* pattern = L"*") {
  ThresholdRule rule;
  rule.ruleId = ruleId;
  rule.processPattern = pattern;
  rule.maxThreads = maxThreads;
  rule.cooldownSec = cooldownSec;
  return rule;
}

ThresholdRule CpuRule(double maxCpuPercent) {
  ThresholdRule rule = ThreadRule(1, 0, 0);
  rule.maxCpuPercent = maxCpuPercent;
  return rule;
}

/// Cycles on the test's own thread, over one table, in the time of the fake clock.
class MonitorEngineTest : public testing::Test {
 protected:
  MonitorEngineTest() {
    SetDiagnosticHook([](std::wstring_view) {});
    engine.SetRules(&rules);
    engine.SetSink(&sink);
  }
  ~MonitorEngineTest() override { SetDiagnosticHook(nullptr); }

  void PutProcess(std::uint32_t pid, const wchar_t* name, std::uint32_t threads, ProcessTimes times = {}) {
    SimulatedProcess process;
    process.pid = pid;
    process.name = name;
    process.threads = threads;
    process.times = times;
    table->Put(process);
  }

  /// The alerts of one cycle that runs `elapsedMs` after the one before.
  Texts CycleAfter(std::uint64_t elapsedMs) {
    clock.tickMs += elapsedMs;
    engine.RunCycle();
    return sink.TakeTexts();
  }

  std::shared_ptr<SimulatedProcessTable> table = std::make_shared<SimulatedProcessTable>();
  FakeClock clock;
  FakeRules rules;
  RecordingSink sink;
  MonitorEngine engine{table, clock, kProcessors};
};

// Each step is a cycle: the process's times then, the time since the cycle before, and the figure it shows (empty: 0.0).
TEST_F(MonitorEngineTest, CpuIsTheShareOfTheWholeMachineSinceTheLastCycle) {
  constexpr std::uint64_t kSecond = 1000 * kUnitsPerMs;
  constexpr std::uint64_t kHour = 3600 * kSecond;
  const struct {
    const char* what;
    ProcessTimes times;
    std::uint64_t elapsedMs;
    const wchar_t* percent;
  } kSteps[] = {
      {"first sight", {5, 10 * kSecond, 0}, 1000, L""},
      {"two of eight processors", {5, 11 * kSecond, 1 * kSecond}, 1000, L"25.0"},
      {"no time has passed", {5, 12 * kSecond, 1 * kSecond}, 0, L""},
      {"more than the machine has", {5, 40 * kSecond, 1 * kSecond}, 1000, L"100.0"},
      {"asleep for three hours", {5, 42 * kSecond, 1 * kSecond}, 3 * 3'600'000, L"0.0"},
      {"busy for the hour of a pause", {5, 42 * kSecond + 4 * kHour, 1 * kSecond}, 3'600'000, L"50.0"},
      {"the ID is another process's now", {6, 1 * kSecond, 1 * kSecond}, 1000, L""},
      {"which goes on", {6, 5 * kSecond, 1 * kSecond}, 1000, L"50.0"},
      {"creation time unknown for once", {0, 9 * kSecond, 1 * kSecond}, 1000, L"50.0"},
      {"and known again", {6, 13 * kSecond, 1 * kSecond}, 1000, L"50.0"},
      {"times cannot be read", {0, 0, 0}, 1000, L""},
      {"the average over the gap", {6, 21 * kSecond, 1 * kSecond}, 1000, L"50.0"},
  };
  rules.Set({CpuRule(0.001)});
  for (const auto& step : kSteps) {
    PutProcess(9, L"busy.exe", 1, step.times);
    const Texts texts = CycleAfter(step.elapsedMs);
    const std::wstring percent(step.percent);
    const Texts expected = percent.empty() ? Texts{} : Texts{L"9/1: CPU: " + percent + L"% > 0.0%"};
    EXPECT_EQ(texts, expected) << step.what;
  }
  EXPECT_EQ(engine.CpuSampleCount(), 1u);
}

TEST_F(MonitorEngineTest, RulesAlertInTheirOrderEachWithItsOwnCooldown) {
  ThresholdRule disabled = ThreadRule(3, 1, 0);
  disabled.enabled = false;
  rules.Set({ThreadRule(2, 20, 0, L"a*"), disabled, ThreadRule(1, 10, 60), ThreadRule(4, 1, 0, L"c*")});
  PutProcess(30, L"a.exe", 25);
  PutProcess(20, L"b.exe", 15);
  const Texts all = {L"30/2: Threads: 25 > 20", L"30/1: Threads: 25 > 10", L"20/1: Threads: 15 > 10"};
  const Texts held = {L"30/2: Threads: 25 > 20"};
  EXPECT_EQ(CycleAfter(30'000), all);
  EXPECT_EQ(CycleAfter(30'000), held);
  EXPECT_EQ(CycleAfter(29'999), held);
  EXPECT_EQ(CycleAfter(1), all);
  EXPECT_EQ(CycleAfter(59'999), held);
}

}  // namespace
