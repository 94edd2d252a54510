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
  for (SampledProcess& process : sample) {
    ProcessMetrics& metrics = process.metrics;
    const auto known = samples_.find(metrics.pid);
    if (metrics.kernelTime == 0 && metrics.userTime == 0) {
      if (known != samples_.end()) known->second.lastCycle = cycle_;
      continue;
    }
    std::uint64_t creationTime = metrics.creationTime;
    if (known != samples_.end() && !IsAnotherProcess(known->second.creationTime, creationTime)) {
      metrics.cpuPercent = Percent(known->second, metrics, nowMs);
      if (creationTime == 0) creationTime = known->second.creationTime;
    }
    samples_[metrics.pid] = {metrics.kernelTime, metrics.userTime, creationTime, nowMs, cycle_};
  }
  std::erase_if(samples_, [this](const auto& entry) { return entry.second.lastCycle != cycle_; });
}
