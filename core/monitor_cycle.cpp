#include "core/monitor_cycle.h"

#include <algorithm>
#include <utility>

#include "core/printable_text.h"
#include "core/rule_evaluation.h"
#include "platform/diagnostics.h"

namespace {

// The system's own two, which nobody can open.
constexpr std::uint32_t kIdleProcessId = 0;
constexpr std::uint32_t kKernelProcessId = 4;

}  // namespace

MonitorCycle::MonitorCycle(std::shared_ptr<ProcessSampler> sampler, Clock& clock, std::uint32_t processorCount)
    : sampler_(std::move(sampler)), clock_(clock), cpu_(processorCount) {}

void MonitorCycle::Run(RuleSnapshot rules, ExclusionSnapshot exclusions, IAlertSink& sink,
                       const std::function<bool()>& isStopped) {
  if (rules->empty() || !TakeList()) return;
  matcher_.Use(std::move(rules), std::move(exclusions));
  for (std::size_t index = 0; index < entries_.size(); ++index) {
    if (isStopped()) return;
    Collect(entries_[index], sample_[index]);
  }
  const std::uint64_t nowMs = clock_.TickMs();
  cpu_.Update(sample_, nowMs);
  for (const SampledProcess& process : sample_) {
    if (isStopped()) return;
    if (process.rules != nullptr) EvaluateRules(process, sink);
  }
  PruneCooldowns(nowMs);
}

void MonitorCycle::ForgetHistory() {
  cpu_.Clear();
  cooldowns_.Clear();
}

/// False when there is no list (a diagnostic line says why) or it is empty (no line).
bool MonitorCycle::TakeList() {
  std::uint32_t error = 0;
  if (!sampler_->ListProcesses(entries_, error)) {
    if (error != 0) DebugLog(L"CreateToolhelp32Snapshot failed: %u", error);
    entries_.clear();
  }
  sample_.resize(entries_.size());
  return !entries_.empty();
}

void MonitorCycle::Collect(ProcessEntry& entry, SampledProcess& process) {
  ProcessMetrics& metrics = process.metrics;
  // The names change places rather than being copied: the list gets the last cycle's text memory back to write into.
  std::wstring name = std::move(metrics.name);
  name.swap(entry.name);
  metrics = ProcessMetrics{};
  metrics.pid = entry.pid;
  metrics.name = std::move(name);
  metrics.threads = entry.threads;
  metrics.known = kThreadsKnown;
  const RuleMatch& match = matcher_.Find(metrics.name);
  process.rules = match.rules;
  process.opened = match.rules != nullptr && entry.pid != kIdleProcessId && entry.pid != kKernelProcessId &&
                   sampler_->ReadCounters(entry, match.wanted | alsoWanted_, metrics);
}

void MonitorCycle::EvaluateRules(const SampledProcess& process, IAlertSink& sink) {
  const ProcessMetrics& metrics = process.metrics;
  for (const std::uint32_t place : *process.rules) {
    const ThresholdRule& rule = matcher_.Rules()[place];
    std::wstring violation = ViolationText(rule, metrics);
    if (violation.empty()) continue;
    if (!cooldowns_.Pass(metrics.pid, rule.ruleId, rule.cooldownSec, clock_.TickMs())) continue;
    RaiseAlert(metrics, rule.ruleId, std::move(violation), sink);
  }
}

void MonitorCycle::RaiseAlert(const ProcessMetrics& metrics, std::uint32_t ruleId, std::wstring violation, IAlertSink& sink) {
  std::wstring name = PrintableText(metrics.name);
  DebugLog(L"ALERT: PID %u (%ls) Rule %u: %ls", metrics.pid, name.c_str(), ruleId, violation.c_str());
  sink.OnAlert({clock_.Now(), metrics.pid, std::move(name), ruleId, std::move(violation)});
}

void MonitorCycle::PruneCooldowns(std::uint64_t nowMs) {
  if (cooldowns_.Size() == 0) return;
  alivePids_.clear();
  for (const SampledProcess& process : sample_) alivePids_.push_back(process.metrics.pid);
  std::sort(alivePids_.begin(), alivePids_.end());
  cooldowns_.Prune(alivePids_, matcher_.Rules(), nowMs);
}
