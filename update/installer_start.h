#pragma once

// Starting a verified installer. Windows builds only.

#include <string>

struct LaunchResult {
  bool accepted = false;    ///< the system took the request
  bool hasProcess = false;  ///< and a process is known to run
};

/// Starts the file, named by its full path, to install silently. Its working folder is the system's, from which nobody else's
/// libraries are loaded.
/// `elevated`: not by way of what the user has registered for programs.
[[nodiscard]] LaunchResult LaunchInstaller(const std::wstring& path, bool elevated);
