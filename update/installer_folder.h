#pragma once

// The folder that a downloaded installer is started from. Its place is fixed and known, so others can put things there first: a
// link to another folder, or libraries that the installer would load. Windows builds only.

#include <windows.h>

#include <string>

#include "platform/handles.h"

/// Holds a folder so that it cannot be renamed, deleted or replaced while this lives.
class InstallerFolder {
 public:
  InstallerFolder() = default;
  /// Takes the protection back, unless KeepProtected was called: an ordinary program must be able to use the folder again.
  ~InstallerFolder();
  InstallerFolder(const InstallerFolder&) = delete;
  InstallerFolder& operator=(const InstallerFolder&) = delete;

  /// Opens the folder, which must exist. False, with nothing held, when it cannot be opened or is a link. `protect`: only
  /// programs as privileged as this one may change it from now on.
  [[nodiscard]] bool Hold(const std::wstring& path, bool protect);
  /// What is in it has been started: it stays protected beyond this object's life.
  void KeepProtected() { protected_ = false; }
  /// Deletes everything in it that can be deleted. Links are deleted, never followed; a protected folder's subfolders are not
  /// entered, since somebody else made them.
  void Empty() const;
  /// Whether the one file is all it holds. False also when it cannot be listed.
  [[nodiscard]] bool HoldsOnly(const std::wstring& fileName) const;

 private:
  std::wstring path_;
  UniqueHandle folder_;
  bool protected_ = false;
};
