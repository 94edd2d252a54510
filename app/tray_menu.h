#pragma once

// The menu of the tray icon: its states and the choice. What a choice does is the tray window's business.

#include <windows.h>

#include "platform/handles.h"

/// Tray window's thread only.
class TrayMenu {
 public:
  /// False when the menu resource cannot be loaded; Choose then answers 0.
  bool Load(HINSTANCE instance);

  /// Shows the menu at the cursor and returns the chosen command's id, 0 when it was dismissed. `paused`: monitoring is paused,
  /// so only resuming is offered; otherwise only pausing.
  [[nodiscard]] UINT Choose(HWND owner, bool paused);

 private:
  UniqueMenu resource_;
  HMENU menu_ = nullptr;  ///< the resource's first submenu, which it owns
};
