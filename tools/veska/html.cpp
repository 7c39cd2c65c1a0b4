#include "html.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "tool_io.h"

namespace veska_tool {
namespace {

/// The length of the UTF-8 character that `bytes` begins with; 0 when it is none, or a control
/// character. Overlong forms, surrogates and what lies beyond Unicode are none.
std::size_t CharacterLength(std::span<const unsigned char> bytes) {
  const unsigned char first = bytes[0];
  if (first < 0x80) return first >= 0x20 && first != 0x7F ? 1 : 0;
  const std::size_t length = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
  if (first < 0xC2 || first > 0xF4 || bytes.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((bytes[i] & 0xC0) != 0x80) return 0;
  }
  const unsigned char second = bytes[1];
  const bool control = first == 0xC2 && second < 0xA0;
  const bool wrong = (first == 0xE0 && second < 0xA0) || (first == 0xED && second > 0x9F) ||
                     (first == 0xF0 && second < 0x90) || (first == 0xF4 && second > 0x8F);
  return control || wrong ? 0 : length;
}

bool IsText(std::span<const unsigned char> bytes) {
  while (!bytes.empty()) {
    const std::size_t length = CharacterLength(bytes);
    if (length == 0) return false;
    bytes = bytes.subspan(length);
  }
  return true;
}

/// "3:07", and "1:03:07" when `hours`.
std::string ClockText(long long seconds, bool hours) {
  const auto two = [](long long number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
  };
  const long long minutes = seconds / 60;
  if (!hours) return std::to_string(minutes) + ":" + two(seconds % 60);
  return std::to_string(minutes / 60) + ":" + two(minutes % 60) + ":" + two(seconds % 60);
}

std::vector<double> Marks(double end, double step) {
  std::vector<double> marks = {0};
  for (int i = 1; marks.back() < end; ++i) marks.push_back(i * step);
  return marks;
}

}  // namespace

std::string EscapeHtml(std::string_view text) {
  std::string html;
  for (const char c : text) {
    switch (c) {
      case '&':
        html += "&amp;";
        break;
      case '<':
        html += "&lt;";
        break;
      case '>':
        html += "&gt;";
        break;
      case '"':
        html += "&quot;";
        break;
      case '\'':
        html += "&#39;";
        break;
      default:
        html.push_back(c);
    }
  }
  return html;
}

std::string DiscText(std::span<const unsigned char> bytes, std::size_t limit) {
  while (!bytes.empty() && bytes.back() == 0) bytes = bytes.first(bytes.size() - 1);
  const std::string text =
      IsText(bytes) ? std::string(bytes.begin(), bytes.end()) : Readable(bytes);
  std::size_t end = 0;
  for (std::size_t i = 0; i < limit && end < text.size(); ++i) {
    do {
      ++end;
    } while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80);
  }
  return EscapeHtml(text.substr(0, end)) + (end < text.size() ? "&hellip;" : "");
}

std::string Fixed(double value, int digits) {
  std::array<char, 400> buffer{};
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                    std::chars_format::fixed, digits);
  return {buffer.data(), result.ptr};
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

std::string DurationText(double seconds) {
  if (seconds < 59.95) return Fixed(seconds, 1) + " s";
  const long long whole = std::llround(seconds);
  return ClockText(whole, whole >= 3600);
}

std::string Counted(std::uint64_t number, const std::string& thing) {
  return Grouped(number) + " " + thing + (number == 1 ? "" : "s");
}

std::vector<double> AxisMarks(double end, int count) {
  if (!(end > 0)) return {0};
  const double rough = end / count;
  double step = std::pow(10, std::floor(std::log10(rough)));
  for (const double factor : {2.0, 2.5, 2.0}) {  // 1, 2, 5, 10
    if (step < rough) step *= factor;
  }
  return Marks(end, step);
}

std::vector<double> CountMarks(double end, int count) {
  return end < count ? Marks(end, 1) : AxisMarks(end, count);
}

std::vector<double> TimeMarks(double seconds, int count) {
  static constexpr double kSteps[] = {1,   2,   5,   10,   15,   20,   30,   60,    120,
                                      300, 600, 900, 1200, 1800, 3600, 7200, 10800, 21600};
  if (seconds < count) return AxisMarks(seconds, count);
  for (const double step : kSteps) {
    if (seconds / step <= count) return Marks(seconds, step);
  }
  std::vector<double> hours = AxisMarks(seconds / 3600, count);
  for (double& mark : hours) mark *= 3600;
  return hours;
}

std::string TimeMark(double seconds, const std::vector<double>& marks) {
  if (marks.back() < 60) return Decimal(seconds, 2);
  return ClockText(std::llround(seconds), marks.back() >= 3600);
}

}  // namespace veska_tool
