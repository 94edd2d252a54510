#include "core/monitor_cycle.h"

#include <algorithm>
#include <utility>

#include "core/rule_evaluation.h"
#include "core/wildcard.h"
#include "platform/diagnostics.h"

MonitorCycle::MonitorCycle(std::shared_ptr<ProcessSampler> sampler, Clock& clock, std::uint32_t processorCount)
    : sampler_(std::move(sampler)), clock_(clock), cpu_(processorCount) {}

void MonitorCycle::Run(const RuleList& rules, const std::vector<std::wstring>& exclusions, IAlertSink& sink) {
  if (rules.empty() || !SnapshotProcesses(*sampler_, entries_, sample_)) return;
  for (SampledProcess& process : sample_) CollectCounters(*sampler_, rules, exclusions, process);
  const std::uint64_t nowMs = clock_.TickMs();
  cpu_.Update(sample_, nowMs);
  for (const SampledProcess& process : sample_) EvaluateRules(rules, process, sink);
  PruneCooldowns(rules, nowMs);
}

void MonitorCycle::ForgetHistory() {
  cpu_.Clear();
  cooldowns_.Clear();
}

void MonitorCycle::EvaluateRules(const RuleList& rules, const SampledProcess& process, IAlertSink& sink) {
  const ProcessMetrics& metrics = process.metrics;
  for (std::size_t index = process.firstRule; index < rules.size(); ++index) {
    const ThresholdRule& rule = rules[index];
    // Collection has already found the first one to match.
    const bool applies =
        index == process.firstRule || (rule.enabled && WildcardMatch(metrics.name.c_str(), rule.processPattern.c_str()));
    if (!applies) continue;
    std::wstring violation = ViolationText(rule, metrics);
    if (violation.empty()) continue;
    if (!cooldowns_.Pass(metrics.pid, rule.ruleId, rule.cooldownSec, clock_.TickMs())) continue;
    RaiseAlert(metrics, rule.ruleId, std::move(violation), sink);
  }
}

void MonitorCycle::RaiseAlert(const ProcessMetrics& metrics, std::uint32_t ruleId, std::wstring violation, IAlertSink& sink) {
  DebugLog(L"ALERT: PID %u (%ls) Rule %u: %ls", metrics.pid, metrics.name.c_str(), ruleId, violation.c_str());
  sink.OnAlert({clock_.Now(), metrics.pid, metrics.name, ruleId, std::move(violation)});
}

void MonitorCycle::PruneCooldowns(const RuleList& rules, std::uint64_t nowMs) {
  if (cooldowns_.Size() == 0) return;
  alivePids_.clear();
  for (const SampledProcess& process : sample_) alivePids_.push_back(process.metrics.pid);
  std::sort(alivePids_.begin(), alivePids_.end());
  cooldowns_.Prune(alivePids_, rules, nowMs);
}
