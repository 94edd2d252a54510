#pragma once

// Whether the system accepts an installer's signature, and starting one that it accepts. Windows builds only.

#include <windows.h>

#include <string>

/// The system's verdict on the file's Authenticode signature, revocation of the whole chain included: 0 accepts it. Shows
/// nothing. Blocks for as long as revocation servers take; one that does not answer rejects the file.
[[nodiscard]] LONG VerifyInstallerSignature(const std::wstring& path);

struct LaunchResult {
  bool accepted = false;    ///< the system took the request
  bool hasProcess = false;  ///< and a process is known to run
};

/// Starts the file, named by its full path, to install silently. Its working folder is the system's, from which nobody else's
/// libraries are loaded.
/// `elevated`: not by way of what the user has registered for programs.
[[nodiscard]] LaunchResult LaunchInstaller(const std::wstring& path, bool elevated);
