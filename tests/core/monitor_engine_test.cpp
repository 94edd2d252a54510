#include "core/monitor_engine.h"

#include <gtest/gtest.h>

#include "tests/support/monitor_doubles.h"

namespace {

constexpr std::uint32_t kProcessors = 8;
constexpr std::uint64_t kSecond = 10'000'000;

/// Cycles on the test's own thread, over one table, in the time of the fake clock.
class MonitorEngineTest : public testing::Test {
 protected:
  MonitorEngineTest() {
    engine.SetRules(&rules);
    engine.SetSink(&sink);
  }

  /// The alerts of one cycle that runs `elapsedMs` after the one before, as "pid/rule: violation".
  Texts CycleAfter(std::uint64_t elapsedMs) {
    clock.tickMs += elapsedMs;
    engine.RunCycle();
    Texts texts;
    for (const AlertRecord& record : sink.Take()) {
      texts.push_back(std::to_wstring(record.pid) + L"/" + std::to_wstring(record.ruleId) + L": " + record.violation);
    }
    return texts;
  }

  const DiagnosticLines lines;
  std::shared_ptr<SimulatedProcessTable> table = std::make_shared<SimulatedProcessTable>();
  FakeClock clock;
  FakeRules rules;
  RecordingSink sink;
  MonitorEngine engine{table, clock, kProcessors};
};

TEST_F(MonitorEngineTest, AlertCarriesTheProcessTheRuleAndTheLocalTime) {
  table->Put(MakeProcess(77, L"busy.exe", 11));
  EXPECT_EQ(CycleAfter(1000), Texts{});
  EXPECT_EQ(table->ListCount(), 0u) << "nothing is listed without rules";
  rules.Set({ThreadRule(9, 10)});
  engine.RunCycle();
  EXPECT_EQ(sink.Take(), (std::vector<AlertRecord>{{clock.Now(), 77, L"busy.exe", 9, L"Threads: 11 > 10"}}));
  EXPECT_EQ(DiagnosticLines::Take(), Texts{L"ALERT: PID 77 (busy.exe) Rule 9: Threads: 11 > 10"});

  engine.SetExclusions({L"BUSY*"});
  EXPECT_EQ(CycleAfter(1000), Texts{});
  engine.SetExclusions({});
  engine.SetSink(nullptr);
  EXPECT_EQ(CycleAfter(1000), Texts{});
  EXPECT_EQ(DiagnosticLines::Take().size(), 1u);
}

// Each step is a cycle: the process's times then, the time since the cycle before, and the figure it shows (empty: 0.0).
TEST_F(MonitorEngineTest, CpuIsTheShareOfTheWholeMachineSinceTheLastCycle) {
  enum Listed { kYes, kFails, kGone };
  const struct {
    const char* what;
    decltype(SimulatedProcess::times) times;
    std::uint64_t elapsedMs;
    const wchar_t* percent;
    Listed listed = kYes;
  } kSteps[] = {
      {"first sight", {5, 10 * kSecond, 0}, 1000, L""},
      {"two of eight processors", {5, 11 * kSecond, 1 * kSecond}, 1000, L"25.0"},
      {"no time has passed", {5, 12 * kSecond, 1 * kSecond}, 0, L""},
      {"more than the machine has", {5, 40 * kSecond, 1 * kSecond}, 1000, L"100.0"},
      {"busy for the hour of a pause", {5, 40 * kSecond + 4 * 3600 * kSecond, 1 * kSecond}, 3'600'000, L"50.0"},
      {"the ID is another process's now", {6, 1 * kSecond, 1 * kSecond}, 1000, L""},
      {"which goes on", {6, 5 * kSecond, 1 * kSecond}, 1000, L"50.0"},
      {"creation time unknown for once", {0, 9 * kSecond, 1 * kSecond}, 1000, L"50.0"},
      {"and known again", {6, 13 * kSecond, 1 * kSecond}, 1000, L"50.0"},
      {"times cannot be read", {0, 0, 0}, 1000, L""},
      {"the average over the gap", {6, 21 * kSecond, 1 * kSecond}, 1000, L"50.0"},
      {"the list fails", {}, 1000, L"", kFails},
      {"which is a gap too", {6, 29 * kSecond, 1 * kSecond}, 1000, L"50.0"},
      {"gone", {}, 1000, L"", kGone},
      {"what comes back as it was is new", {6, 37 * kSecond, 1 * kSecond}, 1000, L""},
  };
  ThresholdRule rule = ThreadRule(1, 0);
  rule.maxCpuPercent = 0.001;
  rules.Set({rule});
  table->Put(MakeProcess(8, L"other.exe", 1));
  for (const auto& step : kSteps) {
    table->Put(MakeProcess(9, L"busy.exe", 1, step.times));
    if (step.listed == kGone) table->Remove(9);
    table->FailLists(step.listed == kFails ? 8 : 0);
    const std::wstring percent(step.percent);
    EXPECT_EQ(CycleAfter(step.elapsedMs), percent.empty() ? Texts{} : Texts{L"9/1: CPU: " + percent + L"% > 0.0%"}) << step.what;
    EXPECT_EQ(engine.CpuSampleCount(), step.listed == kGone ? 0u : 1u) << step.what;
  }
}

}  // namespace
