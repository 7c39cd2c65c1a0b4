#include "tree/outline.h"

#include <veska/cell_points.h>
#include <veska/time_functions.h>

#include <string_view>

namespace VESKA::workshop {
namespace {

/// Bit fields read better in hex.
std::string NumberText(const Record& record, const Field& field) {
  const std::string_view name = field.name;
  const bool is_bits = field.width == 1 && (name.ends_with("_TY") || name == "CHRS");
  return is_bits ? "0x" + Hex(FieldBytes(record, field)) : std::to_string(GetNumber(record, field));
}

std::string ClockText(std::span<const unsigned char> bytes) {
  tag_SCR clock{};
  std::memcpy(&clock, bytes.data(), sizeof clock);
  return std::to_string(clock.base) + " and " + std::to_string(clock.ext) + " (" +
         TimeText(SCR2Millisecond(&clock)) + ")";
}

}  // namespace

void Outline::Heading(const std::string& name, const std::string& text) {
  text_ += Indent() + options_.before_heading + name + options_.after_heading +
           (text.empty() ? "" : ": ") + text + "\n";
}

void Outline::Line(const std::string& text) {
  if (!text.empty()) text_ += Indent() + text + "\n";
}

void Outline::Data(std::span<const unsigned char> bytes) {
  if (bytes.empty()) return;
  ++depth_;
  const std::size_t lines = All() ? bytes.size() : kShownDumpLines;
  if (!All() && IsZero(bytes)) {
    Line(Plural(bytes.size(), "zero byte"));
  } else {
    text_ += HexDump(bytes, Indent(), lines);
    if (bytes.size() > 16 * lines) {
      Line("and " + Plural(bytes.size() - 16 * lines, "byte") + " more (--all shows them)");
    }
  }
  --depth_;
}

std::string Outline::FieldsOf(const Record& record, bool named) const {
  std::string line;
  for (const Field& field : record.fields) {
    const bool is_name =
        named && field.kind == FieldKind::kText && Text(FieldBytes(record, field)).front() == '"';
    const std::string value = is_name ? "" : Value(record, field);
    line += (line.empty() || value.empty() ? "" : ", ") + value;
  }
  return line;
}

std::string Outline::Value(const Record& record, const Field& field) const {
  const auto bytes = FieldBytes(record, field);
  const std::string name = field.name;
  if (!All() && name.starts_with("reserved") && IsZero(bytes)) return "";
  switch (field.kind) {
    case FieldKind::kNumber:
    case FieldKind::kDerived:
      return name + " " + NumberText(record, field);
    case FieldKind::kClock:
      return name + " " + ClockText(bytes);
    case FieldKind::kCellPoint:
      return name + ": " + CellPoint(bytes);
    case FieldKind::kText:
      return name + " " + Text(bytes);
    case FieldKind::kBytes:
      break;
  }
  return name + " " + Hex(bytes);
}

/// The position of one in a user-defined chain is bytes whatever the cell is.
std::string Outline::CellPoint(std::span<const unsigned char> bytes) const {
  const CPGCInfo& chain = user_chain_ != nullptr ? *user_chain_ : info_.GetOriginalPGC();
  tag_CELL_POINT point{};
  std::memcpy(&point, bytes.data(), sizeof point);
  const std::string position = ", position bytes " + Hex(bytes.subspan(sizeof point.cell));
  if (point.cell == kNoCell) return "no cell" + position;
  const std::string cell = "cell " + std::to_string(point.cell);
  if (NamedCell(chain, point.cell) == nullptr) return cell + " (there is none)" + position;
  if (!NamesMovieCell(chain, point.cell)) return cell + " (still)" + position;
  if (user_chain_ != nullptr) return cell + " (movie)" + position;
  return cell + " (movie), position " + std::to_string(point.position) + " and " +
         std::to_string(point.position_ext);
}

}  // namespace VESKA::workshop
