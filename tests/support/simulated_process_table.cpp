#include "tests/support/simulated_process_table.h"

#include <utility>

/// Reads look the process up afresh, so that one that has exited meanwhile gives nothing.
class SimulatedProcessTable::OpenedProcess final : public ProcessSampler::Process {
 public:
  OpenedProcess(SimulatedProcessTable& table, std::uint32_t pid) : table_(table), pid_(pid) { ++table_.openCount_; }
  ~OpenedProcess() override { --table_.openCount_; }
  OpenedProcess(const OpenedProcess&) = delete;
  OpenedProcess& operator=(const OpenedProcess&) = delete;

  bool HasFullAccess() const override {
    const SimulatedProcess* process = table_.Find(pid_);
    return process != nullptr && process->access == SimulatedProcess::Access::kFull;
  }

  bool ReadHandleCount(std::uint32_t& handles) override {
    return Read(SimulatedProcess::kHandles, &SimulatedProcess::handles, handles);
  }
  bool ReadMemory(ProcessMemory& memory) override { return Read(SimulatedProcess::kMemory, &SimulatedProcess::memory, memory); }
  bool ReadTimes(ProcessTimes& times) override { return Read(SimulatedProcess::kTimes, &SimulatedProcess::times, times); }
  std::uint32_t ReadGdiObjects() override { return ReadGuiCount(&SimulatedProcess::gdiObjects); }
  std::uint32_t ReadUserObjects() override { return ReadGuiCount(&SimulatedProcess::userObjects); }

 private:
  template <class Value>
  bool Read(std::uint32_t counter, Value SimulatedProcess::*field, Value& value) {
    const SimulatedProcess* process = table_.Find(pid_);
    if (process == nullptr || (process->failing & counter) != 0) return false;
    value = process->*field;
    return true;
  }

  std::uint32_t ReadGuiCount(std::uint32_t SimulatedProcess::*field) {
    if (!HasFullAccess()) ++table_.forbiddenReads_;
    std::uint32_t count = 0;
    return Read(SimulatedProcess::kGuiObjects, field, count) ? count : 0;
  }

  SimulatedProcessTable& table_;
  std::uint32_t pid_;
};

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

std::unique_ptr<ProcessSampler::Process> SimulatedProcessTable::OpenProcess(std::uint32_t pid) {
  const SimulatedProcess* process = Find(pid);
  if (process == nullptr || process->access == SimulatedProcess::Access::kNone) return nullptr;
  opened_.push_back(pid);
  return std::make_unique<OpenedProcess>(*this, pid);
}
