#include "heap.h"

#include <algorithm>
#include <cstdlib>
#include <new>

#ifdef __GLIBC__
#include <malloc.h>
#else
#error "the heap is counted with glibc's malloc_usable_size"
#endif

namespace {

bool counting = false;
HeapUse use;

}  // namespace

void StartCountingHeap() {
  use = {};
  counting = true;
}

HeapUse StopCountingHeap() {
  counting = false;
  return use;
}

void TrimHeap() { malloc_trim(0); }

void* operator new(std::size_t size) {
  void* block = std::malloc(size);
  if (block == nullptr) throw std::bad_alloc();
  if (counting) {
    use.held += malloc_usable_size(block);
    use.peak = std::max(use.peak, use.held);
  }
  return block;
}

void operator delete(void* block) noexcept {
  if (counting) use.held -= malloc_usable_size(block);
  std::free(block);
}

void operator delete(void* block, std::size_t) noexcept { operator delete(block); }
