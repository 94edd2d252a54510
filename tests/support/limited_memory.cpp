#include "tests/support/limited_memory.h"

#include <cstdlib>
#include <new>

void* operator new(std::size_t bytes) {
  const bool fails = bytes > largestAllocation || allocationsLeft == 0;
  if (allocationsLeft == 0) allocationsLeft = SIZE_MAX;  // one failure: what cleans up after it finds memory again
  if (allocationsLeft != SIZE_MAX) --allocationsLeft;
  memoryRanOut = memoryRanOut || fails;
  ++allocationsMade;
  void* memory = fails ? nullptr : std::malloc(bytes != 0 ? bytes : 1);
  if (memory == nullptr) throw std::bad_alloc();
#ifdef _WIN32
  liveBytes += ::_msize(memory);
#endif
  return memory;
}
void operator delete(void* memory) noexcept {
#ifdef _WIN32
  if (memory != nullptr) liveBytes -= ::_msize(memory);
#endif
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }
