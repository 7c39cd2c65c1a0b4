#include "report/html.h"

#include <veska/workshop/text.h>

#include <optional>

#include "basis/text.h"
#include "report/numbers.h"

namespace VESKA::workshop {

std::string EscapeHtml(std::string_view text) {
  std::string html;
  for (const char c : text) {
    const char* name = c == '&'    ? "&amp;"
                       : c == '<'  ? "&lt;"
                       : c == '>'  ? "&gt;"
                       : c == '"'  ? "&quot;"
                       : c == '\'' ? "&#39;"
                                   : nullptr;
    name == nullptr ? html += c : html += name;
  }
  return html;
}

std::string DiscText(std::span<const unsigned char> bytes, std::size_t limit,
                     const DecodeText& decode) {
  const std::string text = PlainText(bytes, decode).value_or(Readable(bytes));
  std::size_t end = 0;
  for (std::size_t i = 0; i < limit && end < text.size(); ++i) {
    do {
      ++end;
    } while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80);
  }
  return EscapeHtml(text.substr(0, end)) + (end < text.size() ? "&hellip;" : "");
}

std::string Section(const std::string& heading, const std::string& content) {
  return "<section>\n<h2>" + heading + "</h2>\n" + content + "</section>\n";
}

std::string Paragraph(const std::string& text) { return "<p>" + text + "</p>\n"; }

std::string Figure(const std::string& drawing, const std::string& caption) {
  return "<figure><div class=\"wide\">" + drawing + "</div>" +
         (caption.empty() ? "" : "<figcaption>" + caption + "</figcaption>") + "</figure>\n";
}

std::string HtmlTable(const std::string& caption, const std::string& heads,
                      const std::string& rows) {
  return "<div class=\"wide\" tabindex=\"0\" role=\"region\" aria-label=\"" + caption +
         "\"><table>\n<caption>" + caption + "</caption>\n<thead><tr>" + heads +
         "</tr></thead>\n<tbody>\n" + rows + "</tbody></table></div>\n";
}

std::string RestOf(int count, int shown, const std::string& thing) {
  if (count <= shown) return {};
  return "<p class=\"note\">" + Counted(count - shown, thing) + " more " +
         (count - shown == 1 ? "is" : "are") + " not shown.</p>\n";
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
std::string RowText(std::span<const unsigned char> text_of_the_disc, const DecodeText& decode) {
  const std::string text = DiscText(text_of_the_disc, kTextLimit, decode);
  return "<th scope=\"row\" class=\"text\">" +
         (text.empty() ? "<span class=\"note\">no text</span>" : text) + "</th>";
}

}  // namespace VESKA::workshop
