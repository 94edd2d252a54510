#pragma once

// The progress window of an update check that the user asked for. The tray window opens it when such a check starts and closes it
// when the check's result is handled; Cancel closes only the window, the check goes on.

#include <windows.h>

#include "ui/framework/dialog.h"

/// Tray window's thread only. Modeless and without owner; may be opened again after it was closed.
class UpdateProgressDialog final : public Dialog {
 public:
  explicit UpdateProgressDialog(HINSTANCE instance);
  ~UpdateProgressDialog() override;

  /// Creates the window and shows it; without effect while it is open.
  void Open();
  /// Destroys the window; without effect while it is closed.
  void Close();
  [[nodiscard]] bool IsOpen() const { return Window() != nullptr; }

 private:
  bool OnInitDialog() override;
  bool OnCommand(WORD id, WORD notification) override;
};
