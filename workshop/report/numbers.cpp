#include "report/numbers.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <iterator>

namespace VESKA::workshop {

std::string Fixed(double value, int digits) {
  std::array<char, 400> buffer{};
#ifdef __EMSCRIPTEN__  // its library has no other way, and its locale is always "C"
  return {buffer.data(), static_cast<std::size_t>(
                             std::snprintf(buffer.data(), buffer.size(), "%.*f", digits, value))};
#else
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                    std::chars_format::fixed, digits);
  return {buffer.data(), result.ptr};
#endif
}

std::string Decimal(double value, int digits) {
  std::string text = Fixed(value, digits);
  if (text.find('.') != std::string::npos) {
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
  }
  return text == "-0" ? "0" : text;
}

std::string Grouped(std::uint64_t number) {
  std::string text = std::to_string(number);
  for (std::size_t i = text.size(); i > 3; i -= 3) text.insert(i - 3, ",");
  return text;
}

std::string Grouped(int number) { return Grouped(static_cast<std::uint64_t>(number)); }

std::string SizeText(std::uint64_t bytes) {
  static constexpr const char* kUnits[] = {"kB", "MB", "GB", "TB"};
  if (bytes < 10000) return Grouped(bytes) + " bytes";
  auto value = static_cast<double>(bytes) / 1000;
  std::size_t unit = 0;
  while (value >= 999.5 && unit + 1 < std::size(kUnits)) {
    value /= 1000;
    ++unit;
  }
  return Fixed(value, value < 9.995 ? 2 : value < 99.95 ? 1 : 0) + " " + kUnits[unit];
}

std::string ClockText(long long seconds, bool hours) {
  const auto two = [](long long number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
  };
  const long long minutes = seconds / 60;
  if (!hours) return std::to_string(minutes) + ":" + two(seconds % 60);
  return std::to_string(minutes / 60) + ":" + two(minutes % 60) + ":" + two(seconds % 60);
}

std::string DurationText(double seconds) {
  if (seconds < 59.95) return Fixed(seconds, 1) + " s";
  const long long whole = std::llround(seconds);
  return ClockText(whole, whole >= 3600);
}

std::string Counted(int number, const std::string& thing) {
  return Grouped(number) + " " + thing + (number == 1 ? "" : "s");
}

}  // namespace VESKA::workshop
