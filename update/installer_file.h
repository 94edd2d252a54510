#pragma once

// The downloaded installer on disk, from its writing to its start. From the moment it is ready nobody can change, replace or
// delete it, and what is then verified and started is what was downloaded. Windows builds only.

#include <windows.h>

#include <string>
#include <string_view>

#include "platform/handles.h"

enum class InstallerFileResult { kReady, kCannotCreate, kCannotWrite, kChanged };

class InstallerFile {
 public:
  using WriteCall = decltype(&::WriteFile);

  explicit InstallerFile(std::wstring path) : path_(std::move(path)) {}
  /// Lets go of the file and, unless Keep was called, deletes it.
  ~InstallerFile();
  InstallerFile(const InstallerFile&) = delete;
  InstallerFile& operator=(const InstallerFile&) = delete;

  /// Creates the file with these bytes and holds it. `protect`: only programs as privileged as this one may change it, and none
  /// may be there yet. `write` is WriteFile but in tests.
  [[nodiscard]] InstallerFileResult Create(std::string_view bytes, bool protect, WriteCall write);
  [[nodiscard]] const std::wstring& Path() const { return path_; }
  /// It has been started: it stays.
  void Keep() { kept_ = true; }

 private:
  [[nodiscard]] bool HoldsExactly(std::string_view bytes) const;

  std::wstring path_;
  UniqueHandle held_;
  bool protected_ = false;
  bool kept_ = false;
};
