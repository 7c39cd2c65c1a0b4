// The drawing of a bitrate.
#include <algorithm>

#include "report/axis.h"
#include "report/charts.h"
#include "report/svg.h"

namespace VESKA::workshop {
namespace {

/// Where the chart's values lie in its drawing.
struct Plot {
  static constexpr double kLeft = 44;
  static constexpr double kTop = 18;
  static constexpr double kBottom = 138;
  double seconds;
  double top;
  int width;

  bool IsNarrow() const { return width < kPageWidth; }
  /// On a page the text of the mean stands beside the values.
  double Right() const { return IsNarrow() ? width - 4 : width - 80; }
  double X(double at) const { return kLeft + at / seconds * (Right() - kLeft); }
  double Y(double mbit) const { return kBottom - mbit / top * (kBottom - kTop); }
};

/// The outline of one value of the steps, from left to right, without its start.
template <class Value>
std::string Outline(const std::vector<BitrateStep>& steps, const Plot& plot, Value&& value) {
  std::string path;
  for (const BitrateStep& step : steps) {
    path += "V" + Coordinate(plot.Y(value(step))) + "H" + Coordinate(plot.X(step.end));
  }
  return path;
}

std::string Band(const std::vector<BitrateStep>& steps, const Plot& plot) {
  std::string path = "M" + Point(plot.X(0), plot.Y(steps.front().highest)) +
                     Outline(steps, plot, [](const BitrateStep& step) { return step.highest; });
  for (auto step = steps.rbegin(); step != steps.rend(); ++step) {
    path += "V" + Coordinate(plot.Y(step->lowest)) + "H" + Coordinate(plot.X(step->begin));
  }
  return path + "z";
}

void DrawGrid(Svg& svg, const Plot& plot) {
  for (const double mark : AxisMarks(plot.top, 4)) {
    if (mark > plot.top * 1.0001) break;
    const double y = plot.Y(mark);
    svg.Path(mark == 0 ? "axis" : "grid",
             "M" + Point(Plot::kLeft, y) + "H" + Coordinate(plot.Right()));
    svg.Text("mark to", Plot::kLeft - 7, y + 4, Decimal(mark, 3));
  }
  svg.Text("mark from", 0, Plot::kTop - 7, "Mbit/s");
  const std::vector<double> times = TimeMarks(plot.seconds, MarksIn(plot.width));
  const double scale = (plot.Right() - Plot::kLeft) / plot.seconds;
  DrawAxis(svg, times, plot.seconds, Plot::kLeft, scale, Plot::kBottom,
           [&](double mark) { return TimeMark(mark, times); });
  const char* unit = times.back() < 60 ? "s" : times.back() < 3600 ? "m:s" : "h:m:s";
  svg.Text("mark to", Plot::kLeft - 7, Plot::kBottom + 16, unit);
}

}  // namespace

std::string BitrateChart(const Bitrate& bitrate, double top, int number, int width) {
  const Plot plot{bitrate.seconds, top, width};
  const std::vector<BitrateStep>& steps = bitrate.steps;
  const std::string vob = "VOB " + std::to_string(number);
  Svg svg("vob" + std::to_string(number), width, Plot::kBottom + 22,
          "Bitrate of " + vob + " over time",
          "Mean " + Fixed(bitrate.mean, 2) + " and highest " + Fixed(bitrate.highest, 2) +
              " Mbit/s in " + DurationText(bitrate.seconds) + ".");
  DrawGrid(svg, plot);
  svg.NewLine();

  const std::string means = Outline(steps, plot, [](const BitrateStep& step) { return step.mean; });
  const bool has_band = std::any_of(steps.begin(), steps.end(), [](const BitrateStep& step) {
    return step.lowest < step.highest;
  });
  if (has_band) {
    svg.Path("band", Band(steps, plot));
  } else {
    svg.Path("area",
             "M" + Point(plot.X(0), Plot::kBottom) + means + "V" + Coordinate(Plot::kBottom) + "z");
  }
  svg.NewLine();
  svg.Path("curve", "M" + Point(plot.X(0), plot.Y(steps.front().mean)) + means);
  svg.NewLine();
  const double mean = plot.Y(bitrate.mean);
  svg.Path("mean", "M" + Point(Plot::kLeft, mean) + "H" + Coordinate(plot.Right()));
  const std::string text = "mean " + Fixed(bitrate.mean, 2);
  if (plot.IsNarrow()) {
    svg.Text("mean-text to", plot.Right(), mean - 4, text);
  } else {
    svg.Text("mean-text from", plot.Right() + 6, mean + 4, text);
  }
  return svg.End();
}

}  // namespace VESKA::workshop
