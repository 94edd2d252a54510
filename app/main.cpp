// The program's entry: the jobs of the command line, start-up, the message loop, the end.

#include <windows.h>

#include <commctrl.h>

#include <optional>

#include "app/command_line.h"
#include "app/process_objects.h"
#include "app/running_instance.h"
#include "app/start_up.h"
#include "app/tray_window.h"
#include "autostart/logon_task.h"
#include "platform/diagnostics.h"
#include "platform/handles.h"
#include "ui/dark/dark_mode.h"
#include "ui/dark/dark_scroll_bar.h"

namespace {

/// What lies beside the program, in a downloads folder perhaps, is not its own. The imports that are no part of the system's
/// fixed set are delayed, so none of them has been loaded yet. Without effect on a system that cannot do it.
void LoadLibrariesFromSystemOnly() {
  using SetDefaultDirectories = BOOL(WINAPI*)(DWORD flags);
  const auto setDefaultDirectories = reinterpret_cast<SetDefaultDirectories>(
      reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"kernel32.dll"), "SetDefaultDllDirectories")));
  if (setDefaultDirectories != nullptr) setDefaultDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32);
}

void RegisterControls() {
  INITCOMMONCONTROLSEX controls{};
  controls.dwSize = sizeof(controls);
  controls.dwICC = ICC_LISTVIEW_CLASSES | ICC_TREEVIEW_CLASSES | ICC_BAR_CLASSES | ICC_TAB_CLASSES | ICC_UPDOWN_CLASS |
                   ICC_PROGRESS_CLASS | ICC_HOTKEY_CLASS | ICC_ANIMATE_CLASS;
  ::InitCommonControlsEx(&controls);
}

/// The exit code of a start that does one job and ends.
int RunJob(StartJob job, const InstanceName& name) {
  switch (job) {
    case StartJob::kInstallAdminTask:
      return InstallAdminTask() ? 0 : 1;
    case StartJob::kRemoveAdminTask:
      return RemoveAdminTask() ? 0 : 1;
    default:
      TerminateInstance(name);
      return 0;
  }
}

int RunMessageLoop(TrayWindow& tray) {
  MSG message{};
  while (::GetMessageW(&message, nullptr, 0, 0) > 0) {
    if (tray.TranslateDialogMessage(message)) continue;
    ::TranslateMessage(&message);
    ::DispatchMessageW(&message);
  }
  return static_cast<int>(message.wParam);
}

/// Everything is saved and the icon is gone. Dialogs, file choosers and update threads may still be at work: the process ends
/// under them in one step, without waiting for a lock that one of them holds and without unloading what they run in.
[[noreturn]] void EndProcess(int exitCode) {
  ::TerminateProcess(::GetCurrentProcess(), static_cast<UINT>(exitCode));
  ::ExitProcess(static_cast<UINT>(exitCode));
}

}  // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, LPWSTR, int) {
  LoadLibrariesFromSystemOnly();
  RegisterControls();
  InitDarkMode();
  InstallDarkScrollBars();
  const InstanceName name = ProgramInstanceName();
  TrayWindow::RegisterWindowClass(instance, name.windowClass);

  const StartOptions options = ParseCommandLine(::GetCommandLineW());
  if (options.job != StartJob::kRun) return RunJob(options.job, name);
  std::optional<StartTurn> turn(std::in_place);
  if (options.replaceRunning) ReplaceInstance(name);
  ReplaceInstance(LegacyInstanceName());

  // Its name tells others, the installer among them, that an instance runs; nobody here waits on it.
  const UniqueHandle running(::CreateEventW(nullptr, FALSE, FALSE, L"Global\\VantoraRunning"));
  ProcessObjects& objects = TheProcess();
  std::uint32_t error = 0;
  if (!objects.updates.UpdateAvailableEvent.Create(Event::Reset::kManual, error)) {
    DebugLog(L"wWinMain - CreateEvent failed: %u", error);
  }
  if (!InitInstance(objects, name, options.startInTray)) return 0;
  turn.reset();
  EndProcess(RunMessageLoop(objects.tray));
}
