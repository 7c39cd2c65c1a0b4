// Cell points: what holds them, in words, and how their positions stand.
#pragma once

#include <veska/cell_points.h>

#include <cstring>
#include <string>

#include "basis/fields.h"

namespace VESKA::workshop {

/// "play list 2", "user chain 1, program 3".
inline std::string HolderText(const CellPointHolder& holder) {
  const std::string number = std::to_string(holder.index + 1);
  switch (holder.kind) {
    case CellPointHolder::kHeader:
      return "header, cell point at " + std::to_string(holder.field->offset);
    case CellPointHolder::kPlayList:
      return "play list " + number;
    case CellPointHolder::kProgram:
      break;
  }
  const std::string chain =
      holder.user_chain < 0 ? "" : "user chain " + std::to_string(holder.user_chain + 1) + ", ";
  return chain + "program " + number;
}

/// Makes numbers of a position that stands as the bytes of the file, or these bytes of the numbers.
inline void ConvertPosition(tag_CELL_POINT& point) {
  unsigned char bytes[sizeof point];
  std::memcpy(bytes, &point, sizeof point);
  for (const auto& [at, width] : {std::pair{2U, 4U}, std::pair{6U, 2U}}) {
    SetNumber(bytes + at, width, GetBigEndian(bytes + at, width));
  }
  std::memcpy(&point, bytes, sizeof point);
}

}  // namespace VESKA::workshop
