/// Timing of an operation side by side with the reference that it is compared with.
#pragma once

#include <benchmark/benchmark.h>

#include <functional>

/// One thing to time. `run` does it `times` times; `prepare`, where there is one, runs before and
/// is not timed.
struct Timed {
  std::function<void()> run;
  std::function<void()> prepare = {};
  int times = 1;
};

/// Times both in turn, once in each iteration. Sets the counters `ns`, the time of the operation
/// for one of `parts` equal parts of it; `ratio`, its time as a ratio to the reference's; and
/// `least`, the smallest such ratio in any fifth of the iterations: what lies between the two is
/// noise. Times are medians of what the processor spent: other programs on the machine hardly
/// count.
void Compare(benchmark::State& state, double parts, const Timed& operation, const Timed& reference);
