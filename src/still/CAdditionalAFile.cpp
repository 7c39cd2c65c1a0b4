#include <veska/CAdditionalAFile.h>

#include "frame/ItemIndex.inl"

namespace VESKA {

template class ItemIndex<tag_S_AAFI_GI, tag_S_AAGI_ITEM, &tag_S_AAGI_ITEM::S_AAGI_SA,
                         &tag_S_AAGI_ITEM::S_AAGI>;

CAdditionalAFile::~CAdditionalAFile() = default;

}  // namespace VESKA
