#pragma once

// Names for screen readers, of controls that no text on the screen names.

#include <windows.h>

#include <span>

struct AccessibleName {
  int controlId;
  const wchar_t* name;
};

/// Gives the dialog's controls their names for as long as the dialog lives, or takes them back at its end. What the system
/// refuses is a diagnostic line. The dialog's thread.
void SetAccessibleNames(HWND dialog, std::span<const AccessibleName> names);
void ClearAccessibleNames(HWND dialog, std::span<const AccessibleName> names);
