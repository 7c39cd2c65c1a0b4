// Numbers, sizes and times as a report writes them.
#pragma once

#include <cstdint>
#include <string>

namespace VESKA::workshop {

/// `value` with `digits` digits behind the point; `Decimal` leaves out zeros at the end.
std::string Fixed(double value, int digits);
std::string Decimal(double value, int digits);
/// "13,088".
std::string Grouped(std::uint64_t number);
std::string Grouped(int number);
/// "13,088 bytes" below 10,000 bytes; "1.25 GB" (powers of 1000) above.
std::string SizeText(std::uint64_t bytes);
/// "3:07", and "1:03:07" with `hours`.
std::string ClockText(long long seconds, bool hours);
/// "28.2 s" below a minute; "3:17" and "1:03:17" above.
std::string DurationText(double seconds);
/// "1 cell", "3 cells".
std::string Counted(int number, const std::string& thing);

}  // namespace VESKA::workshop
