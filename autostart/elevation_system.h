#pragma once

// The system calls behind elevation.h. A test replaces them to play a process without administrator rights or a declined prompt,
// which cannot be had everywhere; the program itself never does. Windows builds only.

#include <windows.h>

#include <shellapi.h>

struct ElevationSystem {
  BOOL(WINAPI* openProcessToken)(HANDLE process, DWORD access, HANDLE* token);
  BOOL(WINAPI* getTokenInformation)(HANDLE token, TOKEN_INFORMATION_CLASS kind, void* data, DWORD sizeBytes, DWORD* usedBytes);
  BOOL(WINAPI* shellExecuteEx)(SHELLEXECUTEINFOW* request);
};

/// Null restores the system's own. What is passed must outlive its use. Any thread.
void SetElevationSystem(const ElevationSystem* system);
