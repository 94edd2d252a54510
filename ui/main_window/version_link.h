#pragma once

// The link at the bottom of the main window: the program's version with an offer to look for a newer one, or the newer version
// with an offer to install it.

#include <windows.h>

#include "ui/program.h"

/// Main window's thread only. A dialog without the link is left alone.
class VersionLink {
 public:
  explicit VersionLink(Program& program) : program_(program) {}

  /// Sets the text from what is known now and shows the link.
  void OnInitDialog(HWND dialog);
  /// A check has found a newer version.
  void ShowUpdate();
  /// A click on the anchor, or Enter on it: installs the known update, else asks the tray window for a check.
  void OnClick();

 private:
  [[nodiscard]] bool IsUpdateKnown() const;
  void SetText(UINT formatId, const std::wstring& version) const;

  Program& program_;
  HWND dialog_ = nullptr;
};
