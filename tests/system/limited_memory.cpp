#include "limited_memory.h"

#include <cstdlib>
#include <limits>
#include <new>

namespace {

thread_local std::size_t largestAllocation = std::numeric_limits<std::size_t>::max();

}  // namespace

LimitedMemory::LimitedMemory(std::size_t largestBytes) { largestAllocation = largestBytes; }
LimitedMemory::~LimitedMemory() { largestAllocation = std::numeric_limits<std::size_t>::max(); }

void* operator new(std::size_t bytes) {
  void* memory = bytes > largestAllocation ? nullptr : std::malloc(bytes != 0 ? bytes : 1);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
