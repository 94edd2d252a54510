#pragma once

// The keys that the menu texts of the main window promise. The dialog runs in the system's own modal loop, which translates no
// accelerators; a message-filter hook on the window's thread is the one documented place where that loop shows each message
// before the dialog keyboard handling takes it. It is seen wherever the focus is among the dialog's controls, needs no subclass
// of each of them, and leaves commands that arrive in other ways (a press of OK above all) as they are.

#include <windows.h>

#include "platform/handles.h"

/// Active while it lives; on the main window's thread.
class MainWindowShortcuts {
 public:
  /// Without a hook the keys simply do nothing.
  void Install(HWND window);
  void Remove(HWND window);

 private:
  UniqueHook hook_;
};
