#include <windows.h>

#include <shellapi.h>

#include <atomic>
#include <string>

#include "autostart/elevation.h"
#include "autostart/elevation_system.h"
#include "autostart/executable_path.h"
#include "platform/handles.h"

namespace {

const ElevationSystem kRealSystem = {::OpenProcessToken, ::GetTokenInformation, ::ShellExecuteExW};
std::atomic<const ElevationSystem*> currentSystem{&kRealSystem};

const ElevationSystem& System() { return *currentSystem.load(); }

}  // namespace

void SetElevationSystem(const ElevationSystem* system) { currentSystem = system != nullptr ? system : &kRealSystem; }

bool IsProcessElevated() {
  HANDLE opened = nullptr;
  if (!System().openProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &opened)) return false;
  const UniqueHandle token(opened);
  TOKEN_ELEVATION elevation{};
  DWORD usedBytes = 0;
  if (!System().getTokenInformation(token.get(), TokenElevation, &elevation, sizeof elevation, &usedBytes)) return false;
  return elevation.TokenIsElevated != 0;
}

bool RunElevated(const wchar_t* arguments, bool wait, DWORD* exitCode) {
  const std::wstring path = OwnExecutablePath();
  if (path.empty()) return false;
  SHELLEXECUTEINFOW request{};
  request.cbSize = sizeof request;
  request.fMask = wait ? SEE_MASK_NOCLOSEPROCESS : 0;
  request.lpVerb = L"runas";
  request.lpFile = path.c_str();
  request.lpParameters = arguments;
  request.nShow = SW_SHOWNORMAL;
  if (!System().shellExecuteEx(&request)) return false;
  if (!wait || request.hProcess == nullptr) return true;
  const UniqueHandle process(request.hProcess);
  ::WaitForSingleObject(process.get(), INFINITE);
  DWORD code = 0;
  if (exitCode != nullptr && ::GetExitCodeProcess(process.get(), &code)) *exitCode = code;
  return true;
}
