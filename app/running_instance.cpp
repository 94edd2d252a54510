#include "app/running_instance.h"

#include <sddl.h>

#include "res/messages.h"
#include "res/resource.h"
#include "ui/framework/resources.h"

namespace {

constexpr int kMaxLooks = 100;
constexpr DWORD kLookPauseMs = 50;
/// Longer than a sound instance takes to end; one that hangs is left alone after it.
constexpr UINT kSendTimeoutMs = 30'000;

void SendToInstance(HWND trayWindow, UINT message, LPARAM lParam) {
  ::SendMessageTimeoutW(trayWindow, message, 0, lParam, SMTO_NORMAL, kSendTimeoutMs, nullptr);
}

}  // namespace

InstanceName ProgramInstanceName() { return {LoadResString(IDS_TRAY_CLASS), LoadResString(IDS_APP_TITLE)}; }

InstanceName LegacyInstanceName() { return {L"HALVERNW", L"Halvern"}; }

HWND FindInstance(const InstanceName& name) { return ::FindWindowW(name.windowClass.c_str(), name.title.c_str()); }

StartTurn::StartTurn() {
  // An elevated copy and an ordinary one of the session's user share it: without the label the ordinary one could not take what
  // the elevated one has made.
  constexpr wchar_t kSharedByBoth[] = L"D:(A;;GA;;;IU)(A;;GA;;;BA)(A;;GA;;;SY)S:(ML;;NW;;;ME)";
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  ::ConvertStringSecurityDescriptorToSecurityDescriptorW(kSharedByBoth, SDDL_REVISION_1, &descriptor, nullptr);
  SECURITY_ATTRIBUTES attributes{sizeof(attributes), descriptor, FALSE};
  mutex_.reset(::CreateMutexExW(&attributes, L"Local\\VantoraStarting", 0, SYNCHRONIZE | MUTEX_MODIFY_STATE));
  ::LocalFree(descriptor);
  if (mutex_ == nullptr) return;
  const DWORD waited = ::WaitForSingleObject(mutex_.get(), kSendTimeoutMs);
  owned_ = waited == WAIT_OBJECT_0 || waited == WAIT_ABANDONED;
}

StartTurn::~StartTurn() {
  if (owned_) ::ReleaseMutex(mutex_.get());
}

void TerminateInstance(const InstanceName& name) {
  if (HWND window = FindInstance(name)) SendToInstance(window, UWM_TERMINATE, 0);
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
  SendToInstance(trayWindow, UWM_TRAYICON, WM_LBUTTONUP);
}
