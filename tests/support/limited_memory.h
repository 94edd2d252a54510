#pragma once

// Memory that runs out when a test says so. The allocation itself is in a source file of its own, since a compiler that sees both
// ends of one complains.

#include <atomic>
#include <cstddef>
#include <cstdint>

inline thread_local std::size_t largestAllocation = SIZE_MAX;
inline thread_local std::size_t allocationsLeft = SIZE_MAX;
inline thread_local bool memoryRanOut = false;
inline thread_local std::uint64_t allocationsMade = 0;
inline std::atomic<std::size_t> liveBytes = 0;  ///< what C++ objects of all threads hold; counted on Windows alone

/// While this lives, allocations of more than the limit fail on its thread, and the one after so many that succeeded.
struct LimitedMemory {
  explicit LimitedMemory(std::size_t largestBytes, std::size_t allocations = SIZE_MAX) {
    memoryRanOut = false;
    largestAllocation = largestBytes;
    allocationsLeft = allocations;
  }
  ~LimitedMemory() { largestAllocation = allocationsLeft = SIZE_MAX; }
  LimitedMemory(const LimitedMemory&) = delete;
};

/// Runs `work` with the first, then the second, then the third allocation failing, and so on until it needs no more; `prepare`
/// before and `check` after each.
template <class Prepare, class Work, class Check>
void FailEachAllocationOf(Prepare prepare, Work work, Check check) {
  for (std::size_t allocations = 0;; ++allocations) {
    prepare();
    {
      const LimitedMemory limited(SIZE_MAX, allocations);
      work();
    }
    check(allocations);
    if (!memoryRanOut) return;
  }
}
