#include <veska/CMovieAVFile.h>

#include "frame/ItemIndex.inl"

namespace VESKA {

template class ItemIndex<tag_M_AVFI_GI, tag_M_VOBI_ITEM, &tag_M_VOBI_ITEM::M_VOBI_SA,
                         &tag_M_VOBI_ITEM::M_VOBI>;

CMovieAVFile::~CMovieAVFile() = default;

}  // namespace VESKA
