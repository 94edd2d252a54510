#include "tests/support/simulated_process_table.h"

#include <utility>

void SimulatedProcessTable::Put(SimulatedProcess process) {
  if (SimulatedProcess* const present = Find(process.pid)) {
    *present = std::move(process);
  } else {
    processes_.push_back(std::move(process));
  }
}

void SimulatedProcessTable::Remove(std::uint32_t pid) {
  std::erase_if(processes_, [pid](const SimulatedProcess& process) { return process.pid == pid; });
}

SimulatedProcess* SimulatedProcessTable::Find(std::uint32_t pid) {
  // A cycle asks in list order and several times for each process: looking on from the last answer makes the whole cycle one
  // pass.
  for (std::size_t step = 0; step < processes_.size(); ++step) {
    const std::size_t index = (lastFound_ + step) % processes_.size();
    if (processes_[index].pid != pid) continue;
    lastFound_ = index;
    return &processes_[index];
  }
  return nullptr;
}

bool SimulatedProcessTable::ListProcesses(std::vector<ProcessEntry>& entries, std::uint32_t& error) {
  ++listCount_;
  opened_.clear();
  error = listError_;
  entries.resize(listError_ == 0 ? processes_.size() : 0);
  for (std::size_t index = 0; index < entries.size(); ++index) {
    entries[index].pid = processes_[index].pid;
    entries[index].threads = processes_[index].threads;
    entries[index].name = processes_[index].name;
  }
  if (listError_ == 0) std::erase_if(processes_, [](const SimulatedProcess& process) { return process.exitsAfterListing; });
  return !entries.empty();
}

bool SimulatedProcessTable::ReadCounters(const ProcessEntry& entry, std::uint32_t wanted, ProcessMetrics& metrics) {
  const SimulatedProcess* process = Find(entry.pid);
  if (process == nullptr || process->access == SimulatedProcess::Access::kNone) return false;
  opened_.emplace_back(entry.pid, wanted);
  const auto works = [process](SimulatedProcess::Counter counter) { return (process->failing & counter) == 0; };
  if (works(SimulatedProcess::kHandles)) metrics.handles = process->handles;
  if (works(SimulatedProcess::kMemory)) {
    metrics.workingSet = process->memory.workingSet;
    metrics.privateBytes = process->memory.privateBytes;
  }
  if (works(SimulatedProcess::kTimes)) {
    metrics.creationTime = process->times.creationTime;
    metrics.kernelTime = process->times.kernelTime;
    metrics.userTime = process->times.userTime;
  }
  if (works(SimulatedProcess::kGuiObjects) && process->access == SimulatedProcess::Access::kFull) {
    metrics.gdiObjects = process->gdiObjects;
    metrics.userObjects = process->userObjects;
  }
  return true;
}
