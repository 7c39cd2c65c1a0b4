#include "measure.h"

#include <algorithm>
#include <cstddef>
#include <ctime>
#include <vector>

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

double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/// A series of times of one thing.
class Series {
 public:
  explicit Series(const Timed& timed) : timed_(timed) {
    if (timed.prepare) return;
    while (Seconds(timed, runs_) < kShortest) runs_ *= 2;
  }
  double Add() {
    static const double clock_time = ClockTime();
    const double seconds = std::max(1e-9, Seconds(timed_, runs_) - clock_time);
    times_.push_back(seconds / runs_ / timed_.times);
    return seconds;
  }
  double Time() const { return Median(times_); }
  /// In the part number `i` of so many.
  double Time(std::size_t i, std::size_t parts) const {
    const auto at = [&](std::size_t part) {
      return times_.begin() + static_cast<std::ptrdiff_t>(times_.size() * part / parts);
    };
    return Median({at(i), at(i + 1)});
  }

 private:
  const Timed& timed_;
  int runs_ = 1;
  std::vector<double> times_;
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
  constexpr std::size_t kFifths = 5;
  std::vector<double> ratios;
  for (std::size_t i = 0; i < kFifths; ++i) {
    ratios.push_back(times.Time(i, kFifths) / reference_times.Time(i, kFifths));
  }
  state.counters["ns"] = times.Time() * 1e9 / parts;
  state.counters["ratio"] = Median(ratios);
  state.counters["least"] = *std::min_element(ratios.begin(), ratios.end());
}
