#include "app/running_instance.h"

#include "res/messages.h"
#include "res/resource.h"
#include "ui/framework/resources.h"

namespace {

constexpr int kMaxLooks = 100;
constexpr DWORD kLookPauseMs = 50;

}  // namespace

InstanceName ProgramInstanceName() { return {LoadResString(IDS_TRAY_CLASS), LoadResString(IDS_APP_TITLE)}; }

InstanceName LegacyInstanceName() { return {L"HALVERNW", L"Halvern"}; }

HWND FindInstance(const InstanceName& name) { return ::FindWindowW(name.windowClass.c_str(), name.title.c_str()); }

void TerminateInstance(const InstanceName& name) {
  if (HWND window = FindInstance(name)) ::SendMessageW(window, UWM_TERMINATE, 0, 0);
}

void ReplaceInstance(const InstanceName& name) {
  HWND window = FindInstance(name);
  if (window == nullptr) return;
  ::PostMessageW(window, UWM_TERMINATE, 0, 0);
  for (int look = 0; look < kMaxLooks && window != nullptr && ::IsWindow(window); ++look) {
    ::Sleep(kLookPauseMs);
    window = FindInstance(name);
  }
}

void OpenInstance(HWND trayWindow) {
  // Only the process that the user has just started may hand the foreground on.
  DWORD processId = 0;
  ::GetWindowThreadProcessId(trayWindow, &processId);
  ::AllowSetForegroundWindow(processId);
  ::SendMessageW(trayWindow, UWM_TRAYICON, 0, WM_LBUTTONUP);
}
