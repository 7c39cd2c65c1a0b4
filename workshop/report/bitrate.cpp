#include "veska/workshop/bitrate.h"

#include <algorithm>
#include <cmath>

#include "basis/units.h"

namespace VESKA::workshop {
namespace {

/// A VOB's clock values leave out a part of its last picture, so that short VOBs miss the rate by
/// more than long ones; the two rates are a sixth apart.
constexpr double kTolerance = 0.04;

/// A VOBU that plays for some time; times in video fields from the VOB's start.
struct TimedVobu {
  double begin;
  double end;
  double mbit_per_second;
};

std::vector<BitrateStep> StepForEach(const std::vector<TimedVobu>& vobus, double rate) {
  std::vector<BitrateStep> steps;
  steps.reserve(vobus.size());
  for (const TimedVobu& vobu : vobus) {
    const double mbit = vobu.mbit_per_second;
    steps.push_back({vobu.begin / rate, vobu.end / rate, mbit, mbit, mbit});
  }
  return steps;
}

std::vector<BitrateStep> EqualSteps(const std::vector<TimedVobu>& vobus, double rate, int count) {
  std::vector<BitrateStep> steps;
  steps.reserve(static_cast<std::size_t>(count));
  const double length = vobus.back().end / count;
  auto first = vobus.begin();
  for (int i = 0; i < count; ++i) {
    const double begin = i * length;
    const double end = i + 1 < count ? begin + length : vobus.back().end;
    while (first->end <= begin) ++first;
    BitrateStep step{begin / rate, end / rate, first->mbit_per_second, 0, 0};
    for (auto vobu = first; vobu != vobus.end() && vobu->begin < end; ++vobu) {
      const double share =
          (std::min(vobu->end, end) - std::max(vobu->begin, begin)) / (end - begin);
      step.mean += share * vobu->mbit_per_second;
      step.lowest = std::min(step.lowest, vobu->mbit_per_second);
      step.highest = std::max(step.highest, vobu->mbit_per_second);
    }
    steps.push_back(step);
  }
  return steps;
}

}  // namespace

double GuessFieldRate(const CMovieAVFile& vobs) {
  double fields = 0;
  double seconds = 0;
  for (const tag_M_VOBI_ITEM& item : vobs.Items()) {
    const CMovieVOB& vob = item.M_VOBI;
    const tag_M_VOB_GI& header = vob.GetHeader();
    const double length = SecondsBetween(header.time_9, header.time_15);
    if (length == 0) return 0;
    fields += static_cast<double>(vob.GetTimeMapTable().GetFieldCount());
    seconds += length;
  }
  for (const double rate : {kFields50, kFields60}) {
    if (seconds > 0 && std::abs(fields / seconds / rate - 1) < kTolerance) return rate;
  }
  return 0;
}

Bitrate BitrateOf(const CTimeMapTable& map, double fields_per_second, int most_steps) {
  Bitrate bitrate;
  bitrate.vobus = map.GetVobuENCount();
  std::vector<TimedVobu> timed;
  double fields = 0;
  double timed_bytes = 0;
  for (const tag_VOBU_ENT& vobu : map.VobuEntries()) {
    const unsigned bytes = vobu.VOBU_SZ() * kPackSize;
    const unsigned length = vobu.VOBU_PB_TM();
    bitrate.bytes += bytes;
    if (length == 0) {
      ++bitrate.untimed_vobus;
      continue;
    }
    const double mbit = bytes * 8.0 / 1e6 / (length / fields_per_second);
    timed.push_back({fields, fields + length, mbit});
    bitrate.highest = std::max(bitrate.highest, mbit);
    timed_bytes += bytes;
    fields += length;
  }
  if (timed.empty()) return bitrate;
  bitrate.seconds = fields / fields_per_second;
  bitrate.mean = timed_bytes * 8 / 1e6 / bitrate.seconds;
  bitrate.steps = timed.size() <= static_cast<std::size_t>(most_steps)
                      ? StepForEach(timed, fields_per_second)
                      : EqualSteps(timed, fields_per_second, most_steps);
  return bitrate;
}

}  // namespace VESKA::workshop
