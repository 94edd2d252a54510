#pragma once

// Other running instances, found and driven from outside by their tray windows: this program's, and the earlier product's.

#include <windows.h>

#include <string>

#include "platform/handles.h"

/// Class and title under which an instance's tray window is found.
struct InstanceName {
  std::wstring windowClass;
  std::wstring title;
};

/// This program's, from the resources.
[[nodiscard]] InstanceName ProgramInstanceName();
/// The earlier product's.
[[nodiscard]] InstanceName LegacyInstanceName();

/// The instance's tray window; null when none runs.
[[nodiscard]] HWND FindInstance(const InstanceName& name);

/// The turn to start, which one process of the session has at a time: from before it looks for a running instance until its own
/// tray window can be found, so that two starts within a moment do not both run. Waits up to 30 s for another's; whoever cannot
/// have it (no system object, a start that hangs) starts without.
class StartTurn {
 public:
  StartTurn();
  ~StartTurn();
  StartTurn(const StartTurn&) = delete;
  StartTurn& operator=(const StartTurn&) = delete;

 private:
  UniqueHandle mutex_;
  bool owned_ = false;
};

/// Asks a running instance to end and returns when its tray window has gone, at once when none runs, after 30 s when it hangs.
void TerminateInstance(const InstanceName& name);
/// Asks a running instance to end and waits up to about 5 s for its window to go away; it may then still be there.
void ReplaceInstance(const InstanceName& name);
/// Has the running instance open its main window, or bring it forward. Waits up to 30 s for one that hangs.
void OpenInstance(HWND trayWindow);
