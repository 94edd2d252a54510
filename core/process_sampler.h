#pragma once

// The seam between the monitor and the machine. Everything the sampling logic knows about processes comes through here, so that
// the same logic runs over the live system, a recording, or a table made up by a test.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/records.h"

/// What the system's list says of a process. Some systems tell more than name and threads at no extra cost; the rest stays zero.
struct ProcessEntry {
  std::uint32_t pid = 0;
  std::uint32_t threads = 0;
  std::uint64_t workingSet = 0;    ///< bytes
  std::uint64_t kernelTime = 0;    ///< 100 ns
  std::uint64_t userTime = 0;      ///< 100 ns
  std::uint64_t creationTime = 0;  ///< 100 ns since 1601-01-01 UTC
  std::wstring name;               ///< executable file name without path
};

/// The counters whose reading costs something on some system, as bits.
enum WantedCounters : std::uint32_t {
  kWantHandles = 1,
  kWantPrivateBytes = 2,
};

/// Worker thread only. Keeps what it needs between calls: once the machine is known, neither call allocates.
class ProcessSampler {
 public:
  virtual ~ProcessSampler() = default;

  /// Replaces `entries` by one entry per process, in the system's own order. Blocks for as long as the system takes. On failure
  /// leaves `entries` empty and stores the system's error code in `error` (0: the list was empty).
  [[nodiscard]] virtual bool ListProcesses(std::vector<ProcessEntry>& entries, std::uint32_t& error) = 0;

  /// Fills the counters of a process of the last list, those outside `wanted` where that costs nothing. What cannot be read is
  /// left as it was. False when the process cannot be opened at all.
  virtual bool ReadCounters(const ProcessEntry& entry, std::uint32_t wanted, ProcessMetrics& metrics) = 0;
};

/// The sampler of the machine this is built for: process snapshots on Windows, /proc on Linux.
[[nodiscard]] std::shared_ptr<ProcessSampler> MakeSystemProcessSampler();

/// Logical processors of this machine; at least 1.
[[nodiscard]] std::uint32_t SystemProcessorCount();
