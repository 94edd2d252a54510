#include <benchmark/benchmark.h>

#include <string>

#include "core/monitor_engine.h"
#include "platform/diagnostics.h"
#include "tests/support/simulated_process_table.h"

// What the monitor itself costs: a cycle over a made-up machine, where only our own work is counted, and over this one, where the
// system's answers are counted too.

namespace {

constexpr std::uint32_t kRules = 20;

class FixedRules final : public RuleSource {
 public:
  explicit FixedRules(RuleList rules) : snapshot_(std::make_shared<const RuleList>(std::move(rules))) {}
  RuleSnapshot Snapshot() const override { return snapshot_; }

 private:
  RuleSnapshot snapshot_;
};

/// Rules with every ceiling set and none ever reached; `lastPattern` is the last one's, the others, in pairs,
/// match one simulated process in 25.
RuleList QuietRules(const wchar_t* lastPattern) {
  RuleList rules(kRules);
  for (std::uint32_t index = 0; index < kRules; ++index) {
    ThresholdRule& rule = rules[index];
    rule.ruleId = index + 1;
    rule.processPattern = index + 1 == kRules ? lastPattern : std::wstring(1, static_cast<wchar_t>(L'a' + index / 2)) + L"-*.exe";
    rule.maxHandles = rule.maxThreads = rule.maxGdiObjects = rule.maxUserObjects = 4'000'000'000;
    rule.maxWorkingSet = rule.maxPrivateBytes = ~std::uint64_t{0};
    rule.maxCpuPercent = 100.0;
  }
  return rules;
}

std::shared_ptr<SimulatedProcessTable> MakeTable(std::uint32_t processes) {
  auto table = std::make_shared<SimulatedProcessTable>();
  for (std::uint32_t number = 0; number < processes; ++number) {
    SimulatedProcess process;
    process.pid = 8 + 4 * number;
    process.name = std::wstring(1, static_cast<wchar_t>(L'a' + number % 25)) + L"-service-host.exe";
    process.times = {1, number + 1, number + 1};
    table->Put(process);
  }
  return table;
}

void RunCycles(benchmark::State& state, const std::shared_ptr<ProcessSampler>& sampler, const wchar_t* lastPattern) {
  SetDiagnosticHook([](std::wstring_view) {});
  const FixedRules rules(QuietRules(lastPattern));
  MonitorEngine engine(sampler, SystemClock(), SystemProcessorCount());
  engine.SetRules(&rules);
  for (auto _ : state) engine.RunCycle();
  state.counters["measured"] = static_cast<double>(engine.CpuSampleCount());
}

void BM_CycleOverSimulatedProcesses(benchmark::State& state) {
  RunCycles(state, MakeTable(static_cast<std::uint32_t>(state.range(0))), L"nothing");
}
BENCHMARK(BM_CycleOverSimulatedProcesses)->Arg(100)->Arg(500)->Arg(2000)->Unit(benchmark::kMicrosecond);

void BM_CycleOverThisMachineNoneMatched(benchmark::State& state) { RunCycles(state, MakeSystemProcessSampler(), L"nothing"); }
BENCHMARK(BM_CycleOverThisMachineNoneMatched)->Unit(benchmark::kMicrosecond);

void BM_CycleOverThisMachineAllMatched(benchmark::State& state) { RunCycles(state, MakeSystemProcessSampler(), L"*"); }
BENCHMARK(BM_CycleOverThisMachineAllMatched)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
