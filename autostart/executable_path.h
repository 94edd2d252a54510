#pragma once

// Where this program's own executable lies, for everything that has the system start it again.

#include <string>

/// The full path; empty when the system does not tell it or it is longer than 259 characters: a path cut short names another
/// file, and nobody may be made to start that. Windows builds only.
[[nodiscard]] std::wstring OwnExecutablePath();
