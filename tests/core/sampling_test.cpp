#include "core/monitor_cycle.h"

#include <gtest/gtest.h>

#include "tests/support/limited_memory.h"
#include "tests/support/monitor_doubles.h"

namespace {

using Access = SimulatedProcess::Access;
using Figures = std::vector<std::uint64_t>;

SimulatedProcess Busy(std::uint32_t pid, const wchar_t* name, Access access = Access::kFull, std::uint32_t failing = 0) {
  SimulatedProcess process = MakeProcess(pid, name, pid + 1, {40, 50, 60});
  process.handles = 10;
  process.memory = {20, 30};
  process.gdiObjects = 70;
  process.userObjects = 80;
  process.access = access;
  process.failing = failing;
  return process;
}

Figures FiguresOf(const ProcessMetrics& metrics) {
  return {metrics.pid,          metrics.threads,    metrics.handles,  metrics.workingSet, metrics.privateBytes,
          metrics.creationTime, metrics.kernelTime, metrics.userTime, metrics.gdiObjects, metrics.userObjects};
}

TEST(Sampling, OpensOnlyWhatARuleCanApplyToAndReadsWhatItMay) {
  RuleList rules;
  for (const wchar_t* pattern : {L"off*", L"app*", L"sys*", L"*.scr"}) rules.push_back(ThreadRule(1, 1, 0, pattern));
  rules[0].enabled = false;
  constexpr std::size_t kNone = 99;
  const struct {
    SimulatedProcess process;
    std::size_t firstRule;
    Figures counters;  ///< empty: not opened, all 0
  } kCases[] = {
      {Busy(0, L"sys-idle"), 2, {}},
      {Busy(4, L"sys-kernel"), 2, {}},
      {Busy(5, L"app.exe"), 1, {10, 20, 30, 40, 50, 60, 70, 80}},
      {Busy(6, L"other.exe"), kNone, {}},
      {Busy(7, L"off.exe"), kNone, {}},
      {Busy(8, L"app-spared.exe"), kNone, {}},
      {Busy(9, L"APP-protected.scr", Access::kLimited), 1, {10, 20, 30, 40, 50, 60, 0, 0}},
      {Busy(10, L"saver.scr", Access::kNone), 3, {}},
      {Busy(11, L"app1", Access::kFull, SimulatedProcess::kHandles), 1, {0, 20, 30, 40, 50, 60, 70, 80}},
      {Busy(12, L"app2", Access::kFull, SimulatedProcess::kMemory), 1, {10, 0, 0, 40, 50, 60, 70, 80}},
      {Busy(13, L"app3", Access::kFull, SimulatedProcess::kTimes), 1, {10, 20, 30, 0, 0, 0, 70, 80}},
      {Busy(14, L"app4", Access::kFull, SimulatedProcess::kGuiObjects), 1, {10, 20, 30, 40, 50, 60, 0, 0}},
      {Busy(15, L"app5"), 1, {}},
  };
  SimulatedProcessTable table;
  for (const auto& test : kCases) table.Put(test.process);
  table.Find(15)->exitsAfterListing = true;

  const auto owned = std::shared_ptr<SimulatedProcessTable>(&table, [](auto*) {});
  FakeClock clock;
  MonitorCycle cycle(owned, clock, 1);
  RecordingSink sink;
  const auto snapshot = std::make_shared<const RuleList>(rules);
  const auto exclusions = std::make_shared<const ExclusionList>(ExclusionList{L"app-spared*"});
  // The second round, without the one that has gone, works in the memory of the first and must not keep anything of it.
  for (const std::size_t expectedSize : {std::size(kCases), std::size(kCases) - 1}) {
    cycle.Run(snapshot, exclusions, sink, [] { return false; });
    const ProcessSample& sample = cycle.Sample();
    ASSERT_EQ(sample.size(), expectedSize);
    std::vector<std::uint32_t> expectedOpened;
    for (std::size_t index = 0; index < expectedSize; ++index) {
      const auto& test = kCases[index];
      SCOPED_TRACE(test.process.pid);
      Figures expected = {test.process.pid, test.process.threads};
      expected.insert(expected.end(), test.counters.begin(), test.counters.end());
      expected.resize(10);
      EXPECT_EQ(FiguresOf(sample[index].metrics), expected);
      EXPECT_EQ(sample[index].metrics.name, test.process.name);
      EXPECT_EQ(sample[index].rules == nullptr ? kNone : sample[index].rules->front(), test.firstRule);
      EXPECT_EQ(sample[index].opened, !test.counters.empty());
      if (!test.counters.empty()) expectedOpened.push_back(test.process.pid);
    }
    EXPECT_EQ(table.Opened(), expectedOpened);
  }

  // Once the machine is known, nothing is allocated; names are longer than a string keeps in place.
  for (int name = 0; name < 20; ++name)
    table.Put(Busy(static_cast<std::uint32_t>(100 + name), L"app with quite a long name.exe"));
  const std::function<bool()> goOn = [] { return false; };
  const auto quiet = std::make_shared<const RuleList>(1, ThreadRule(1, 1000));
  for (int warm = 0; warm < 3; ++warm) cycle.Run(quiet, exclusions, sink, goOn);
  const std::uint64_t before = allocationsMade;
  cycle.Run(quiet, exclusions, sink, goOn);
  EXPECT_EQ(allocationsMade, before);

  const DiagnosticLines lines;
  table.FailLists(24);
  cycle.Run(snapshot, exclusions, sink, [] { return false; });
  EXPECT_TRUE(cycle.Sample().empty());
  EXPECT_EQ(DiagnosticLines::Take(), Texts{L"CreateToolhelp32Snapshot failed: 24"});
}

}  // namespace
