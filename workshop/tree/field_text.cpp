#include "tree/field_text.h"

#include <veska/cell_points.h>
#include <veska/time_functions.h>

#include <string_view>

#include "basis/text.h"

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

/// The position of one in a user-defined chain is bytes whatever the cell is.
std::string CellPointText(std::span<const unsigned char> bytes, const CPGCInfo& chain,
                          bool has_position) {
  tag_CELL_POINT point{};
  std::memcpy(&point, bytes.data(), sizeof point);
  const std::string position = ", position bytes " + Hex(bytes.subspan(sizeof point.cell));
  if (point.cell == kNoCell) return "no cell" + position;
  const std::string cell = "cell " + std::to_string(point.cell);
  if (NamedCell(chain, point.cell) == nullptr) return cell + " (there is none)" + position;
  if (!NamesMovieCell(chain, point.cell)) return cell + " (still)" + position;
  if (!has_position) return cell + " (movie)" + position;
  return cell + " (movie), position " + std::to_string(point.position) + " and " +
         std::to_string(point.position_ext);
}

}  // namespace

std::string FieldText(const Record& record, const Field& field, const CVMGInfo& info,
                      const CPGCInfo* user_chain, const DecodeText& decode) {
  const auto bytes = FieldBytes(record, field);
  switch (field.kind) {
    case FieldKind::kNumber:
    case FieldKind::kDerived:
      return NumberText(record, field);
    case FieldKind::kClock:
      return ClockText(bytes);
    case FieldKind::kCellPoint:
      return CellPointText(bytes, user_chain != nullptr ? *user_chain : info.GetOriginalPGC(),
                           user_chain == nullptr);
    case FieldKind::kText:
      return TextOrHex(bytes, decode);
    case FieldKind::kBytes:
      break;
  }
  return Hex(bytes);
}

}  // namespace VESKA::workshop
