/// Bytes on the heap, counted by the program's own operator new.
#pragma once

#include <cstddef>

struct HeapUse {
  std::size_t held = 0;
  std::size_t peak = 0;
};

/// Counts from now on, from zero.
void StartCountingHeap();
/// What is held since then and the most that was. Stops counting.
HeapUse StopCountingHeap();

/// Gives the free memory of the heap back to the system, so that what is allocated next is fresh.
void TrimHeap();
