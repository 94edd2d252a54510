#pragma once

// Memory that runs out when a test says so. In a source file of its own, since a compiler that sees both ends of an allocation
// complains.

#include <cstddef>

/// While this lives, allocations of more than the limit fail on its thread.
class LimitedMemory {
 public:
  explicit LimitedMemory(std::size_t largestBytes);
  ~LimitedMemory();
  LimitedMemory(const LimitedMemory&) = delete;
  LimitedMemory& operator=(const LimitedMemory&) = delete;
};
