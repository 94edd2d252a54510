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

TEST_F(MonitorEngineTest, AlertCarriesTheProcessTheRuleAndTheLocalTime) {
  rules.Set({ThreadRule(9, 10, 60)});
  PutProcess(77, L"busy.exe", 11);
  const DiagnosticLines lines;
  engine.RunCycle();
  const std::vector<AlertRecord> expected = {{clock.Now(), 77, L"busy.exe", 9, L"Threads: 11 > 10"}};
  EXPECT_EQ(sink.Take(), expected);
  EXPECT_EQ(DiagnosticLines::Take(), Texts{L"ALERT: PID 77 (busy.exe) Rule 9: Threads: 11 > 10"});

  engine.SetSink(nullptr);
  clock.tickMs += 60'000;
  engine.RunCycle();
  EXPECT_EQ(DiagnosticLines::Take().size(), 1u);
  EXPECT_TRUE(sink.Take().empty());
}

TEST_F(MonitorEngineTest, NothingIsListedWithoutRules) {
  PutProcess(77, L"busy.exe", 11);
  EXPECT_EQ(CycleAfter(1000), Texts{});
  engine.SetRules(nullptr);
  EXPECT_EQ(CycleAfter(1000), Texts{});
  EXPECT_EQ(table->ListCount(), 0u);
}

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

TEST_F(MonitorEngineTest, CpuHistoryEndsWithTheProcessAndOutlivesAFailedList) {
  constexpr std::uint64_t kSecond = 1000 * kUnitsPerMs;
  rules.Set({CpuRule(1.0)});
  PutProcess(9, L"busy.exe", 1, {5, 1 * kSecond, 0});
  EXPECT_EQ(CycleAfter(1000), Texts{});
  table->FailLists(8);
  EXPECT_EQ(CycleAfter(1000), Texts{});
  table->FailLists(0);
  PutProcess(9, L"busy.exe", 1, {5, 9 * kSecond, 0});
  EXPECT_EQ(CycleAfter(1000), Texts{L"9/1: CPU: 50.0% > 1.0%"});

  PutProcess(10, L"other.exe", 1, {5, 1 * kSecond, 0});
  table->Remove(9);
  EXPECT_EQ(CycleAfter(1000), Texts{});
  EXPECT_EQ(engine.CpuSampleCount(), 1u);
  // Back under the same ID and creation time: what it was before is forgotten.
  PutProcess(9, L"busy.exe", 1, {5, 17 * kSecond, 0});
  EXPECT_EQ(CycleAfter(1000), Texts{});
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

TEST_F(MonitorEngineTest, RepeatedRuleIdSharesOneCooldown) {
  rules.Set({ThreadRule(1, 10, 60), ThreadRule(1, 5, 10)});
  PutProcess(7, L"a.exe", 11);
  EXPECT_EQ(CycleAfter(1000), Texts{L"7/1: Threads: 11 > 10"});
  EXPECT_EQ(CycleAfter(10'000), Texts{L"7/1: Threads: 11 > 5"});
  EXPECT_EQ(CycleAfter(59'999), Texts{L"7/1: Threads: 11 > 5"});
}

TEST_F(MonitorEngineTest, CooldownPassesToTheNextOwnerOfTheProcessId) {
  rules.Set({ThreadRule(1, 10, 60), ThreadRule(2, 1000, 1)});
  PutProcess(7, L"a.exe", 11);
  EXPECT_EQ(CycleAfter(1000), Texts{L"7/1: Threads: 11 > 10"});
  table->Remove(7);
  PutProcess(8, L"other.exe", 1);
  EXPECT_EQ(CycleAfter(30'000), Texts{});
  EXPECT_EQ(engine.CooldownCount(), 1u);
  PutProcess(7, L"b.exe", 12);
  EXPECT_EQ(CycleAfter(1000), Texts{});
  EXPECT_EQ(CycleAfter(29'000), Texts{L"7/1: Threads: 12 > 10"});

  // Gone, and the cooldown run out: the entry goes, one cycle too early it stays.
  table->Remove(7);
  EXPECT_EQ(CycleAfter(59'999), Texts{});
  EXPECT_EQ(engine.CooldownCount(), 1u);
  EXPECT_EQ(CycleAfter(1), Texts{});
  EXPECT_EQ(engine.CooldownCount(), 0u);
}

TEST_F(MonitorEngineTest, CooldownThatWasMadeLongerStillCounts) {
  rules.Set({ThreadRule(1, 10, 60)});
  PutProcess(7, L"a.exe", 11);
  PutProcess(8, L"other.exe", 1);
  EXPECT_EQ(CycleAfter(1000).size(), 1u);
  table->Remove(7);
  rules.Set({ThreadRule(1, 10, 4'294'967'295)});
  EXPECT_EQ(CycleAfter(3'600'000), Texts{});
  PutProcess(7, L"a.exe", 11);
  EXPECT_EQ(CycleAfter(1000), Texts{});
  // Without its rule an entry has no cooldown to wait for.
  table->Remove(7);
  rules.Set({ThreadRule(2, 1000, 60)});
  EXPECT_EQ(CycleAfter(1000), Texts{});
  EXPECT_EQ(engine.CooldownCount(), 0u);
}

TEST_F(MonitorEngineTest, OnlyExclusionKeepsAThreadCeilingQuiet) {
  rules.Set({ThreadRule(1, 10, 0)});
  PutProcess(0, L"idle", 12);
  PutProcess(4, L"system", 13);
  PutProcess(7, L"spared.exe", 14);
  PutProcess(8, L"protected.exe", 15);
  table->Find(8)->access = SimulatedProcess::Access::kNone;
  const Texts rest = {L"0/1: Threads: 12 > 10", L"4/1: Threads: 13 > 10", L"8/1: Threads: 15 > 10"};
  engine.SetExclusions({L"spared*"});
  EXPECT_EQ(CycleAfter(1000), rest);
  EXPECT_TRUE(table->Opened().empty());
  engine.SetExclusions({});
  EXPECT_EQ(CycleAfter(1000).size(), 4u);
  EXPECT_EQ(table->Opened(), std::vector<std::uint32_t>{7});
}

TEST_F(MonitorEngineTest, TickIsReadOncePerCycleAndOncePerCandidate) {
  rules.Set({ThreadRule(1, 10, 0), ThreadRule(2, 10, 60)});
  for (std::uint32_t pid = 10; pid < 110; ++pid) PutProcess(pid, L"a.exe", pid < 13 ? 11 : 1);
  engine.RunCycle();
  EXPECT_EQ(clock.tickReads, 1u + 2 * 3);
}

TEST_F(MonitorEngineTest, StopForgetsTheHistory) {
  rules.Set({ThreadRule(1, 10, 3600), CpuRule(0.0)});
  PutProcess(7, L"a.exe", 11, {1, 2, 3});
  EXPECT_EQ(CycleAfter(1000).size(), 1u);
  EXPECT_EQ(engine.CpuSampleCount(), 1u);
  const DiagnosticLines lines;
  engine.Stop();
  engine.Stop();
  EXPECT_EQ(DiagnosticLines::Take(), (Texts{L"MonitorEngine::Stop - Stopped", L"MonitorEngine::Stop - Stopped"}));
  EXPECT_EQ(engine.CpuSampleCount(), 0u);
  EXPECT_EQ(CycleAfter(1000).size(), 1u);
}

}  // namespace
