#pragma once

// The console companion: the same monitor as the program's, for scripts, servers and fleets.

#include <string>
#include <vector>

/// From the command line, in UTF-8 and without the program's own name, to the exit code.
[[nodiscard]] int RunConsole(const std::vector<std::string>& arguments);
