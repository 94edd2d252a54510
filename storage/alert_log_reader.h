#pragma once

// Reads the newest alerts of a log of any size from its end, with the same result as reading all of it.
//
// The result is that of decoding the whole file by its mark, turning CR LF into LF, taking lines of at most 2047 characters (the
// rest of a longer one is a line of its own), parsing each and keeping the last ones. Every line feed starts a new line whatever
// precedes it, so reading can begin behind any. A Ctrl+Z is an ordinary character here: the log only ever grows at its end, and
// one stray byte early in it must neither hide every newer alert nor make the loader read a gigabyte to find it.

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "core/records.h"

/// The last `maxAlerts` alerts of the file, oldest first; empty optional when it cannot be read. Reads `stepBytes` from the end
/// and, while too few alerts were found, twice as much each time; holds no more of the file in memory than a small block. The
/// file may grow meanwhile.
[[nodiscard]] std::optional<std::vector<AlertRecord>> ReadNewestAlerts(const std::wstring& path, std::size_t maxAlerts,
                                                                       std::size_t stepBytes = std::size_t{256} * 1024);
