#pragma once

// The mandatory label that keeps programs without administrator rights from changing what an elevated one is about to start.
// Windows builds only.

#include <windows.h>

/// The rights that a file or folder is to be opened with for the label.
inline constexpr DWORD kLabelAccess = READ_CONTROL | WRITE_OWNER;

enum class Integrity { kMedium, kHigh };

/// The integrity, no writing from below, inherited by what a folder comes to hold. Medium is what files have that nobody has
/// labelled. False when the file system refuses.
bool LabelIntegrity(HANDLE fileOrFolder, Integrity integrity);
