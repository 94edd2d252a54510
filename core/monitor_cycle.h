#pragma once

// One monitoring cycle from the process list to the alerts, with the history that cycles hand on to each other. Apart from the
// engine, which decides only when a cycle runs and on which thread.

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/alert_sink.h"
#include "core/cooldown_table.h"
#include "core/cpu_usage.h"
#include "core/process_sampler.h"
#include "core/rule_matcher.h"
#include "platform/clock.h"

/// One thread at a time. Keeps its working memory between cycles: a cycle without anything new does not allocate.
class MonitorCycle {
 public:
  MonitorCycle(std::shared_ptr<ProcessSampler> sampler, Clock& clock, std::uint32_t processorCount);

  /// Does nothing without rules or without a process list. Each alert also becomes a diagnostic line. `isStopped` is asked
  /// between two processes: a cycle over many rules ends soon after it says so.
  void Run(RuleSnapshot rules, ExclusionSnapshot exclusions, IAlertSink& sink, const std::function<bool()>& isStopped);
  /// Forgets all CPU history and all cooldowns.
  void ForgetHistory();
  /// Lets every violation alert again.
  void ForgetCooldowns() { cooldowns_.Clear(); }
  /// From now on reads these WantedCounters of every process that a rule matches, whatever the rule asks for.
  void AlsoRead(std::uint32_t wanted) { alsoWanted_ = wanted; }

  [[nodiscard]] const CpuUsage& Cpu() const { return cpu_; }
  [[nodiscard]] const CooldownTable& Cooldowns() const { return cooldowns_; }
  /// The last cycle's processes, in the order of the system's list.
  [[nodiscard]] const ProcessSample& Sample() const { return sample_; }
  /// The list that the places in the sample belong to.
  [[nodiscard]] const RuleList& Rules() const { return matcher_.Rules(); }

 private:
  [[nodiscard]] bool TakeList();
  void Collect(ProcessEntry& entry, SampledProcess& process);
  void EvaluateRules(const SampledProcess& process, IAlertSink& sink);
  void RaiseAlert(const ProcessMetrics& metrics, std::uint32_t ruleId, std::wstring violation, IAlertSink& sink);
  void PruneCooldowns(std::uint64_t nowMs);

  std::shared_ptr<ProcessSampler> sampler_;
  Clock& clock_;
  RuleMatcher matcher_;
  CpuUsage cpu_;
  CooldownTable cooldowns_;
  std::vector<ProcessEntry> entries_;
  ProcessSample sample_;
  std::vector<std::uint32_t> alivePids_;
  std::uint32_t alsoWanted_ = 0;
};
