#include "measure.h"

#include <algorithm>
#include <ctime>
#include <limits>

namespace {

constexpr double kShortest = 50e-6;  // seconds; what takes less is repeated until it takes this

double Now() {
  timespec now;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

double Seconds(const Timed& timed, int runs) {
  if (timed.prepare) timed.prepare();
  benchmark::ClobberMemory();
  const double start = Now();
  for (int i = 0; i < runs; ++i) timed.run();
  benchmark::ClobberMemory();
  return Now() - start;
}

/// What reading the clock takes, which on some machines is more than a short operation.
double ClockTime() {
  double best = 1;
  for (int i = 0; i < 100; ++i) best = std::min(best, Seconds({[] {}}, 1));
  return best;
}

/// A series of times of one thing, of which the best counts: what else the machine does can only
/// make it slower.
class Series {
 public:
  explicit Series(const Timed& timed) : timed_(timed) {
    if (timed.prepare) return;
    while (Seconds(timed, runs_) < kShortest) runs_ *= 2;
  }
  double Add() {
    static const double clock_time = ClockTime();
    const double seconds = std::max(0.0, Seconds(timed_, runs_) - clock_time);
    best_ = std::min(best_, seconds / runs_ / timed_.times);
    return seconds;
  }
  double Best() const { return best_; }

 private:
  const Timed& timed_;
  int runs_ = 1;
  double best_ = std::numeric_limits<double>::max();
};

}  // namespace

void Compare(benchmark::State& state, double parts, const Timed& operation,
             const Timed& reference) {
  Series times(operation);
  Series reference_times(reference);
  for ([[maybe_unused]] auto iteration : state) {
    reference_times.Add();
    state.SetIterationTime(times.Add());
  }
  state.counters["ns"] = times.Best() * 1e9 / parts;
  state.counters["ratio"] = times.Best() / reference_times.Best();
}
