#include "images.h"

#include <veska/veska.h>

#include <cstring>
#include <random>

namespace {

constexpr int kSmallStructures = 60'000;
constexpr int kMostVobus = 0xFFFF;
constexpr int kVobusPerTimeEntry = 20;

VESKA::CVMGInfo NewFile() {
  VESKA::CVMGInfo info;
  std::memcpy(info.GetMAT().GetHeader().VMG_ID, "DVD_RTR_VMG0", 12);
  return info;
}

Image Finish(VESKA::CVMGInfo& info, int records) {
  info.AutoComplete();
  std::vector<unsigned char> bytes(info.GetDataSize());
  info.GetData(bytes.data());
  return {std::move(bytes), records};
}

void AddVob(VESKA::CVMGInfo& info, int vobus) {
  auto& map = info.GetMovieAVFileTable().GetMovieAVFile().AddNode()->M_VOBI.GetTimeMapTable();
  for (int i = 0; i < vobus; ++i) {
    if (i % kVobusPerTimeEntry == 0) map.AddTimeENNode()->number_3 = static_cast<unsigned>(i);
    VESKA::tag_VOBU_ENT* vobu = map.AddVobuENNode();
    vobu->number_0 = static_cast<std::uint8_t>(i);
    vobu->word_1 = static_cast<std::uint16_t>(15 << 10 | (200 + i % 300));
  }
}

void AddVobs(VESKA::CVMGInfo& info, int vobus, int vobs) {
  info.GetMovieAVFileTable().AddStreamNode();
  for (int i = 0; i < vobs; ++i) AddVob(info, vobus / vobs + (i < vobus % vobs ? 1 : 0));
}

/// A cell with so many short entry points and perhaps a long one behind them.
template <class Cell>
void FillCell(VESKA::CBaseCell* base, int shorts, bool has_long) {
  auto* cell = static_cast<Cell*>(base);
  for (int i = 0; i < shorts; ++i) cell->AddNode(VESKA::CELL_ENTRY_SHORT);
  if (has_long) cell->AddNode(VESKA::CELL_ENTRY_LONG)->EP_TY = 0x40;
}

void AddMovieCell(VESKA::CVMGInfo& info, int shorts, bool has_long) {
  FillCell<VESKA::CMovieCell>(info.GetOriginalPGC().AddCellNode(VESKA::CELL_MOVIE)->CI, shorts,
                              has_long);
}

void AddStillCell(VESKA::CVMGInfo& info, int shorts, bool has_long) {
  FillCell<VESKA::CStillCell>(info.GetOriginalPGC().AddCellNode(VESKA::CELL_STILL)->CI, shorts,
                              has_long);
}

}  // namespace

Image TypicalRecording() {
  constexpr int kVobus = 45'000;
  constexpr int kVobs = 12;
  unsigned char title[] = "A film in the evening";
  VESKA::CVMGInfo info = NewFile();
  AddVobs(info, kVobus, kVobs);
  for (int i = 0; i < kVobs; ++i) {
    AddMovieCell(info, 6, i % 3 == 0);
    info.GetOriginalPGC().AddPGNode()->C_Ns = 1;
    VESKA::CTextSet& texts = info.GetTextDataMgr().AddNode()->IT_TXT;
    texts.AddNode();
    texts.SetNode(0, {0x30, sizeof title, title});
  }
  return Finish(info, kVobus);
}

Image VobuEntries(int vobus) {
  VESKA::CVMGInfo info = NewFile();
  AddVobs(info, vobus, (vobus + kMostVobus - 1) / kMostVobus);
  return Finish(info, vobus);
}

Image SmallVobs() {
  VESKA::CVMGInfo info = NewFile();
  AddVobs(info, kSmallStructures, kSmallStructures);
  return Finish(info, kSmallStructures);
}

Image SmallCells() {
  VESKA::CVMGInfo info = NewFile();
  for (int i = 0; i < kSmallStructures; ++i) {
    (i % 4 == 3 ? AddStillCell : AddMovieCell)(info, i % 2, i % 16 == 0);
  }
  return Finish(info, kSmallStructures);
}

Image StillGroups() {
  constexpr int kGroups = 2'000;
  constexpr int kEntries = 200;
  VESKA::CVMGInfo info = NewFile();
  info.GetStillAVFileTable().AddVOBStreamNode();
  std::minstd_rand random;
  for (int group = 0; group < kGroups; ++group) {
    VESKA::CStillVOG& entries = info.GetStillAVFileTable().GetStillAVFile().AddNode()->S_VOGI;
    for (int i = 0; i < kEntries; ++i) {
      entries.AddNode()->S_VOB_ENT_TY = static_cast<std::uint8_t>(random() >> 10U & 0xC0U);
    }
  }
  return Finish(info, kGroups * kEntries);
}

Image Texts() {
  constexpr int kSets = 1'160;
  constexpr int kTexts = 9'300;
  unsigned char word[] = "recorded";
  VESKA::CVMGInfo info = NewFile();
  std::minstd_rand random;
  int left = kTexts;
  for (int set = kSets; set != 0; --set) {
    VESKA::CTextSet& texts = info.GetTextDataMgr().AddNode()->IT_TXT;
    const int count = left / set;
    left -= count;
    for (int i = 0; i < count; ++i) {
      const auto length = static_cast<std::uint8_t>(1 + (random() >> 10U) % 8);
      texts.AddNode();
      texts.SetNode(i, {0x30, length, word});
    }
  }
  return Finish(info, kTexts);
}
