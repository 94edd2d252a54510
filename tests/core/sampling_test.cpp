#include "core/sampling.h"

#include <gtest/gtest.h>

#include "core/simulated_process_table.h"
#include "tests/core/monitor_doubles.h"

namespace {

using Access = SimulatedProcess::Access;

SimulatedProcess Busy(std::uint32_t pid, const wchar_t* name, Access access = Access::kFull, std::uint32_t failing = 0) {
  SimulatedProcess process;
  process.pid = pid;
  process.name = name;
  process.threads = pid + 1;
  process.handles = 10;
  process.memory = {20, 30};
  process.times = {40, 50, 60};
  process.gdiObjects = 70;
  process.userObjects = 80;
  process.access = access;
  process.failing = failing;
  return process;
}

ThresholdRule Rule(const wchar_t* pattern, bool enabled = true) {
  ThresholdRule rule;
  rule.processPattern = pattern;
  rule.enabled = enabled;
  return rule;
}

/// The counters in one line: handles, working set, private bytes, creation, kernel, user, GDI, USER.
std::vector<std::uint64_t> Counters(const ProcessMetrics& metrics) {
  return {metrics.handles,    metrics.workingSet, metrics.privateBytes, metrics.creationTime,
          metrics.kernelTime, metrics.userTime,   metrics.gdiObjects,   metrics.userObjects};
}

TEST(Sampling, OpensOnlyWhatARuleCanApplyToAndReadsWhatItMay) {
  const RuleList rules = {Rule(L"off*", false), Rule(L"app*"), Rule(L"sys*"), Rule(L"*.scr")};
  const std::vector<std::wstring> exclusions = {L"app-spared*"};
  constexpr std::size_t kNone = SampledProcess::kNoRule;
  const std::vector<std::uint64_t> kZero(8, 0);
  const struct {
    SimulatedProcess process;
    bool opened;
    std::size_t firstRule;
    std::vector<std::uint64_t> counters;
  } kCases[] = {
      {Busy(0, L"sys-idle"), false, 2, kZero},
      {Busy(4, L"sys-kernel"), false, 2, kZero},
      {Busy(5, L"app.exe"), true, 1, {10, 20, 30, 40, 50, 60, 70, 80}},
      {Busy(6, L"other.exe"), false, kNone, kZero},
      {Busy(7, L"off.exe"), false, kNone, kZero},
      {Busy(8, L"app-spared.exe"), false, kNone, kZero},
      {Busy(9, L"APP-protected.scr", Access::kLimited), true, 1, {10, 20, 30, 40, 50, 60, 0, 0}},
      {Busy(10, L"saver.scr", Access::kNone), false, 3, kZero},
      {Busy(11, L"app1", Access::kFull, SimulatedProcess::kHandles), true, 1, {0, 20, 30, 40, 50, 60, 70, 80}},
      {Busy(12, L"app2", Access::kFull, SimulatedProcess::kMemory), true, 1, {10, 0, 0, 40, 50, 60, 70, 80}},
      {Busy(13, L"app3", Access::kFull, SimulatedProcess::kTimes), true, 1, {10, 20, 30, 0, 0, 0, 70, 80}},
      {Busy(14, L"app4", Access::kFull, SimulatedProcess::kGuiObjects), true, 1, {10, 20, 30, 40, 50, 60, 0, 0}},
  };
  SimulatedProcessTable table;
  for (const auto& test : kCases) table.Put(test.process);
  SimulatedProcess fleeting = Busy(15, L"app5");
  fleeting.exitsAfterListing = true;
  table.Put(fleeting);

  std::vector<ProcessEntry> entries;
  ProcessSample sample;
  // The second round works in the memory of the first and must not keep anything of it.
  for (const std::size_t expectedSize : {std::size(kCases) + 1, std::size(kCases)}) {
    ASSERT_TRUE(SnapshotProcesses(table, entries, sample));
    ASSERT_EQ(sample.size(), expectedSize);
    std::vector<std::uint32_t> expectedOpened;
    for (std::size_t index = 0; index < std::size(kCases); ++index) {
      const auto& test = kCases[index];
      CollectCounters(table, rules, exclusions, sample[index]);
      const ProcessMetrics& metrics = sample[index].metrics;
      EXPECT_EQ(metrics.pid, test.process.pid);
      EXPECT_EQ(metrics.name, test.process.name);
      EXPECT_EQ(metrics.threads, test.process.threads);
      EXPECT_EQ(sample[index].firstRule, test.firstRule) << test.process.pid;
      EXPECT_EQ(Counters(metrics), test.counters) << test.process.pid;
      if (test.opened) expectedOpened.push_back(test.process.pid);
    }
    if (expectedSize > std::size(kCases)) {
      CollectCounters(table, rules, exclusions, sample.back());
      EXPECT_EQ(sample.back().firstRule, 1u);
      EXPECT_EQ(Counters(sample.back().metrics), kZero);
    }
    EXPECT_EQ(table.Opened(), expectedOpened);
    EXPECT_EQ(table.OpenCount(), 0u);
    EXPECT_EQ(table.ForbiddenReads(), 0u);
  }
}

TEST(Sampling, FailedListIsReportedAndAnEmptyOneIsNot) {
  SimulatedProcessTable table;
  table.Put(Busy(7, L"a.exe"));
  std::vector<ProcessEntry> entries;
  ProcessSample sample;
  const DiagnosticLines lines;
  ASSERT_TRUE(SnapshotProcesses(table, entries, sample));
  table.FailLists(24);
  EXPECT_FALSE(SnapshotProcesses(table, entries, sample));
  EXPECT_TRUE(sample.empty());
  EXPECT_EQ(DiagnosticLines::Take(), std::vector<std::wstring>{L"CreateToolhelp32Snapshot failed: 24"});
  table.FailLists(0);
  table.Remove(7);
  EXPECT_FALSE(SnapshotProcesses(table, entries, sample));
  EXPECT_TRUE(DiagnosticLines::Take().empty());
}

}  // namespace
