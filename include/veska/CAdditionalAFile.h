/// The additional audio file information.
#pragma once

#include <veska/CStillAAG.h>
#include <veska/ItemIndex.h>
#include <veska/export.h>
#include <veska/records.h>

namespace VESKA {

/// One additional audio group of the index. It owns its table.
struct tag_S_AAGI_ITEM {
  std::uint32_t S_AAGI_SA = 0;  ///< start address from the enclosing table's first byte; derived
  CStillAAG S_AAGI;

  bool operator==(const tag_S_AAGI_ITEM&) const = default;
};

extern template class VESKA_API ItemIndex<tag_S_AAFI_GI, tag_S_AAGI_ITEM,
                                          &tag_S_AAGI_ITEM::S_AAGI_SA, &tag_S_AAGI_ITEM::S_AAGI>;

/// The index of every additional audio group of the disc; the operations are those of `ItemIndex`.
class VESKA_API CAdditionalAFile
    : public ItemIndex<tag_S_AAFI_GI, tag_S_AAGI_ITEM, &tag_S_AAGI_ITEM::S_AAGI_SA,
                       &tag_S_AAGI_ITEM::S_AAGI> {
 public:
  CAdditionalAFile() = default;
  CAdditionalAFile(const CAdditionalAFile&) = default;
  CAdditionalAFile& operator=(const CAdditionalAFile&) = default;
  CAdditionalAFile(CAdditionalAFile&&) noexcept = default;
  CAdditionalAFile& operator=(CAdditionalAFile&&) noexcept = default;
  ~CAdditionalAFile() override;
};

}  // namespace VESKA
