#include <veska/CStillAVFile.h>

#include "frame/ItemIndex.inl"

namespace VESKA {

template class ItemIndex<tag_S_AVFI_GI, tag_S_VOGI_ITEM, &tag_S_VOGI_ITEM::S_VOGI_SA,
                         &tag_S_VOGI_ITEM::S_VOGI>;

CStillAVFile::~CStillAVFile() = default;

}  // namespace VESKA
