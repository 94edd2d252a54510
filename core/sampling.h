#pragma once

// Turns the machine's view of its processes into a cycle's sample, opening no more of them than some rule can apply to.

#include <cstddef>
#include <string>
#include <vector>

#include "core/process_sampler.h"
#include "core/records.h"

/// A process of the sample with what its collection found out about the rules.
struct SampledProcess {
  static constexpr std::size_t kNoRule = static_cast<std::size_t>(-1);

  ProcessMetrics metrics;
  /// Index of the first enabled rule that matches the name. kNoRule: no rule does or the process is excluded, so no rule is
  /// evaluated.
  std::size_t firstRule = kNoRule;
};

/// One entry per process, in the order of the system's list; rebuilt in every cycle within the same memory.
using ProcessSample = std::vector<SampledProcess>;

/// Fills the sample from the process list; counters stay zero. `entries` is only working memory, kept for the next call. False
/// when there is no list (a diagnostic line says why) or it is empty (no line); the sample is then empty.
[[nodiscard]] bool SnapshotProcesses(ProcessSampler& sampler, std::vector<ProcessEntry>& entries, ProcessSample& sample);

/// Fills the counters of one process, or leaves them zero when it is excluded, matched by no enabled rule, one of the system's
/// own two, or not to be opened. A counter that cannot be read stays zero.
void CollectCounters(ProcessSampler& sampler, const RuleList& rules, const std::vector<std::wstring>& exclusions,
                     SampledProcess& process);
