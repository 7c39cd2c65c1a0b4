/// The movie AV file information.
#pragma once

#include <veska/CMovieVOB.h>
#include <veska/ItemIndex.h>
#include <veska/export.h>
#include <veska/records.h>

namespace VESKA {

/// One movie VOB of the index. It owns its table.
struct tag_M_VOBI_ITEM {
  std::uint32_t M_VOBI_SA = 0;  ///< start address from the enclosing table's first byte; derived
  CMovieVOB M_VOBI;

  bool operator==(const tag_M_VOBI_ITEM&) const = default;
};

extern template class VESKA_API ItemIndex<tag_M_AVFI_GI, tag_M_VOBI_ITEM,
                                          &tag_M_VOBI_ITEM::M_VOBI_SA, &tag_M_VOBI_ITEM::M_VOBI>;

/// The index of every movie VOB of the disc; the operations are those of `ItemIndex`.
class VESKA_API CMovieAVFile
    : public ItemIndex<tag_M_AVFI_GI, tag_M_VOBI_ITEM, &tag_M_VOBI_ITEM::M_VOBI_SA,
                       &tag_M_VOBI_ITEM::M_VOBI> {
 public:
  CMovieAVFile() = default;
  CMovieAVFile(const CMovieAVFile&) = default;
  CMovieAVFile& operator=(const CMovieAVFile&) = default;
  CMovieAVFile(CMovieAVFile&&) noexcept = default;
  CMovieAVFile& operator=(CMovieAVFile&&) noexcept = default;
  ~CMovieAVFile() override;
};

}  // namespace VESKA
