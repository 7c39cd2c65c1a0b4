/// The still cell.
#pragma once

#include <veska/CellOf.h>
#include <veska/export.h>

namespace VESKA {

/// A cell of still pictures: 8 bytes and 2 or 130 for each entry point. The operations are those of
/// `CellOf`.
class VESKA_API CStillCell : public CellOf<tag_S_C_GI, tag_S_C_EPI, CELL_STILL> {
 public:
  CStillCell() = default;
  CStillCell(const CStillCell&) = default;
  CStillCell& operator=(const CStillCell&) = default;
  CStillCell(CStillCell&&) noexcept = default;
  CStillCell& operator=(CStillCell&&) noexcept = default;
  ~CStillCell() override;
};

}  // namespace VESKA
