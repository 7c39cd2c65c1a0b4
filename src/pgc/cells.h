/// Cells of the library's two classes, or of a class of the host's.
#pragma once

#include <veska/CPGCInfo.h>

#include <typeinfo>
#include <vector>

namespace VESKA {

/// The cell as one of the library's classes; null when it is none of that class.
template <class Cell>
Cell* As(CBaseCell& cell) {
  if (typeid(cell) == typeid(Cell)) return static_cast<Cell*>(&cell);  // as nearly all are
  return dynamic_cast<Cell*>(&cell);
}

/// Calls `action` with the cell as what it is: one of the library's classes, or only a cell.
template <class Action>
auto WithItsClass(CBaseCell& cell, Action&& action) {
  if (cell.GetType() == CELL_MOVIE) {
    if (CMovieCell* movie = As<CMovieCell>(cell)) return action(*movie);
  } else {
    if (CStillCell* still = As<CStillCell>(cell)) return action(*still);
  }
  return action(cell);
}

/// What a cell of any class writes, of the size that it says. Throws `std::bad_alloc`.
std::vector<unsigned char> BytesOf(CBaseCell& cell);

/// Equal when both would stand the same in a file. Without memory for the cells of a host's class,
/// false.
bool StandTheSame(CBaseCell& a, CBaseCell& b);

/// The same of two cells of a chain with their addresses.
inline bool StandTheSame(const tag_C_ITEM& a, const tag_C_ITEM& b) {
  return a.CI_SA == b.CI_SA && StandTheSame(*a.CI, *b.CI);
}

}  // namespace VESKA
