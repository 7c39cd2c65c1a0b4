// The axes of drawings.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "report/svg.h"

namespace VESKA::workshop {

/// The positions of the marks of an axis from 0 to at least `end`: multiples of a step that people
/// count in, about `count` of them.
std::vector<double> AxisMarks(double end, int count);
/// The same with whole steps.
std::vector<double> CountMarks(double end, int count);
/// The same for seconds: steps of whole seconds, minutes and hours, or parts of a second.
std::vector<double> TimeMarks(double seconds, int count);
/// The mark as text, like its neighbours: "0:30" where they are minutes.
std::string TimeMark(double seconds, const std::vector<double>& marks);

/// Draws the marks of an axis up to `end`, from `x` on, with their texts below `y`; `scale` units
/// of the drawing are one of the axis.
void DrawAxis(Svg& svg, const std::vector<double>& marks, double end, double x, double scale,
              double y, const std::function<std::string(double)>& label);
/// The same from 0 on, of seconds when `by_time`, else of whole numbers, with about `count` marks.
void DrawAxis(Svg& svg, bool by_time, int count, double end, double scale, double y);

}  // namespace VESKA::workshop
