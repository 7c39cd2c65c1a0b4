#include "report/html.h"

#include "basis/text.h"
#include "report/numbers.h"

namespace VESKA::workshop {
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

}  // namespace

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
std::string RowText(std::span<const unsigned char> text_of_the_disc) {
  const std::string text = DiscText(text_of_the_disc, kTextLimit);
  return "<th scope=\"row\" class=\"text\">" +
         (text.empty() ? "<span class=\"note\">no text</span>" : text) + "</th>";
}

}  // namespace VESKA::workshop
