#pragma once

// Other running instances, found and driven from outside by their tray windows: this program's, and the earlier product's.

#include <windows.h>

#include <string>

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

/// Asks a running instance to end and returns when its tray window has gone, at once when none runs.
void TerminateInstance(const InstanceName& name);
/// Asks a running instance to end and waits up to about 5 s for its window to go away; it may then still be there.
void ReplaceInstance(const InstanceName& name);
/// Has the running instance open its main window, or bring it forward.
void OpenInstance(HWND trayWindow);
