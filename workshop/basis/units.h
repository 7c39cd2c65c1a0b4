// The units that the format counts in.
#pragma once

namespace VESKA::workshop {

/// The bytes of a pack.
inline constexpr unsigned kPackSize = 2048;
/// The ticks a second of a clock value's base.
inline constexpr double kClockRate = 90000;

}  // namespace VESKA::workshop
