#include "tests/e2e/process_load.h"

#include <psapi.h>
#include <tlhelp32.h>

#include "platform/handles.h"

namespace e2e {

std::string OwnName() {
  char path[MAX_PATH]{};
  ::GetModuleFileNameA(nullptr, path, MAX_PATH);
  const std::string full = path;
  return full.substr(full.rfind('\\') + 1);
}

unsigned OwnThreadCount() {
  const UniqueHandle snapshot = OwnFileHandle(::CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
  PROCESSENTRY32W entry{};
  entry.dwSize = sizeof(entry);
  for (BOOL more = ::Process32FirstW(snapshot.get(), &entry); more; more = ::Process32NextW(snapshot.get(), &entry)) {
    if (entry.th32ProcessID == ::GetCurrentProcessId()) return entry.cntThreads;
  }
  return 0;
}

unsigned OwnWorkingSetMb() {
  PROCESS_MEMORY_COUNTERS counters{};
  ::K32GetProcessMemoryInfo(::GetCurrentProcess(), &counters, sizeof(counters));
  return static_cast<unsigned>(counters.WorkingSetSize / 1'048'576);
}

BusyWindow::BusyWindow(HWND window)
    : thread_([this, window] {
        while (!end_.load(std::memory_order_relaxed)) ::SendMessageW(window, WM_NULL, 0, 0);
      }) {}

BusyWindow::~BusyWindow() {
  end_ = true;
  thread_.join();
}

}  // namespace e2e
