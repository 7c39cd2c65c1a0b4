#include "tree/branch_text.h"

#include <veska/cell_points.h>

#include <algorithm>

#include "basis/text.h"
#include "tree/field_text.h"

namespace VESKA::workshop {
namespace {

constexpr std::size_t kShownBytes = 128;

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

/// A cell of a chain of its own, whose cells are not at hand.
std::string OwnCellPoint(std::span<const unsigned char> bytes) {
  const auto cell = static_cast<unsigned>(GetNumber(bytes.data(), 2));
  return (cell == kNoCell ? "no cell" : "cell " + std::to_string(cell)) + ", position bytes " +
         Hex(bytes.subspan(2));
}

}  // namespace

std::string BranchText(const Record& record, const Field& field, Positions positions,
                       const CVMGInfo& info, const DecodeText& decode) {
  const std::span<const unsigned char> bytes = FieldBytes(record, field);
  if (field.kind == FieldKind::kText) {
    return IsZero(bytes) ? "(empty)" : "\"" + ShownText(bytes, decode) + "\"";
  }
  if (field.kind == FieldKind::kCellPoint && positions == Positions::kBytes) {
    return OwnCellPoint(bytes);
  }
  return FieldText(record, field, info, nullptr, decode);
}

std::string BlockText(std::span<const unsigned char> bytes, const DecodeText& decode) {
  const auto shown = bytes.first(std::min(bytes.size(), kShownBytes));
  const std::string rest =
      shown.size() < bytes.size() ? "... (" + Plural(bytes.size(), "byte") + ")" : "";
  return TextOrHex(shown, decode) + rest;
}

bool HasPart(std::string_view text, std::string_view part) {
  return std::search(text.begin(), text.end(), part.begin(), part.end(),
                     [](char a, char b) { return Lower(a) == b; }) != text.end();
}

std::string LowerCase(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), Lower);
  return lower;
}

}  // namespace VESKA::workshop
