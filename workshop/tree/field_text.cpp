#include "tree/field_text.h"

#include <veska/time_functions.h>

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "basis/cell_points.h"
#include "basis/text.h"

namespace VESKA::workshop {
namespace {

using VESKA::Field;
using VESKA::FieldKind;

/// Bit fields read better in hex.
bool IsBits(const Field& field) {
  const std::string_view name = field.name;
  return field.width == 1 && (name.ends_with("_TY") || name == "CHRS");
}

std::string Hex2(std::uint64_t value) {
  const auto byte = static_cast<unsigned char>(value);
  return "0x" + Hex({&byte, 1});
}

std::string ClockText(const Record& record, const Field& field) {
  VESKA::tag_SCR clock{};
  std::memcpy(&clock, record.bytes + field.offset, sizeof clock);
  return std::to_string(clock.base) + " and " + std::to_string(clock.ext) + " (" +
         TimeText(SCR2Millisecond(&clock)) + ")";
}

std::string CellPointText(const Record& record, const Field& field, const CPGCInfo& chain,
                          bool raw_positions) {
  VESKA::tag_CELL_POINT point{};
  std::memcpy(&point, record.bytes + field.offset, sizeof point);
  const std::string bytes =
      ", position bytes " + Hex(FieldBytes(record, field).subspan(sizeof point.cell));
  if (point.cell == kNoCell) return "no cell" + bytes;
  const std::string cell = "cell " + std::to_string(point.cell);
  if (NamedCell(chain, point.cell) == nullptr) return cell + " (there is none)" + bytes;
  if (!NamesMovieCell(chain, point.cell)) return cell + " (still)" + bytes;
  if (raw_positions) return cell + " (movie)" + bytes;
  return cell + " (movie), position " + std::to_string(point.position) + " and " +
         std::to_string(point.position_ext);
}

}  // namespace

std::string FieldText(const Record& record, const Field& field, const CPGCInfo& chain,
                      bool raw_positions, const DecodeText& decode) {
  switch (field.kind) {
    case FieldKind::kNumber:
    case FieldKind::kDerived: {
      const std::uint64_t value = GetNumber(record, field);
      return IsBits(field) ? Hex2(value) : std::to_string(value);
    }
    case FieldKind::kClock:
      return ClockText(record, field);
    case FieldKind::kCellPoint:
      return CellPointText(record, field, chain, raw_positions);
    case FieldKind::kText:
      return TextOrHex(FieldBytes(record, field), decode);
    case FieldKind::kBytes:
      break;
  }
  return Hex(FieldBytes(record, field));
}

}  // namespace VESKA::workshop
