// The units that the format counts in.
#pragma once

namespace veska_tool {

/// The bytes of a pack.
inline constexpr unsigned kPackSize = 2048;
/// The ticks a second of a clock value's base.
inline constexpr double kClockRate = 90000;

}  // namespace veska_tool
