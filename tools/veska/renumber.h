// The cell numbers of a file, kept in step while the cells of its original program chain move.
#pragma once

#include <veska/CVMGInfo.h>

#include <cstdint>
#include <string>
#include <vector>

namespace veska_tool {

/// A cell point that names no cell any more.
struct LostReference {
  std::string holder;    ///< what holds the cell point: "play list 2"
  std::uint16_t number;  ///< the cell number that it held

  bool operator==(const LostReference&) const = default;
};

/// Renumbers every cell point of the file for what is about to happen to the cell list of the
/// original program chain: `new_order[i]` is the present position (0-based) of the cell that will
/// stand at position i; the others go. Call it while the list is still the old one. Then every cell
/// point names the cell that it named before, or none, and those that lose theirs are returned.
///
/// All cell points count: those of the header, of the play lists, of the programs of the original
/// chain and of those of the user-defined chains. The latter hold numbers of cells of the original
/// chain too, as every cell number outside a cell list does; their own cells have none.
///
/// The positions in the cells stay the same bytes in the file. Where the file object converts them,
/// in cell points that name a movie cell, they go back to the file's order with the cell.
std::vector<LostReference> Renumber(VESKA::CVMGInfo& info, const std::vector<int>& new_order);

}  // namespace veska_tool
