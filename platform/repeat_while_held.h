#pragma once

// For calls on files and folders that another program (a virus scanner, a backup, an editor) may hold for a moment. Windows
// builds only.

#include <windows.h>

/// Repeats a failing call for up to half a second as long as somebody holds what it needs. A folder of which something is open
/// cannot be moved for want of access; elsewhere that is no passing trouble.
template <class Call>
bool RepeatWhileHeld(Call call, bool deniedIsHeld = false) {
  constexpr int kTries = 10;
  constexpr DWORD kPauseMs = 50;
  for (int tries = 1;; ++tries) {
    if (call()) return true;
    const DWORD error = ::GetLastError();
    const bool held =
        error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION || (deniedIsHeld && error == ERROR_ACCESS_DENIED);
    if (!held || tries == kTries) return false;
    ::Sleep(kPauseMs);
  }
}
