#pragma once

// The link at the bottom of the main window: the program's version with an offer to look for a newer one, or the newer version
// with an offer to install it.

#include <windows.h>

#include <string>

#include "ui/program.h"

/// The link's text for what is known of updates. Any thread.
[[nodiscard]] std::wstring VersionLinkText(UpdateState& updates);

/// Main window's thread only. A dialog without the link is left alone.
class VersionLink {
 public:
  explicit VersionLink(Program& program) : program_(program) {}

  /// Sets the text from what is known now and shows the link.
  void OnInitDialog(HWND dialog);
  /// What is known of updates has changed.
  void Refresh() const;
  /// A click on the anchor, or Enter on it: installs the known update, else asks the tray window for a check.
  void OnClick();

 private:
  Program& program_;
  HWND dialog_ = nullptr;
};
