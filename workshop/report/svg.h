// Drawings in SVG that take their colours from the page's style sheet.
#pragma once

#include <string>
#include <vector>

#include "report/numbers.h"

namespace VESKA::workshop {

class Svg {
 public:
  /// `title` and `description` are for who cannot see the drawing; `id` and the width are unique in
  /// the page, and the width is the drawing's class.
  Svg(const std::string& id, int width, double height, const std::string& title,
      const std::string& description);
  /// One that only repeats what the text beside it says.
  Svg(double width, double height);

  /// `look` names classes of the style sheet; a title is shown by what it belongs to.
  void Rect(const std::string& look, double x, double y, double width, double height,
            const std::string& title = {});
  void Path(const std::string& look, const std::string& path, const std::string& title = {});
  void Text(const std::string& look, double x, double y, const std::string& text);
  void NewLine() { text_ += "\n"; }
  std::string End() { return text_ + "</svg>"; }

 private:
  std::string text_;
};

/// A coordinate, to a tenth of a unit, and two of them.
inline std::string Coordinate(double value) { return Decimal(value, 1); }
inline std::string Point(double x, double y) { return Coordinate(x) + " " + Coordinate(y); }

/// A stretch of a bar, in the units of its axis.
struct Stretch {
  double begin;
  double end;
  std::string look;
  std::string name;
  std::string title;
};

/// Draws stretches in order, `scale` units of the drawing for one of the axis. Those too narrow to
/// be seen are drawn together, so that a drawing holds no more than its width lets be seen.
void DrawStretches(Svg& svg, const std::vector<Stretch>& stretches, double scale, double y,
                   double height);

}  // namespace VESKA::workshop
