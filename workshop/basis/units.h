// The units that the format counts in, and its times.
#pragma once

#include <veska/CPGCInfo.h>

#include <string>

namespace VESKA::workshop {

/// The bytes of a pack.
inline constexpr unsigned kPackSize = 2048;

/// The seconds from one clock value to a later one; 0 where it is none.
double SecondsBetween(const tag_SCR& from, const tag_SCR& to);
/// The time between the clock values of a movie cell; 0 when it has none.
double SecondsOf(const tag_C_ITEM& cell);

/// ISO 8601; empty where the bytes, in which recorders put the recording time, show no date.
std::string RecordingTime(const unsigned char* bytes);

}  // namespace VESKA::workshop
