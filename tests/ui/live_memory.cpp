// Counts the bytes that C++ objects of this process hold, by taking the place of the global operator new and delete. What the
// system's own libraries keep is not in it.

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

#include "tests/ui/leak_counter.h"

namespace {

std::atomic<std::size_t> liveBytes{0};

/// In front of every block, as large as the strictest alignment.
constexpr std::size_t kHeadBytes = alignof(std::max_align_t);

void* Allocate(std::size_t size) {
  auto* head = static_cast<std::size_t*>(std::malloc(size + kHeadBytes));
  if (head == nullptr) throw std::bad_alloc();
  *head = size;
  liveBytes += size;
  return reinterpret_cast<std::byte*>(head) + kHeadBytes;
}

void Free(void* block) noexcept {
  if (block == nullptr) return;
  void* head = static_cast<std::byte*>(block) - kHeadBytes;
  liveBytes -= *static_cast<std::size_t*>(head);
  std::free(head);
}

}  // namespace

std::size_t LiveBytes() { return liveBytes; }

void* operator new(std::size_t size) { return Allocate(size); }
void* operator new[](std::size_t size) { return Allocate(size); }
void operator delete(void* block) noexcept { Free(block); }
void operator delete[](void* block) noexcept { Free(block); }
void operator delete(void* block, std::size_t) noexcept { Free(block); }
void operator delete[](void* block, std::size_t) noexcept { Free(block); }
