#pragma once

// A made-up machine: a table of processes that can refuse to be opened, fail to give counters, exit between list and open, and
// hand their process IDs on. Tests and benchmarks run the monitor over it.

#include <algorithm>
#include <utility>
#include <vector>

#include "core/process_sampler.h"

struct SimulatedProcess : ProcessMetrics {
  /// Bits of `failing`.
  enum Counter : std::uint32_t { kHandles = 1, kMemory = 2, kTimes = 4, kGuiObjects = 8 };

  bool opens = true;
  std::uint32_t failing = 0;       ///< counters that cannot be read, as bits
  bool exitsAfterListing = false;  ///< in the next list for the last time, and gone before it can be opened
};

/// One thread at a time.
class SimulatedProcessTable : public ProcessSampler {
 public:
  std::uint32_t listError = 0;  ///< with which every list fails
  std::size_t lists = 0;        ///< so far
  /// The process IDs opened since the last list, each with the counters that were wanted; refusals are not among them.
  std::vector<std::pair<std::uint32_t, std::uint32_t>> opened;

  /// Appends the process, or puts it in the place of the one that has its process ID.
  void Put(SimulatedProcess process) {
    SimulatedProcess* const present = Find(process.pid);
    (present != nullptr ? *present : processes_.emplace_back()) = std::move(process);
  }
  void Remove(std::uint32_t pid) {
    std::erase_if(processes_, [pid](const SimulatedProcess& process) { return process.pid == pid; });
  }
  /// Null when there is none; valid until the next change of the table.
  [[nodiscard]] SimulatedProcess* Find(std::uint32_t pid) {
    // A cycle asks in list order and several times for each process: looking on from the last answer makes the whole cycle one
    // pass.
    const auto isWanted = [pid](const SimulatedProcess& process) { return process.pid == pid; };
    const auto last = processes_.begin() + static_cast<std::ptrdiff_t>(std::min(lastFound_, processes_.size()));
    auto found = std::find_if(last, processes_.end(), isWanted);
    if (found == processes_.end()) found = std::find_if(processes_.begin(), last, isWanted);
    if (found == processes_.end() || !isWanted(*found)) return nullptr;
    lastFound_ = static_cast<std::size_t>(found - processes_.begin());
    return &*found;
  }

  bool ListProcesses(std::vector<ProcessEntry>& entries, std::uint32_t& error) override {
    ++lists;
    opened.clear();
    error = listError;
    entries.resize(listError == 0 ? processes_.size() : 0);
    for (std::size_t index = 0; index < entries.size(); ++index) {
      entries[index].pid = processes_[index].pid;
      entries[index].threads = processes_[index].threads;
      entries[index].name = processes_[index].name;
    }
    if (listError == 0) std::erase_if(processes_, [](const SimulatedProcess& process) { return process.exitsAfterListing; });
    return !entries.empty();
  }
  bool ReadCounters(const ProcessEntry& entry, std::uint32_t wanted, ProcessMetrics& metrics) override {
    using Metrics = ProcessMetrics;
    const SimulatedProcess* process = Find(entry.pid);
    if (process == nullptr || !process->opens) return false;
    opened.emplace_back(entry.pid, wanted);
    const auto read = [&](SimulatedProcess::Counter counter, auto... figures) {
      if ((process->failing & counter) == 0) ((metrics.*figures = process->*figures), ...);
    };
    read(SimulatedProcess::kHandles, &Metrics::handles);
    read(SimulatedProcess::kMemory, &Metrics::workingSet, &Metrics::privateBytes);
    read(SimulatedProcess::kTimes, &Metrics::creationTime, &Metrics::kernelTime, &Metrics::userTime);
    read(SimulatedProcess::kGuiObjects, &Metrics::gdiObjects, &Metrics::userObjects);
    return true;
  }

 private:
  std::vector<SimulatedProcess> processes_;
  std::size_t lastFound_ = 0;
};
