// The cell points of a file: where they are, and how their positions stand.
#pragma once

#include <veska/CVMGInfo.h>

#include <cstdint>
#include <functional>
#include <string>

namespace veska_tool {

/// The number of a cell point that names no cell. So the 65,535th cell of a chain has no number.
inline constexpr std::uint16_t kNoCell = 0xFFFF;

/// Takes a cell point, what holds it ("play list 2"), and whether the file object makes numbers of
/// its position where it names a movie cell.
using CellPointVisit =
    std::function<void(VESKA::tag_CELL_POINT& point, const std::string& holder, bool converts)>;

/// Calls `visit` for every cell point of the file.
void VisitCellPoints(VESKA::CVMGInfo& info, const CellPointVisit& visit);

/// Makes the bytes of the file of a position that stands as numbers, and the other way.
void PositionToFileBytes(VESKA::tag_CELL_POINT& point);
void PositionToNumbers(VESKA::tag_CELL_POINT& point);

}  // namespace veska_tool
