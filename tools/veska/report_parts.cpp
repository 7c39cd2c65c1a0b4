#include "report_parts.h"

#include "html.h"

namespace veska_tool {

void StartSection(std::string& page, const std::string& heading) {
  page += "<section>\n<h2>" + heading + "</h2>\n";
}
void EndSection(std::string& page) { page += "</section>\n"; }

void AddParagraph(std::string& page, const std::string& text) { page += "<p>" + text + "</p>\n"; }

void AddFigure(std::string& page, const std::string& drawing, const std::string& caption) {
  page += "<figure><div class=\"wide\">" + drawing + "</div>";
  if (!caption.empty()) page += "<figcaption>" + caption + "</figcaption>";
  page += "</figure>\n";
}

void StartTable(std::string& page, const std::string& caption, const std::string& column_heads) {
  page += "<div class=\"wide\" tabindex=\"0\" role=\"region\" aria-label=\"" + caption +
          "\"><table>\n<caption>" + caption + "</caption>\n<thead><tr>" + column_heads +
          "</tr></thead>\n<tbody>\n";
}
void EndTable(std::string& page) { page += "</tbody></table></div>\n"; }

void SayRest(std::string& page, int count, int shown, const std::string& thing) {
  if (count <= shown) return;
  const auto rest = static_cast<std::uint64_t>(count - shown);
  page += "<p class=\"note\">" + Counted(rest, thing) + " more " + (rest == 1 ? "is" : "are") +
          " not shown.</p>\n";
}

std::string TextHead(const std::string& title) { return "<th scope=\"col\">" + title + "</th>"; }
std::string NumberHead(const std::string& title) {
  return "<th scope=\"col\" class=\"n\">" + title + "</th>";
}
std::string NumberCell(const std::string& number) { return "<td class=\"n\">" + number + "</td>"; }
std::string NumberCell(int number) { return NumberCell(std::to_string(number)); }
std::string RowNumber(int number) {
  return "<th scope=\"row\" class=\"n\">" + std::to_string(number) + "</th>";
}
std::string RowText(std::span<const unsigned char> text_of_the_disc) {
  const std::string text = DiscText(text_of_the_disc, kTextLimit);
  return "<th scope=\"row\" class=\"text\">" +
         (text.empty() ? "<span class=\"note\">no text</span>" : text) + "</th>";
}

}  // namespace veska_tool
