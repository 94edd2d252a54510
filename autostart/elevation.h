#pragma once

// Whether this process has administrator rights, and starting the program again with them.

#include <windows.h>

/// False also when the token cannot be read.
[[nodiscard]] bool IsProcessElevated();

/// Starts this program elevated with the arguments. False when it was not started, the declined prompt included. With `wait`,
/// returns only when the copy has ended and stores its exit code where one is asked for.
bool RunElevated(const wchar_t* arguments, bool wait, DWORD* exitCode);
