#pragma once

// Memory that runs out when a test says so. The allocation itself is in a source file of its own, since a compiler that sees both
// ends of one complains.

#include <cstddef>
#include <cstdint>

inline thread_local std::size_t largestAllocation = SIZE_MAX;

/// While this lives, allocations of more than the limit fail on its thread.
struct LimitedMemory {
  explicit LimitedMemory(std::size_t largestBytes) { largestAllocation = largestBytes; }
  ~LimitedMemory() { largestAllocation = SIZE_MAX; }
  LimitedMemory(const LimitedMemory&) = delete;
  LimitedMemory& operator=(const LimitedMemory&) = delete;
};
