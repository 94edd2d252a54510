#pragma once

// What the dark colours put in front of a window's own procedure.

#include <windows.h>

#include <commctrl.h>

#include <memory>
#include <optional>

/// The window's thread; gone with its window.
class Subclass {
 public:
  virtual ~Subclass() = default;
  /// Empty: the window answers as it does.
  virtual std::optional<LRESULT> OnMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) = 0;
};

/// Puts it in front of the window for the rest of the window's life; `id` tells it from others of the same window. False when
/// the system refuses.
bool InstallSubclass(HWND window, UINT_PTR id, std::unique_ptr<Subclass> subclass);
