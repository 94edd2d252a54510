#include "core/process_sampler.h"

#include <windows.h>

#include <psapi.h>
#include <tlhelp32.h>

#include "platform/handles.h"

namespace {

constexpr DWORD kFullAccess = PROCESS_QUERY_INFORMATION | PROCESS_VM_READ;
constexpr DWORD kLimitedAccess = PROCESS_QUERY_LIMITED_INFORMATION | PROCESS_VM_READ;
static_assert(sizeof(PROCESS_MEMORY_COUNTERS_EX) == 80, "the size that the system is told");

std::uint64_t Join(const FILETIME& time) { return (std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime; }

void ReadMemory(HANDLE process, ProcessMetrics& metrics) {
  PROCESS_MEMORY_COUNTERS_EX counters = {};
  counters.cb = sizeof counters;
  if (!::K32GetProcessMemoryInfo(process, reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&counters), sizeof counters)) return;
  metrics.workingSet = counters.WorkingSetSize;
  metrics.privateBytes = counters.PrivateUsage;
  metrics.known |= kWorkingSetKnown | kPrivateBytesKnown;
}

void ReadTimes(HANDLE process, ProcessMetrics& metrics) {
  FILETIME creation = {};
  FILETIME exit = {};
  FILETIME kernel = {};
  FILETIME user = {};
  if (!::GetProcessTimes(process, &creation, &exit, &kernel, &user)) return;
  metrics.creationTime = Join(creation);
  metrics.kernelTime = Join(kernel);
  metrics.userTime = Join(user);
  metrics.known |= kTimesKnown;
}

class WindowsProcessSampler final : public ProcessSampler {
 public:
  bool ListProcesses(std::vector<ProcessEntry>& entries, std::uint32_t& error) override {
    std::size_t count = 0;
    error = 0;
    const UniqueHandle snapshot = OwnFileHandle(::CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    if (snapshot == nullptr) {
      error = ::GetLastError();
    } else {
      PROCESSENTRY32W listed = {};
      listed.dwSize = sizeof listed;
      for (BOOL more = ::Process32FirstW(snapshot.get(), &listed); more; more = ::Process32NextW(snapshot.get(), &listed)) {
        if (count == entries.size()) entries.emplace_back();
        ProcessEntry& entry = entries[count++];  // written over, so that the texts' memory is used again
        entry.pid = listed.th32ProcessID;
        entry.threads = listed.cntThreads;
        entry.name.assign(listed.szExeFile);
      }
    }
    entries.resize(count);
    return count != 0;
  }

  /// Reads all: each is one cheap call here.
  bool ReadCounters(const ProcessEntry& entry, std::uint32_t, ProcessMetrics& metrics) override {
    UniqueHandle process(::OpenProcess(kFullAccess, FALSE, entry.pid));
    const bool fullAccess = process != nullptr;
    if (!fullAccess) process.reset(::OpenProcess(kLimitedAccess, FALSE, entry.pid));
    if (process == nullptr) return false;
    DWORD handles = 0;
    if (::GetProcessHandleCount(process.get(), &handles)) {
      metrics.handles = handles;
      metrics.known |= kHandlesKnown;
    }
    ReadMemory(process.get(), metrics);
    ReadTimes(process.get(), metrics);
    if (fullAccess) {
      metrics.gdiObjects = ::GetGuiResources(process.get(), GR_GDIOBJECTS);
      metrics.userObjects = ::GetGuiResources(process.get(), GR_USEROBJECTS);
      metrics.known |= kGuiObjectsKnown;
    }
    return true;
  }
};

}  // namespace

std::shared_ptr<ProcessSampler> MakeSystemProcessSampler() { return std::make_shared<WindowsProcessSampler>(); }

std::uint32_t SystemProcessorCount() {
  SYSTEM_INFO system = {};
  ::GetSystemInfo(&system);
  return system.dwNumberOfProcessors != 0 ? system.dwNumberOfProcessors : 1;
}
