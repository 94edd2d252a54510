#pragma once

// Where the user's files lie. Windows builds only.

#include <string>

/// The current user's roaming application-data folder, without a trailing backslash; empty when the shell cannot tell.
[[nodiscard]] std::wstring RoamingFolder();
