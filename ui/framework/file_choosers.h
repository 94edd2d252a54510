#pragma once

// The system's file dialogs as the program's windows use them: a path, or nothing when the user thinks better of it. They never
// change the current folder.

#include <windows.h>

#include <string>

/// Asks under which name to write; a present file is overwritten only after a question. `filterStringId`: the filter list as
/// LoadFilterString reads it. Empty when cancelled.
[[nodiscard]] std::wstring AskSavePath(HWND owner, UINT filterStringId, const wchar_t* defaultExtension);

/// Asks for a file that exists. A null `initialFolder` leaves the folder to the system. Empty when cancelled.
[[nodiscard]] std::wstring AskOpenPath(HWND owner, UINT filterStringId, const wchar_t* initialFolder);
