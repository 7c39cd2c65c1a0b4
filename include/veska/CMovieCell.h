/// The movie cell.
#pragma once

#include <veska/CellOf.h>
#include <veska/export.h>

namespace VESKA {

/// A cell of movie material: 18 bytes and 7 or 135 for each entry point. The operations are those
/// of `CellOf`.
class VESKA_API CMovieCell : public CellOf<tag_M_C_GI, tag_M_C_EPI, CELL_MOVIE> {
 public:
  CMovieCell() = default;
  CMovieCell(const CMovieCell&) = default;
  CMovieCell& operator=(const CMovieCell&) = default;
  CMovieCell(CMovieCell&&) noexcept = default;
  CMovieCell& operator=(CMovieCell&&) noexcept = default;
  ~CMovieCell() override;
};

}  // namespace VESKA
