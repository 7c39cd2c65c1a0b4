// The cell numbers of a file, kept in step while the cells of a program chain move.
#pragma once

#include <veska/CVMGInfo.h>

#include <cstdint>
#include <string>
#include <vector>

namespace VESKA::workshop {

/// A cell point that names no cell any more.
struct LostReference {
  std::string holder;    ///< what holds the cell point: "play list 2"
  std::uint16_t number;  ///< the cell number that it held

  bool operator==(const LostReference&) const = default;
};

/// Renumbers the cell points of the file that count the cells of `chain`, one of the file's, for
/// what is about to happen to its cell list: `new_order[i]` is the present position (0-based) of
/// the cell that will stand at position i; the others go. Call it while the list is still the old
/// one. Then each of these cell points names the cell that it named before, or none, and those that
/// lose theirs are returned.
///
/// The positions in the cells stay the same bytes in the file. Where the file object converts them,
/// in cell points that name a movie cell, they go back to the file's order with the cell.
std::vector<LostReference> Renumber(CVMGInfo& info, const CPGCInfo& chain,
                                    const std::vector<int>& new_order);

}  // namespace VESKA::workshop
