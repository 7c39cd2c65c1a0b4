/// The bitrate of a movie VOB over time, from its time map.
#pragma once

#include <veska/CMovieAVFile.h>
#include <veska/CTimeMapTable.h>

#include <cstdint>
#include <vector>

#include "veska/workshop/export.h"

namespace VESKA::workshop {

///@{
/// The video fields a second of the two families of television.
inline constexpr double kFields50 = 50.0;
inline constexpr double kFields60 = 60.0 / 1.001;
///@}

/// Tells the field rate of a disc from its movie VOBs: the time between a VOB's two clock values
/// against the fields of its time map. 0 when they do not agree on one of the two rates.
VESKA_WORKSHOP_API double GuessFieldRate(const CMovieAVFile& vobs);

/// The bitrate in a stretch of playback time, in Mbit (1,000,000 bits) a second: the lowest and the
/// highest of the VOBUs in it and the mean over its time.
struct BitrateStep {
  double begin;  ///< in seconds
  double end;
  double lowest;
  double mean;
  double highest;
};

/// The bitrate of a VOB over its playback time.
struct Bitrate {
  std::vector<BitrateStep> steps;  ///< in order, without gaps
  double seconds = 0;              ///< playback time of all VOBUs
  double mean = 0;                 ///< over that time
  double highest = 0;              ///< of all VOBUs
  std::uint64_t bytes = 0;         ///< of all VOBUs
  int vobus = 0;
  int untimed_vobus = 0;  ///< those with a playback time of 0: counted in the bytes only
};

/// The bitrate of a VOB: one step for each VOBU, or `most_steps` (1 or more) of equal length when
/// there are more VOBUs.
VESKA_WORKSHOP_API Bitrate BitrateOf(const CTimeMapTable& map, double fields_per_second,
                                     int most_steps);

}  // namespace VESKA::workshop
