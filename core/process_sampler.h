#pragma once

// The seam between the monitor and the machine. Everything the sampling logic knows about processes comes through here, so that
// the same logic runs over the live system, a recording, or a table made up by a test.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct ProcessEntry {
  std::uint32_t pid = 0;
  std::uint32_t threads = 0;
  std::wstring name;  ///< executable file name without path
};

struct ProcessTimes {
  std::uint64_t creationTime = 0;  ///< 100 ns since 1601-01-01 UTC
  std::uint64_t kernelTime = 0;    ///< 100 ns
  std::uint64_t userTime = 0;      ///< 100 ns
};

struct ProcessMemory {
  std::uint64_t workingSet = 0;    ///< bytes
  std::uint64_t privateBytes = 0;  ///< bytes
};

class ProcessSampler {
 public:
  /// An opened process; closed when destroyed. Reads leave the output untouched and return false when the counter cannot be had.
  class Process {
   public:
    virtual ~Process() = default;
    /// False when only the limited access was granted: then the GUI counts are not to be read.
    [[nodiscard]] virtual bool HasFullAccess() const = 0;
    [[nodiscard]] virtual bool ReadHandleCount(std::uint32_t& handles) = 0;
    [[nodiscard]] virtual bool ReadMemory(ProcessMemory& memory) = 0;
    [[nodiscard]] virtual bool ReadTimes(ProcessTimes& times) = 0;
    /// 0 on failure, as the system itself answers.
    [[nodiscard]] virtual std::uint32_t ReadGdiObjects() = 0;
    [[nodiscard]] virtual std::uint32_t ReadUserObjects() = 0;
  };

  virtual ~ProcessSampler() = default;

  /// Replaces `entries` by one entry per process, in the system's own order. Worker thread only; blocks for as long as the system
  /// takes. On failure leaves `entries` empty and stores the system's error code in `error` (0: the list was empty).
  [[nodiscard]] virtual bool ListProcesses(std::vector<ProcessEntry>& entries, std::uint32_t& error) = 0;
  /// Opens a process with full access, else with limited access; null when it can be opened with neither.
  [[nodiscard]] virtual std::unique_ptr<Process> OpenProcess(std::uint32_t pid) = 0;
};

/// The sampler of the machine this is built for: process snapshots on Windows, /proc on Linux.
[[nodiscard]] std::shared_ptr<ProcessSampler> MakeSystemProcessSampler();

/// Logical processors of this machine; at least 1.
[[nodiscard]] std::uint32_t SystemProcessorCount();
