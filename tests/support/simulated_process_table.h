#pragma once

// A made-up machine: a table of processes that can refuse to be opened, fail to give counters, exit between list and open, and
// hand their process IDs on. Tests and benchmarks run the monitor over it.

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "core/process_sampler.h"

struct SimulatedProcess {
  enum class Access { kFull, kLimited, kNone };
  /// Bits of `failing`.
  enum Counter : std::uint32_t { kHandles = 1, kMemory = 2, kTimes = 4, kGuiObjects = 8 };

  std::uint32_t pid = 0;
  std::wstring name;
  std::uint32_t threads = 1;
  std::uint32_t handles = 0;
  struct {
    std::uint64_t workingSet = 0;    ///< bytes
    std::uint64_t privateBytes = 0;  ///< bytes
  } memory;
  struct {
    std::uint64_t creationTime = 0;  ///< 100 ns
    std::uint64_t kernelTime = 0;    ///< 100 ns
    std::uint64_t userTime = 0;      ///< 100 ns
  } times;
  std::uint32_t gdiObjects = 0;
  std::uint32_t userObjects = 0;
  Access access = Access::kFull;
  std::uint32_t failing = 0;       ///< counters that cannot be read, as bits
  bool exitsAfterListing = false;  ///< in the next list for the last time, and gone before it can be opened
};

/// One thread at a time.
class SimulatedProcessTable : public ProcessSampler {
 public:
  /// Appends the process, or puts it in the place of the one that has its process ID.
  void Put(SimulatedProcess process);
  void Remove(std::uint32_t pid);
  /// Null when there is none; valid until the next change of the table.
  [[nodiscard]] SimulatedProcess* Find(std::uint32_t pid);

  /// The error with which every list fails from now on; 0: lists work again.
  void FailLists(std::uint32_t error) { listError_ = error; }

  [[nodiscard]] std::size_t ListCount() const { return listCount_; }
  /// The process IDs opened since the last list, each with the counters that were wanted; refusals are not among them.
  [[nodiscard]] const std::vector<std::pair<std::uint32_t, std::uint32_t>>& Opened() const { return opened_; }

  bool ListProcesses(std::vector<ProcessEntry>& entries, std::uint32_t& error) override;
  bool ReadCounters(const ProcessEntry& entry, std::uint32_t wanted, ProcessMetrics& metrics) override;

 private:
  std::vector<SimulatedProcess> processes_;
  std::size_t lastFound_ = 0;
  std::vector<std::pair<std::uint32_t, std::uint32_t>> opened_;
  std::size_t listCount_ = 0;
  std::uint32_t listError_ = 0;
};
