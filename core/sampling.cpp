#include "core/sampling.h"

#include "core/wildcard.h"
#include "platform/diagnostics.h"

namespace {

constexpr std::uint32_t kIdleProcessId = 0;
constexpr std::uint32_t kKernelProcessId = 4;

std::size_t FindFirstRule(const RuleList& rules, const wchar_t* name) {
  for (std::size_t index = 0; index < rules.size(); ++index) {
    if (rules[index].enabled && WildcardMatch(name, rules[index].processPattern.c_str())) return index;
  }
  return SampledProcess::kNoRule;
}

void ReadCounters(ProcessSampler::Process& process, ProcessMetrics& metrics) {
  std::uint32_t handles = 0;
  if (process.ReadHandleCount(handles)) metrics.handles = handles;
  ProcessMemory memory;
  if (process.ReadMemory(memory)) {
    metrics.workingSet = memory.workingSet;
    metrics.privateBytes = memory.privateBytes;
  }
  ProcessTimes times;
  if (process.ReadTimes(times)) {
    metrics.creationTime = times.creationTime;
    metrics.kernelTime = times.kernelTime;
    metrics.userTime = times.userTime;
  }
  if (process.HasFullAccess()) {
    metrics.gdiObjects = process.ReadGdiObjects();
    metrics.userObjects = process.ReadUserObjects();
  }
}

}  // namespace

bool SnapshotProcesses(ProcessSampler& sampler, std::vector<ProcessEntry>& entries, ProcessSample& sample) {
  std::uint32_t error = 0;
  if (!sampler.ListProcesses(entries, error)) {
    if (error != 0) DebugLog(L"CreateToolhelp32Snapshot failed: %u", error);
    entries.clear();
  }
  sample.resize(entries.size());
  for (std::size_t index = 0; index < entries.size(); ++index) {
    ProcessMetrics& metrics = sample[index].metrics;
    // The names change places rather than being copied: the list gets the last cycle's text memory back to write into.
    std::wstring name = std::move(metrics.name);
    name.swap(entries[index].name);
    metrics = ProcessMetrics{};
    metrics.pid = entries[index].pid;
    metrics.name = std::move(name);
    metrics.threads = entries[index].threads;
    sample[index].firstRule = SampledProcess::kNoRule;
  }
  return !sample.empty();
}

void CollectCounters(ProcessSampler& sampler, const RuleList& rules, const std::vector<std::wstring>& exclusions,
                     SampledProcess& process) {
  ProcessMetrics& metrics = process.metrics;
  if (IsExcluded(metrics.name.c_str(), exclusions)) return;
  process.firstRule = FindFirstRule(rules, metrics.name.c_str());
  if (process.firstRule == SampledProcess::kNoRule) return;
  if (metrics.pid == kIdleProcessId || metrics.pid == kKernelProcessId) return;
  if (const std::unique_ptr<ProcessSampler::Process> opened = sampler.OpenProcess(metrics.pid)) ReadCounters(*opened, metrics);
}
