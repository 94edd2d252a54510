#pragma once

// What the main window's subjects (menu, pages) may ask of the window they live in. They know nothing else of it, so that the
// window can compose them without any of them knowing its controls.

#include <windows.h>

/// All of it on the main window's thread.
class MainWindowHost {
 public:
  virtual ~MainWindowHost() = default;

  [[nodiscard]] virtual HWND MainWindow() const = 0;
  /// Rebuilds the rule list from the store; after every change of the rules. The selection is lost.
  virtual void RefreshRuleList() = 0;
  /// Ends the dialog with the result and takes the window out of Program::MainDialogHandle. Its rectangle is not stored.
  virtual void EndMainWindow(INT_PTR result) = 0;
};
