#include "support/heap.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

#ifndef _WIN32
#include <malloc.h>
#endif

namespace VESKA::heap {
namespace {

constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();
// Threads may allocate at the same time; only a test with one of them asks for figures.
std::atomic<std::size_t> calls = 0;
std::atomic<std::size_t> failing_from = kNever;
std::atomic<std::size_t> in_use = 0;
std::size_t start = 0;
std::atomic<std::size_t> most = 0;

std::size_t SizeOf(void* block) {
#ifdef _WIN32
  return _msize(block);
#else
  return malloc_usable_size(block);
#endif
}

}  // namespace

std::size_t Calls() { return calls; }
std::size_t InUse() { return in_use; }
void StartPeak() { most = start = in_use.load(); }
std::size_t Peak() { return most - start; }

FailAfter::FailAfter(std::size_t more) { failing_from = calls + more; }
FailAfter::~FailAfter() { failing_from = kNever; }

void* Allocate(std::size_t size) {
  if (calls++ >= failing_from) return nullptr;
  void* block = std::malloc(size != 0 ? size : 1);
  if (block == nullptr) return nullptr;
  in_use += SizeOf(block);
  most = std::max(most.load(), in_use.load());
  return block;
}

void* AllocateOrThrow(std::size_t size) {
  void* block = Allocate(size);
  return block != nullptr ? block : throw std::bad_alloc();
}

void Free(void* block) {
  if (block == nullptr) return;
  in_use -= SizeOf(block);
  std::free(block);
}

}  // namespace VESKA::heap

// All of them, since a sanitizer's own do not call each other.
void* operator new(std::size_t size) { return VESKA::heap::AllocateOrThrow(size); }
void* operator new[](std::size_t size) { return VESKA::heap::AllocateOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return VESKA::heap::Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return VESKA::heap::Allocate(size);
}
void operator delete(void* block) noexcept { VESKA::heap::Free(block); }
void operator delete[](void* block) noexcept { VESKA::heap::Free(block); }
void operator delete(void* block, std::size_t) noexcept { VESKA::heap::Free(block); }
void operator delete[](void* block, std::size_t) noexcept { VESKA::heap::Free(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { VESKA::heap::Free(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { VESKA::heap::Free(block); }
