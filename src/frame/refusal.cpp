// What is wrong with an object whose image does not read back. None of this runs where it does.
#include <veska/CVMGInfo.h>

#include <algorithm>
#include <cstdint>
#include <functional>

#include "frame/image.h"
#include "pgc/cells.h"

namespace VESKA {
namespace {

/// A record that would be lost; none.
struct Lost {
  FailureList list = FailureList::kNone;
  int index = -1;

  explicit operator bool() const { return index >= 0; }
  Lost Or(Lost other) const { return index >= 0 ? *this : other; }
};

/// The first record that is not read back as it is, or the one behind them all where more are.
template <class Range, class Equal = std::equal_to<>>
Lost FirstUnlike(FailureList list, const Range& range, const Range& read, Equal equal = {}) {
  const auto [at, read_at] =
      std::mismatch(range.begin(), range.end(), read.begin(), read.end(), equal);
  if (at == range.end() && read_at == read.end()) return {};
  return {list, static_cast<int>(at - range.begin())};
}

/// The first item without entries: it takes no bytes, so its address names what follows.
template <auto Table, class Index>
Lost FirstEmpty(FailureList list, const Index& index) {
  const auto items = index.Items();
  const auto is_empty = [](const auto& item) { return (item.*Table).IsEmpty(); };
  const auto at = std::find_if(items.begin(), items.end(), is_empty);
  if (at == items.end()) return {};
  return {list, static_cast<int>(at - items.begin())};
}

Lost FindLost(const CVMGI_MAT& mat, const CVMGI_MAT& read) {
  return FirstUnlike(FailureList::kPlayLists, mat.GetPlayListTable().PlayLists(),
                     read.GetPlayListTable().PlayLists());
}

Lost FindLost(const CMovieAVFileTable& table, const CMovieAVFileTable& read) {
  const CMovieAVFile& vobs = table.GetMovieAVFile();
  return FirstEmpty<&tag_M_VOBI_ITEM::M_VOBI>(FailureList::kMovieVobs, vobs)
      .Or(FirstUnlike(FailureList::kMovieStreams, table.Streams(), read.Streams()))
      .Or(FirstUnlike(FailureList::kMovieVobs, vobs.Items(), read.GetMovieAVFile().Items()));
}

Lost FindLost(const CStillAVFileTable& table, const CStillAVFileTable& read) {
  const CStillAVFile& groups = table.GetStillAVFile();
  const CAdditionalAFile& audio = table.GetAdditionalAFile();
  return FirstEmpty<&tag_S_VOGI_ITEM::S_VOGI>(FailureList::kStillGroups, groups)
      .Or(FirstEmpty<&tag_S_AAGI_ITEM::S_AAGI>(FailureList::kAudioGroups, audio))
      .Or(FirstUnlike(FailureList::kStillStreams, table.VOBStreams(), read.VOBStreams()))
      .Or(FirstUnlike(FailureList::kStillGroups, groups.Items(), read.GetStillAVFile().Items()))
      .Or(FirstUnlike(FailureList::kAudioStreams, table.AAStreams(), read.AAStreams()))
      .Or(FirstUnlike(FailureList::kAudioGroups, audio.Items(), read.GetAdditionalAFile().Items()));
}

Lost FindLost(const CPGCInfo& chain, const CPGCInfo& read) {
  const auto are_equal = [](const tag_C_ITEM& a, const tag_C_ITEM& b) {
    return StandTheSame(a, b);
  };
  return FirstUnlike(FailureList::kPrograms, chain.Programs(), read.Programs())
      .Or(FirstUnlike(FailureList::kCells, chain.Cells(), read.Cells(), are_equal));
}

Lost FindLost(const CUserPGCTable& table, const CUserPGCTable& read) {
  return FirstUnlike(FailureList::kUserChains, table.Items(), read.Items());
}

Lost FindLost(const CTextDataMgr& texts, const CTextDataMgr& read) {
  return FirstUnlike(FailureList::kTextItems, texts.Items(), read.Items());
}

Lost FindLost(const CMNFInfoTable& table, const CMNFInfoTable& read) {
  return FirstUnlike(FailureList::kManufacturers, table.Items(), read.Items());
}

}  // namespace

void CVMGInfo::BlameRecord(const unsigned char* image, unsigned long size) {
  std::uint64_t budget = std::uint64_t{size} * kBytesPerImageByte;
  const ImageReader reader(image, size, &budget);
  FailureTable unreadable = FailureTable::kNone;
  const auto read = [&](auto& table, FailureTable name, std::uint32_t address) {
    try {
      table.Read(reader.At(address));
    } catch (const ImageError&) {
      if (unreadable == FailureTable::kNone) unreadable = name;
    }
  };
  const auto read_any = [&](auto& table, FailureTable name, std::uint32_t address) {
    if (address != 0) read(table, name, address);
  };
  CVMGInfo other;
  const tag_VMGI_MAT_HEADER& header = mat_.GetHeader();
  read(other.mat_, FailureTable::kPlayLists, 0);
  read_any(other.movie_, FailureTable::kMovie, header.M_AVFIT_SA);
  read_any(other.still_, FailureTable::kStill, header.S_AVFIT_SA);
  read(other.original_, FailureTable::kOriginalChain, header.ORG_PGCI_SA);
  read_any(other.user_chains_, FailureTable::kUserChains, header.UD_PGCIT_SA);
  read_any(other.texts_, FailureTable::kTexts, header.TXTDT_MG_SA);
  read_any(other.manufacturers_, FailureTable::kManufacturers, header.MNFIT_SA);
  // Here another kind of cell is the fault of the cell, and not of what points to it.
  other.ConvertCellPoints(original_);

  failure_ = {.kind = FailureKind::kWouldNotReadBack};
  const auto blame = [this](FailureTable name, const auto& table, const auto& again) {
    if (failure_.table != FailureTable::kNone) return;
    const Lost lost = FindLost(table, again);
    failure_.list = lost.list;
    failure_.index = lost.index;
    if (lost || !(table == again)) failure_.table = name;
  };
  if (!(header == other.mat_.GetHeader())) failure_.table = FailureTable::kHeader;
  blame(FailureTable::kPlayLists, mat_, other.mat_);
  blame(FailureTable::kMovie, movie_, other.movie_);
  blame(FailureTable::kStill, still_, other.still_);
  blame(FailureTable::kOriginalChain, original_, other.original_);
  blame(FailureTable::kUserChains, user_chains_, other.user_chains_);
  blame(FailureTable::kTexts, texts_, other.texts_);
  blame(FailureTable::kManufacturers, manufacturers_, other.manufacturers_);
  // One that counts records which are not there may be equal as far as it is read.
  if (failure_.table == FailureTable::kNone) failure_.table = unreadable;
}

void CVMGInfo::BlamePadding(const CVMGInfo& completed) {
  failure_ = {.kind = FailureKind::kPadding};
  std::int64_t most = 0;
  const auto blame = [&](FailureTable name, const auto& table, const auto& without) {
    const auto padding = static_cast<std::int64_t>(table.GetDataSize()) -
                         static_cast<std::int64_t>(without.GetDataSize());
    if (padding <= most) return;
    most = padding;
    failure_.table = name;
  };
  blame(FailureTable::kPlayLists, mat_, completed.mat_);
  blame(FailureTable::kMovie, movie_, completed.movie_);
  blame(FailureTable::kStill, still_, completed.still_);
  blame(FailureTable::kUserChains, user_chains_, completed.user_chains_);
  blame(FailureTable::kTexts, texts_, completed.texts_);
  blame(FailureTable::kManufacturers, manufacturers_, completed.manufacturers_);
}

}  // namespace VESKA
