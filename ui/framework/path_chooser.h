#pragma once

// The file choosers behind the "..." buttons of the Settings page: each starts at the path typed so far and changes it only when
// the user picks one.

#include <windows.h>

#include <string>

/// The alert log: any file, existing or not. No question about overwriting, since alerts are appended.
[[nodiscard]] bool ChooseLogFilePath(HWND owner, std::wstring& path);
/// An existing sound file.
[[nodiscard]] bool ChooseSoundFilePath(HWND owner, std::wstring& path);
