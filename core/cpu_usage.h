#pragma once

// CPU percent from the change of process times between two cycles, with the table of the times last seen.

#include <cstddef>
#include <cstdint>
#include <unordered_map>

#include "core/records.h"

/// One thread at a time.
class CpuUsage {
 public:
  /// `processorCount` 0 counts as 1.
  explicit CpuUsage(std::uint32_t processorCount);

  /// Sets `cpuPercent` of every process whose times are known from an earlier cycle, remembers the times of this one and forgets
  /// the processes that are not in the sample.
  void Update(ProcessSample& sample, std::uint64_t nowMs);
  void Clear() { samples_.clear(); }
  [[nodiscard]] std::size_t Size() const { return samples_.size(); }

 private:
  struct CpuSample {
    std::uint64_t kernelTime = 0;    ///< 100 ns
    std::uint64_t userTime = 0;      ///< 100 ns
    std::uint64_t creationTime = 0;  ///< 100 ns since 1601-01-01 UTC; 0 while unknown
    std::uint64_t sampleTick = 0;    ///< ms
    std::uint64_t lastCycle = 0;     ///< the cycle whose list last held the process
  };

  [[nodiscard]] double Percent(const CpuSample& before, const ProcessMetrics& metrics, std::uint64_t nowMs) const;

  std::uint32_t processorCount_;
  std::uint64_t cycle_ = 0;
  std::unordered_map<std::uint32_t, CpuSample> samples_;
};
