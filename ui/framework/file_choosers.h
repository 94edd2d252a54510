#pragma once

// The system's file choosers as the program's windows use them. None of them changes the current folder.

#include <windows.h>

#include <string>

/// Asks under which name to write; a present file is overwritten only after a question. `filterStringId`: the filter list as
/// LoadFilterString reads it. Empty when cancelled.
[[nodiscard]] std::wstring AskSavePath(HWND owner, UINT filterStringId, const wchar_t* defaultExtension);
/// Asks for a file that exists, from the user's documents on. Empty when cancelled.
[[nodiscard]] std::wstring AskOpenPath(HWND owner, UINT filterStringId);

// Behind the "..." buttons of the Settings page: each starts at the path typed so far and changes it only when the user picks
// one.

/// The alert log: any file, existing or not. No question about overwriting, since alerts are appended.
[[nodiscard]] bool ChooseLogFilePath(HWND owner, std::wstring& path);
/// An existing sound file, from the system's own on.
[[nodiscard]] bool ChooseSoundFilePath(HWND owner, std::wstring& path);
