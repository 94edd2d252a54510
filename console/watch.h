#pragma once

// What the console companion does, from its options to its exit code.

#include "console/options.h"

/// 0: nothing was reported, 1: something was, 2: the rules cannot be had. Blocks until it is done or told to end.
[[nodiscard]] int RunOptions(const Options& options);
