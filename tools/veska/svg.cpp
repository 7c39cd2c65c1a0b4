#include "svg.h"

namespace veska_tool {
namespace {

constexpr double kNarrowest = 3;

/// The first class of a look: what it is, without how it is told from its neighbours.
std::string_view KindOf(const std::string& look) {
  return std::string_view(look).substr(0, look.find(' '));
}

}  // namespace

Svg::Svg(const std::string& id, double width, double height, const std::string& title,
         const std::string& description)
    : text_("<svg viewBox=\"0 0 " + Coordinate(width) + " " + Coordinate(height) +
            "\" role=\"img\" aria-labelledby=\"" + id + "-t " + id + "-d\"><title id=\"" + id +
            "-t\">" + EscapeHtml(title) + "</title><desc id=\"" + id + "-d\">" +
            EscapeHtml(description) + "</desc>\n") {}

Svg::Svg(double width, double height)
    : text_("<svg width=\"" + Coordinate(width) + "\" height=\"" + Coordinate(height) +
            "\" viewBox=\"0 0 " + Coordinate(width) + " " + Coordinate(height) +
            "\" aria-hidden=\"true\">") {}

void Svg::Rect(const std::string& look, double x, double y, double width, double height,
               const std::string& title) {
  text_ += "<rect class=\"" + look + "\" x=\"" + Coordinate(x) + "\" y=\"" + Coordinate(y) +
           "\" width=\"" + Coordinate(width) + "\" height=\"" + Coordinate(height) + "\"";
  Close("rect", title);
}

void Svg::Path(const std::string& look, const std::string& path, const std::string& title) {
  text_ += "<path class=\"" + look + "\" d=\"" + path + "\"";
  Close("path", title);
}

void Svg::Close(const char* element, const std::string& title) {
  if (title.empty()) {
    text_ += "/>";
  } else {
    text_ += "><title>" + EscapeHtml(title) + "</title></" + element + ">";
  }
}

void Svg::Text(const std::string& look, double x, double y, const std::string& text) {
  text_ += "<text class=\"" + look + "\" x=\"" + Coordinate(x) + "\" y=\"" + Coordinate(y) + "\">" +
           EscapeHtml(text) + "</text>";
}

void DrawStretches(Svg& svg, const std::vector<Stretch>& stretches, double scale, double y,
                   double height) {
  const auto is_narrow = [&](const Stretch& stretch) {
    return (stretch.end - stretch.begin) * scale < kNarrowest;
  };
  for (auto first = stretches.begin(); first != stretches.end();) {
    auto last = first;
    std::string look = first->look;
    while (last + 1 != stretches.end() && is_narrow(*(last + 1)) &&
           (last->end - first->begin) * scale < kNarrowest && (last + 1)->begin == last->end) {
      ++last;
      look = KindOf(last->look) == KindOf(look) ? KindOf(look) : "several";
    }
    const std::string title = first == last ? first->title : first->name + " to " + last->name;
    svg.Rect(look, first->begin * scale, y, (last->end - first->begin) * scale, height, title);
    first = last + 1;
  }
}

void DrawAxis(Svg& svg, const std::vector<double>& marks, double end, double x, double scale,
              double y, const std::function<std::string(double)>& label) {
  constexpr double kHalfText = 20;
  for (const double mark : marks) {
    if (mark > end * 1.0001) break;
    const double at = x + mark * scale;
    svg.Path("tick", "M" + Coordinate(at) + " " + Coordinate(y) + "v4");
    const bool at_right = at > x + end * scale - kHalfText;
    svg.Text(mark == 0 ? "mark from" : at_right ? "mark to" : "mark", at, y + 16, label(mark));
  }
}

}  // namespace veska_tool
