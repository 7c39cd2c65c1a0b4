/// The heap of the test program, whose allocation functions are replaced: allocations and bytes are
/// counted, and allocations fail on demand.
#pragma once

#include <cstddef>

namespace VESKA::heap {

/// The number of allocations so far.
std::size_t Calls();

/// The bytes in use now.
std::size_t InUse();

/// The most bytes in use since `StartPeak`, beyond those that were in use then.
void StartPeak();
std::size_t Peak();

/// While it lives, `more` allocations succeed and every later one fails.
class FailAfter {
 public:
  explicit FailAfter(std::size_t more);
  FailAfter(const FailAfter&) = delete;
  FailAfter& operator=(const FailAfter&) = delete;
  ~FailAfter();
};

}  // namespace VESKA::heap
