#include "report/svg.h"

#include "report/html.h"
#include "report/numbers.h"

namespace VESKA::workshop {
namespace {

constexpr double kNarrowest = 3;

/// The first class of a look: what it is, without how it is told from its neighbours.
std::string_view KindOf(const std::string& look) {
  return std::string_view(look).substr(0, look.find(' '));
}

std::string Attribute(const char* name, double value) {
  return std::string(" ") + name + "=\"" + Coordinate(value) + "\"";
}

/// What ends an element, with the title that it shows.
std::string EndOf(const std::string& element, const std::string& title) {
  return title.empty() ? "/>" : "><title>" + EscapeHtml(title) + "</title></" + element + ">";
}

}  // namespace

Svg::Svg(const std::string& id, int width, double height, const std::string& title,
         const std::string& description) {
  const std::string own = id + "-" + std::to_string(width);
  text_ = "<svg class=\"w" + std::to_string(width) + "\" viewBox=\"0 0 " + Point(width, height) +
          "\" role=\"img\" aria-labelledby=\"" + own + "-t " + own + "-d\"><title id=\"" + own +
          "-t\">" + EscapeHtml(title) + "</title><desc id=\"" + own + "-d\">" +
          EscapeHtml(description) + "</desc>\n";
}

Svg::Svg(double width, double height)
    : text_("<svg" + Attribute("width", width) + Attribute("height", height) + " viewBox=\"0 0 " +
            Point(width, height) + "\" aria-hidden=\"true\">") {}

void Svg::Rect(const std::string& look, double x, double y, double width, double height,
               const std::string& title) {
  text_ += "<rect class=\"" + look + "\"" + Attribute("x", x) + Attribute("y", y) +
           Attribute("width", width) + Attribute("height", height) + EndOf("rect", title);
}

void Svg::Path(const std::string& look, const std::string& path, const std::string& title) {
  text_ += "<path class=\"" + look + "\" d=\"" + path + "\"" + EndOf("path", title);
}

void Svg::Text(const std::string& look, double x, double y, const std::string& text) {
  text_ += "<text class=\"" + look + "\"" + Attribute("x", x) + Attribute("y", y) + ">" +
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

}  // namespace VESKA::workshop
