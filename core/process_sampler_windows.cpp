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

class WindowsProcess final : public ProcessSampler::Process {
 public:
  WindowsProcess(UniqueHandle handle, bool fullAccess) : handle_(std::move(handle)), fullAccess_(fullAccess) {}

  bool HasFullAccess() const override { return fullAccess_; }

  bool ReadHandleCount(std::uint32_t& handles) override {
    DWORD count = 0;
    if (!::GetProcessHandleCount(handle_.get(), &count)) return false;
    handles = count;
    return true;
  }

  bool ReadMemory(ProcessMemory& memory) override {
    PROCESS_MEMORY_COUNTERS_EX counters = {};
    counters.cb = sizeof counters;
    auto* const basic = reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&counters);
    if (!::K32GetProcessMemoryInfo(handle_.get(), basic, sizeof counters)) return false;
    memory = {counters.WorkingSetSize, counters.PrivateUsage};
    return true;
  }

  bool ReadTimes(ProcessTimes& times) override {
    FILETIME creation = {};
    FILETIME exit = {};
    FILETIME kernel = {};
    FILETIME user = {};
    if (!::GetProcessTimes(handle_.get(), &creation, &exit, &kernel, &user)) return false;
    times = {Join(creation), Join(kernel), Join(user)};
    return true;
  }

  std::uint32_t ReadGdiObjects() override { return ::GetGuiResources(handle_.get(), GR_GDIOBJECTS); }
  std::uint32_t ReadUserObjects() override { return ::GetGuiResources(handle_.get(), GR_USEROBJECTS); }

 private:
  UniqueHandle handle_;
  bool fullAccess_;
};

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

  std::unique_ptr<Process> OpenProcess(std::uint32_t pid) override {
    UniqueHandle handle(::OpenProcess(kFullAccess, FALSE, pid));
    const bool fullAccess = handle != nullptr;
    if (!fullAccess) handle.reset(::OpenProcess(kLimitedAccess, FALSE, pid));
    if (handle == nullptr) return nullptr;
    return std::make_unique<WindowsProcess>(std::move(handle), fullAccess);
  }
};

}  // namespace

std::shared_ptr<ProcessSampler> MakeSystemProcessSampler() { return std::make_shared<WindowsProcessSampler>(); }

std::uint32_t SystemProcessorCount() {
  SYSTEM_INFO system = {};
  ::GetSystemInfo(&system);
  return system.dwNumberOfProcessors != 0 ? system.dwNumberOfProcessors : 1;
}
