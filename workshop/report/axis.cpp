#include "report/axis.h"

#include <cmath>

#include "report/numbers.h"

namespace VESKA::workshop {
namespace {

std::vector<double> Marks(double end, double step) {
  std::vector<double> marks = {0};
  for (int i = 1; marks.back() < end; ++i) marks.push_back(i * step);
  return marks;
}

}  // namespace

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

void DrawAxis(Svg& svg, const std::vector<double>& marks, double end, double x, double scale,
              double y, const std::function<std::string(double)>& label) {
  constexpr double kHalfText = 20;
  for (const double mark : marks) {
    if (mark > end * 1.0001) break;
    const double at = x + mark * scale;
    svg.Path("tick", "M" + Point(at, y) + "v4");
    const bool at_right = at > x + end * scale - kHalfText;
    svg.Text(mark == 0 ? "mark from" : at_right ? "mark to" : "mark", at, y + 16, label(mark));
  }
}

void DrawAxis(Svg& svg, bool by_time, int count, double end, double scale, double y) {
  const std::vector<double> marks = by_time ? TimeMarks(end, count) : CountMarks(end, count);
  DrawAxis(svg, marks, end, 0, scale, y,
           [&](double mark) { return by_time ? TimeMark(mark, marks) : Decimal(mark, 0); });
}

}  // namespace VESKA::workshop
