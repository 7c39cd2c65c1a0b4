// What holds for any object, over random ones. The seeds are fixed.
#include "image_builder.h"
#include "lists.h"
#include "round_trip.h"

namespace VESKA {
namespace {

void Scramble(std::span<unsigned char> bytes, Random& random) {
  for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random.Below(256));
}
template <class Record>
void ScrambleRecord(Record& record, Random& random) {
  Scramble({reinterpret_cast<unsigned char*>(&record), sizeof record}, random);
}

/// Adds, inserts or deletes one record, of which at least `least` are kept. Returns a new one.
template <class List>
auto Edit(typename List::Table& table, Random& random, int least = 0) {
  const int count = List::Count(table);
  const int i = static_cast<int>(random.Below(static_cast<std::size_t>(count) + 1));
  const unsigned what = count > 12 ? 2 : random.Below(4);
  if (what == 2 && count > least) List::Delete(table, i);
  auto* record = what == 1 && i < count ? List::Insert(table, i) : nullptr;
  if (what == 0 || what == 3) record = List::Add(table);
  if (record != nullptr) Scramble(FreeBytes(record), random);
  return record;
}

template <class Short, class Long>
void EditCell(typename Short::Table& cell, Random& random) {
  const auto C_TY = cell.GetHeader().C_TY;
  ScrambleRecord(cell.GetHeader(), random);
  if (random.Below(2) == 0) cell.GetHeader().C_TY = C_TY;
  auto* entry = random.Below(2) == 0 ? Edit<Short>(cell, random) : Edit<Long>(cell, random);
  if (entry == nullptr) return;
  entry->EP_TY &= 0x3F;
  if (entry->block == nullptr) return;
  entry->EP_TY |= static_cast<std::uint8_t>(0x40 * (1 + random.Below(3)));
  Scramble({+entry->block, kEntryBlockSize}, random);
}

void EditChain(CPGCInfo& chain, Random& random) {
  if (tag_PGI* program = Edit<lists::Programs>(chain, random)) {
    program->cell_point.cell = static_cast<std::uint16_t>(random.Below(14));
  }
  Edit<lists::MovieCells>(chain, random);
  Edit<lists::StillCells>(chain, random);
  const auto place = [&random] { return static_cast<int>(random.Below(6)); };
  chain.MovePGNodes(place(), place(), place() - 3);
  chain.MoveCellNodes(place(), place(), place() - 3);
  if (tag_C_ITEM* item = chain.GetCellNode(place())) {
    if (item->CI->GetType() == CELL_MOVIE) {
      EditCell<lists::MovieEntryPoints, lists::LongMovieEntryPoints>(
          static_cast<CMovieCell&>(*item->CI), random);
    } else {
      EditCell<lists::StillEntryPoints, lists::LongStillEntryPoints>(
          static_cast<CStillCell&>(*item->CI), random);
    }
  }
}

void EditHeader(CVMGI_MAT& mat, Random& random) {
  tag_VMGI_MAT_HEADER& header = mat.GetHeader();
  ScrambleRecord(header, random);
  std::memcpy(header.VMG_ID, "DVD_RTR_VMG0", sizeof header.VMG_ID);
  header.cell_point_70.cell = static_cast<std::uint16_t>(random.Below(8));
  if (random.Below(2) == 0) header.cell_point_85.cell = 0xFFFF;
  CPlayListSRPTable& play_lists = mat.GetPlayListTable();
  if (tag_PL_SRP* play_list = Edit<lists::PlayLists>(play_lists, random)) {
    play_list->cell_point.cell = static_cast<std::uint16_t>(random.Below(8));
  }
  play_lists.SwapNode(0, static_cast<int>(random.Below(4)));
}

void EditMovie(CMovieAVFileTable& table, Random& random) {
  Edit<lists::MovieStreams>(table, random);
  Edit<lists::MovieVOBs>(table.GetMovieAVFile(), random);
  for (int i = 0; i < table.GetMovieAVFile().GetCount(); ++i) {
    CMovieVOB& vob = table.GetMovieAVFile()[i]->M_VOBI;
    if (!vob.IsEmpty() && random.Below(3) != 0) continue;
    ScrambleRecord(vob.GetHeader(), random);
    if (vob.GetHeader().HasSeamlessInfo()) ScrambleRecord(vob.GetSeamlessInfo(), random);
    ScrambleRecord(vob.GetAudioGaps(), random);  // that the file may not have
    vob.GetTimeMapTable().SetTimeOffset(static_cast<unsigned short>(random.Below(0x10000)));
    vob.GetTimeMapTable().SetAddrOffset(random.Below(0x10000000));
    Edit<lists::TimeEntries>(vob.GetTimeMapTable(), random);
    while (vob.GetTimeMapTable().GetVobuENCount() == 0 || random.Below(4) != 0) {
      Edit<lists::VobuEntries>(vob.GetTimeMapTable(), random, 1);
    }
  }
}

template <class Groups, class Entries, auto Group>
void EditGroups(typename Groups::Table& index, Random& random) {
  Edit<Groups>(index, random);
  for (int i = 0; i < index.GetCount(); ++i) {
    auto& group = index[i]->*Group;
    ScrambleRecord(group.GetHeader(), random);
    while (group.IsEmpty() || random.Below(3) == 0) Edit<Entries>(group, random, 1);
  }
}

void EditStill(CStillAVFileTable& table, Random& random) {
  Edit<lists::StillStreams>(table, random);
  Edit<lists::AudioStreams>(table, random);
  EditGroups<lists::StillGroups, lists::StillEntries, &tag_S_VOGI_ITEM::S_VOGI>(
      table.GetStillAVFile(), random);
  EditGroups<lists::AudioGroups, lists::AudioEntries, &tag_S_AAGI_ITEM::S_AAGI>(
      table.GetAdditionalAFile(), random);
}

void EditTexts(CTextDataMgr& texts, Random& random) {
  texts.SetCharSet(static_cast<unsigned char>(random.Below(256)));
  Edit<lists::TextItems>(texts, random);
  for (int i = 0; i < texts.GetCount(); ++i) {
    CTextSet& set = texts[i]->IT_TXT;
    Edit<lists::Texts>(set, random);
    Bytes text(random.Below(200));
    Scramble(text, random);
    set.SetNode(static_cast<int>(random.Below(4)),
                {1, static_cast<std::uint8_t>(text.size()), text.data()});
  }
}

void EditManufacturers(CMNFInfoTable& table, Random& random) {
  Bytes data(32 + random.Below(2000));
  Scramble(data, random);
  table.SetLastMNFID(data.data());
  Edit<lists::Manufacturers>(table, random);
  tag_A_MNFI value{};
  ScrambleRecord(value, random);
  value.MNF_DATA = data.data();
  value.MNF_DATA_SZ = static_cast<std::uint32_t>(data.size());
  table.SetNode(static_cast<int>(random.Below(4)), value);
}

/// A step of a host's that leaves an object that a file can hold once it is complete.
void EditSomewhere(CVMGInfo& info, Random& random) {
  CUserPGCTable& user_chains = info.GetUserPGCTable();
  switch (random.Below(7)) {
    case 0:
      return EditHeader(info.GetMAT(), random);
    case 1:
      return EditMovie(info.GetMovieAVFileTable(), random);
    case 2:
      return EditStill(info.GetStillAVFileTable(), random);
    case 3:
      return EditChain(info.GetOriginalPGC(), random);
    case 4:
      return EditTexts(info.GetTextDataMgr(), random);
    case 5:
      return EditManufacturers(info.GetMNFInfoTable(), random);
    default:
      Edit<lists::UserChains>(user_chains, random);
  }
  for (int i = 0; i < user_chains.GetCount(); ++i) EditChain(user_chains[i]->UD_PGCI, random);
}

class Property : public testing::TestWithParam<unsigned> {};
INSTANTIATE_TEST_SUITE_P(Seeds, Property, testing::Range(1U, 11U));

TEST_P(Property, AnyEditsCompletedAndWrittenReadBackEqual) {
  Random random(GetParam());
  CVMGInfo info;
  EditHeader(info.GetMAT(), random);
  for (int round = 0; round < 30; ++round) {
    for (unsigned edits = 1 + random.Below(8); edits > 0; --edits) EditSomewhere(info, random);
    Written(info);  // stale as it is, within its size and without a change
    ASSERT_TRUE(round_trip::Survives(info)) << round;
    ASSERT_TRUE(round_trip::FitsFile(info)) << round;
    const Bytes image = Completed(info);
    CVMGInfo again;
    ASSERT_TRUE(Load(again, image)) << round;
    ASSERT_EQ(Completed(again), image) << round;
    if (round % 3 == 0) info = again;  // and on with one that was loaded
  }
}

TEST_P(Property, CopiesShareNothing) {
  Random random(GetParam());
  CVMGInfo info, copy;
  for (int round = 0; round < 10; ++round) {
    for (int edits = 0; edits < 10; ++edits) EditSomewhere(info, random);
    copy = info;
    const Bytes image = Completed(info);
    ASSERT_EQ(Completed(copy), image);
    ASSERT_TRUE(copy == info);
    for (int edits = 0; edits < 10; ++edits) EditSomewhere(info, random);
    ASSERT_EQ(Completed(copy), image);
    const Bytes edited = Completed(info);
    CVMGInfo other(copy);
    copy.Clear();
    for (int edits = 0; edits < 10; ++edits) EditSomewhere(copy, random);
    ASSERT_EQ(Completed(info), edited);
    ASSERT_EQ(Completed(other), image);
  }
}

}  // namespace
}  // namespace VESKA
