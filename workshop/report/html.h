// The text and the parts of an HTML page.
#pragma once

#include <veska/workshop/text.h>

#include <span>
#include <string>
#include <string_view>

namespace VESKA::workshop {

/// Longer texts are cut there, in characters.
inline constexpr std::size_t kTextLimit = 64;

/// Text as it stands in HTML, in elements and in quoted attributes.
std::string EscapeHtml(std::string_view text);

/// A text of the disc for a page: decoded where it is text without control characters, with \xNN
/// for other bytes than ASCII otherwise; cut after `limit` characters; already escaped. Empty for
/// zeros.
std::string DiscText(std::span<const unsigned char> bytes, std::size_t limit,
                     const DecodeText& decode);

/// The parts of a page. What they are given is HTML unless it says otherwise.
std::string Section(const std::string& heading, const std::string& content);
std::string Paragraph(const std::string& text);
std::string Figure(const std::string& drawing, const std::string& caption = {});
/// A table that scrolls by itself where the window is narrow.
std::string HtmlTable(const std::string& caption, const std::string& heads,
                      const std::string& rows);
/// Says that a list shows `shown` of `count` things, if that is so.
std::string RestOf(int count, int shown, const std::string& thing);

/// The head of a column of texts, of numbers; a cell with a number; the head of a row that is a
/// number, or a text of the disc.
std::string TextHead(const std::string& title);
std::string NumberHead(const std::string& title);
std::string NumberCell(const std::string& number);
std::string NumberCell(int number);
std::string RowNumber(int number);
std::string RowText(std::span<const unsigned char> text_of_the_disc, const DecodeText& decode);

}  // namespace VESKA::workshop
