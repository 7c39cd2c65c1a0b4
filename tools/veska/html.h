// Text, numbers and marks for an HTML page with drawings in it.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace veska_tool {

/// Text as it stands in HTML, in elements and in quoted attributes.
std::string EscapeHtml(std::string_view text);

/// A text of the disc for a page: as it is where it is UTF-8 without control characters, with \xNN
/// for the other bytes otherwise; cut after `limit` characters; already escaped. Empty for zeros.
std::string DiscText(std::span<const unsigned char> bytes, std::size_t limit);

/// `value` with `digits` digits behind the point; `Decimal` leaves out zeros at the end.
std::string Fixed(double value, int digits);
std::string Decimal(double value, int digits);
/// "13,088".
std::string Grouped(std::uint64_t number);
/// "13,088 bytes" below 10,000 bytes; "1.25 GB" (powers of 1000) above.
std::string SizeText(std::uint64_t bytes);
/// "28.2 s" below a minute; "3:17" and "1:03:17" above.
std::string DurationText(double seconds);
/// "1 cell", "3 cells".
std::string Counted(std::uint64_t number, const std::string& thing);

/// The positions of the marks of an axis from 0 to at least `end`: multiples of a step that people
/// count in, about `count` of them.
std::vector<double> AxisMarks(double end, int count);
/// The same with whole steps.
std::vector<double> CountMarks(double end, int count);
/// The same for seconds: steps of whole seconds, minutes and hours, or parts of a second.
std::vector<double> TimeMarks(double seconds, int count);
/// The mark as text, like its neighbours: "0:30" where they are minutes.
std::string TimeMark(double seconds, const std::vector<double>& marks);

}  // namespace veska_tool
