#pragma once

// Where the user's files lie. Windows builds only.

#include <string>

/// The current user's roaming application-data folder, without a trailing backslash; empty when the shell cannot tell.
[[nodiscard]] std::wstring RoamingFolder();
/// The default alert log in the roaming folder; empty when the folder cannot be determined.
[[nodiscard]] std::wstring DefaultLogFilePath();
/// The rules file in the roaming folder, whose folder is created; the bare file name when it cannot be determined.
[[nodiscard]] std::wstring GetRulesFilePath();
