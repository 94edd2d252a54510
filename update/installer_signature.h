#pragma once

// Whether the system accepts a program's signature. Windows builds only.

#include <windows.h>

#include <string>

/// The system's verdict on the file's Authenticode signature, revocation of the whole chain included: 0 accepts it. Shows
/// nothing. Blocks for as long as revocation servers take; one that does not answer rejects the file.
[[nodiscard]] LONG VerifyInstallerSignature(const std::wstring& path);
