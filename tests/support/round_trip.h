/// What has to hold of every object, whatever was loaded into it and however it was edited.
#pragma once

#include <veska/veska.h>

#include <cstdint>
#include <vector>

namespace round_trip {

template <class Index, class Table>
bool HasEmptyItem(Index& index, Table table) {
  for (int i = 0; i < index.GetCount(); ++i) {
    if ((index[i]->*table).IsEmpty()) return true;
  }
  return false;
}

/// True when the short addresses of the texts and of the manufacturer records reach them all.
inline bool AddressesReach(VESKA::CVMGInfo& info) {
  VESKA::CTextDataMgr& texts = info.GetTextDataMgr();
  std::uint64_t end = sizeof(VESKA::tag_TXTDITI) + 4U * static_cast<unsigned>(texts.GetCount());
  for (int i = 0; i < texts.GetCount(); ++i) {
    const std::uint64_t size = texts[i]->IT_TXT.GetDataSize();
    if (end > 0xFFFF || size > 0xFFFF) return false;
    end += size;
  }
  VESKA::CMNFInfoTable& makers = info.GetMNFInfoTable();
  end = sizeof(VESKA::tag_MNFITI) + 2U * static_cast<unsigned>(makers.GetCount());
  for (int i = 0; i < makers.GetCount(); ++i) {
    if (end > 0xFFFF) return false;
    end += VESKA::kFileSize<VESKA::tag_A_MNFI> + makers[i]->A_MNFI.MNF_DATA_SZ;
  }
  return true;
}

/// True when nothing in the object is beyond what a file can say.
inline bool FitsFile(VESKA::CVMGInfo& info) {
  VESKA::CStillAVFileTable& still = info.GetStillAVFileTable();
  return AddressesReach(info) &&
         !HasEmptyItem(info.GetMovieAVFileTable().GetMovieAVFile(),
                       &VESKA::tag_M_VOBI_ITEM::M_VOBI) &&
         !HasEmptyItem(still.GetStillAVFile(), &VESKA::tag_S_VOGI_ITEM::S_VOGI) &&
         !HasEmptyItem(still.GetAdditionalAFile(), &VESKA::tag_S_AAGI_ITEM::S_AAGI);
}

/// The image of the object as it stands.
inline std::vector<unsigned char> ImageOf(VESKA::CVMGInfo& info) {
  std::vector<unsigned char> image(info.GetDataSize());
  info.GetData(image.data());
  return image;
}

/// Completes the object, writes it and loads it again. False when that yields another object or,
/// written once more, other bytes, although all that it holds can stand in a file.
inline bool Survives(VESKA::CVMGInfo& info) {
  info.AutoComplete();
  std::vector<unsigned char> image = ImageOf(info);
  VESKA::CVMGInfo again;
  if (!again.LoadFromMemory(image.data(), static_cast<unsigned long>(image.size()),
                            VESKA::CVMGInfo::kLoadAll) ||
      !(again == info)) {
    return !FitsFile(info);
  }
  return ImageOf(again) == image;
}

}  // namespace round_trip
