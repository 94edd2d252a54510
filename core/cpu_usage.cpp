#include "core/cpu_usage.h"

#include <algorithm>

namespace {

constexpr double kTimeUnitsPerMs = 10'000.0;

// An unknown creation time says nothing, so it cannot say that the process is another one.
bool IsAnotherProcess(std::uint64_t creationTimeBefore, std::uint64_t creationTimeNow) {
  return creationTimeBefore != 0 && creationTimeNow != 0 && creationTimeBefore != creationTimeNow;
}

}  // namespace

CpuUsage::CpuUsage(std::uint32_t processorCount) : processorCount_(processorCount != 0 ? processorCount : 1) {}

double CpuUsage::Percent(const CpuSample& before, const ProcessMetrics& metrics, std::uint64_t nowMs) const {
  const std::uint64_t elapsedMs = nowMs - before.sampleTick;
  if (elapsedMs == 0) return 0.0;
  const std::uint64_t busy = (metrics.kernelTime - before.kernelTime) + (metrics.userTime - before.userTime);
  const double available = static_cast<double>(processorCount_) * static_cast<double>(elapsedMs) * kTimeUnitsPerMs;
  return std::clamp(static_cast<double>(busy) / available * 100.0, 0.0, 100.0);
}

void CpuUsage::Update(ProcessSample& sample, std::uint64_t nowMs) {
  ++cycle_;
  std::size_t seen = 0;
  for (SampledProcess& process : sample) {
    ProcessMetrics& metrics = process.metrics;
    const bool timesKnown = metrics.kernelTime != 0 || metrics.userTime != 0;
    const auto known = timesKnown ? samples_.try_emplace(metrics.pid).first : samples_.find(metrics.pid);
    if (known == samples_.end()) continue;
    CpuSample& before = known->second;
    ++seen;
    if (timesKnown) {
      std::uint64_t creationTime = metrics.creationTime;
      if (before.lastCycle != 0 && !IsAnotherProcess(before.creationTime, creationTime)) {
        metrics.cpuPercent = Percent(before, metrics, nowMs);
        if (creationTime == 0) creationTime = before.creationTime;
      }
      before = {metrics.kernelTime, metrics.userTime, creationTime, nowMs, cycle_};
    }
    before.lastCycle = cycle_;
  }
  if (seen == samples_.size()) return;
  std::erase_if(samples_, [this](const auto& entry) { return entry.second.lastCycle != cycle_; });
}
