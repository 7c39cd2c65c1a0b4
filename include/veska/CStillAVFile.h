/// The still AV file information.
#pragma once

#include <veska/CStillVOG.h>
#include <veska/ItemIndex.h>
#include <veska/export.h>
#include <veska/records.h>

namespace VESKA {

/// One still VOB group of the index. It owns its table.
struct tag_S_VOGI_ITEM {
  std::uint32_t S_VOGI_SA = 0;  ///< start address from the enclosing table's first byte; derived
  CStillVOG S_VOGI;

  bool operator==(const tag_S_VOGI_ITEM&) const = default;
};

extern template class VESKA_API ItemIndex<tag_S_AVFI_GI, tag_S_VOGI_ITEM,
                                          &tag_S_VOGI_ITEM::S_VOGI_SA, &tag_S_VOGI_ITEM::S_VOGI>;

/// The index of every still VOB group of the disc; the operations are those of `ItemIndex`.
class VESKA_API CStillAVFile
    : public ItemIndex<tag_S_AVFI_GI, tag_S_VOGI_ITEM, &tag_S_VOGI_ITEM::S_VOGI_SA,
                       &tag_S_VOGI_ITEM::S_VOGI> {
 public:
  CStillAVFile() = default;
  CStillAVFile(const CStillAVFile&) = default;
  CStillAVFile& operator=(const CStillAVFile&) = default;
  CStillAVFile(CStillAVFile&&) noexcept = default;
  CStillAVFile& operator=(CStillAVFile&&) noexcept = default;
  ~CStillAVFile() override;
};

}  // namespace VESKA
