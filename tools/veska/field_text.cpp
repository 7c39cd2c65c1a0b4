#include "field_text.h"

#include <veska/time_functions.h>

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "cell_points.h"
#include "tool_io.h"

namespace veska_tool {
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

std::string CellPointText(const Record& record, const Field& field, VESKA::CPGCInfo& cells,
                          bool raw_positions) {
  VESKA::tag_CELL_POINT point{};
  std::memcpy(&point, record.bytes + field.offset, sizeof point);
  const std::string bytes =
      ", position bytes " + Hex(FieldBytes(record, field).subspan(sizeof point.cell));
  if (point.cell == kNoCell) return "no cell" + bytes;
  const std::string cell = "cell " + std::to_string(point.cell);
  const VESKA::tag_C_ITEM* item = cells.GetCellNode(point.cell - 1);
  if (item == nullptr) return cell + " (there is none)" + bytes;
  if (item->CI->GetType() != VESKA::CELL_MOVIE) return cell + " (still)" + bytes;
  if (raw_positions) return cell + " (movie)" + bytes;
  return cell + " (movie), position " + std::to_string(point.position) + " and " +
         std::to_string(point.position_ext);
}

}  // namespace

bool IsZero(std::span<const unsigned char> bytes) {
  return std::all_of(bytes.begin(), bytes.end(), [](unsigned char byte) { return byte == 0; });
}

std::string TextOrHex(std::span<const unsigned char> bytes) {
  if (IsZero(bytes)) return "(empty)";
  const std::string text = Readable(bytes);
  return text.find("\\x") == std::string::npos ? '"' + text + '"' : Hex(bytes);
}

std::string Plural(std::uint64_t count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::string TimeText(std::uint64_t milliseconds) {
  char text[48];
  std::snprintf(text, sizeof text, "%llu:%02llu:%02llu.%03llu",
                static_cast<unsigned long long>(milliseconds / 3600000),
                static_cast<unsigned long long>(milliseconds / 60000 % 60),
                static_cast<unsigned long long>(milliseconds / 1000 % 60),
                static_cast<unsigned long long>(milliseconds % 1000));
  return text;
}

std::string FieldText(const Record& record, const Field& field, VESKA::CPGCInfo& cells,
                      bool raw_positions) {
  switch (field.kind) {
    case FieldKind::kNumber:
    case FieldKind::kDerived: {
      const std::uint64_t value = GetNumber(record, field);
      return IsBits(field) ? Hex2(value) : std::to_string(value);
    }
    case FieldKind::kClock:
      return ClockText(record, field);
    case FieldKind::kCellPoint:
      return CellPointText(record, field, cells, raw_positions);
    case FieldKind::kText:
      return TextOrHex(FieldBytes(record, field));
    case FieldKind::kBytes:
      break;
  }
  return Hex(FieldBytes(record, field));
}

std::string HexDump(std::span<const unsigned char> bytes, const std::string& indent,
                    std::size_t lines) {
  constexpr std::size_t kWidth = 16;
  std::string text;
  for (std::size_t at = 0; at < bytes.size() && lines-- > 0; at += kWidth) {
    const auto row = bytes.subspan(at, std::min(kWidth, bytes.size() - at));
    char offset[24];
    std::snprintf(offset, sizeof offset, "%06zx  ", at);
    text += indent + offset;
    std::string hex = Hex(row);
    hex.resize(2 * kWidth, ' ');
    for (std::size_t i = 0; i < hex.size(); i += 2) text += hex.substr(i, 2) + " ";
    text += " ";
    for (const unsigned char byte : row) {
      text.push_back(byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : '.');
    }
    text += "\n";
  }
  return text;
}

}  // namespace veska_tool
