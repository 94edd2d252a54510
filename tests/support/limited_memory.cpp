#include "tests/support/limited_memory.h"

#include <cstdlib>
#include <new>

void* operator new(std::size_t bytes) {
  void* memory = bytes > largestAllocation ? nullptr : std::malloc(bytes != 0 ? bytes : 1);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
