/// Every record list of the library under the same names, for tests that go through them all.
#pragma once

#include <gtest/gtest.h>
#include <veska/veska.h>

#include <span>
#include <type_traits>

namespace VESKA {
namespace lists {

// One list of a table. `What` is the infix of the names of its operations; further arguments are
// those of adding a record.
#define VESKA_LIST(Name, Table_, What, Limit_, ...)                                 \
  struct Name {                                                                     \
    using Table = Table_;                                                           \
    static constexpr int kLimit = Limit_;                                           \
    static int Count(const Table& table) { return table.Get##What##Count(); }       \
    static auto* Get(Table& table, int i) { return table.Get##What##Node(i); }      \
    static auto* Add(Table& table) { return table.Add##What##Node(__VA_ARGS__); }   \
    static auto* Insert(Table& table, int i) {                                      \
      return table.Insert##What##Node(i __VA_OPT__(, ) __VA_ARGS__);                \
    }                                                                               \
    static bool Delete(Table& table, int i) { return table.Delete##What##Node(i); } \
  };

VESKA_LIST(AudioEntries, CStillAAG, , 255)
VESKA_LIST(AudioGroups, CAdditionalAFile, , 65535)
VESKA_LIST(MovieVOBs, CMovieAVFile, , 65535)
VESKA_LIST(StillGroups, CStillAVFile, , 65535)
VESKA_LIST(StillEntries, CStillVOG, , 255)
VESKA_LIST(PlayLists, CPlayListSRPTable, , 255)
VESKA_LIST(UserChains, CUserPGCTable, , 255)
VESKA_LIST(TextItems, CTextDataMgr, , 65535)
VESKA_LIST(Texts, CTextSet, , 65535)
VESKA_LIST(Manufacturers, CMNFInfoTable, , 65535)
VESKA_LIST(MovieEntryPoints, CMovieCell, , 65535, CELL_ENTRY_SHORT)
VESKA_LIST(LongMovieEntryPoints, CMovieCell, , 65535, CELL_ENTRY_LONG)
VESKA_LIST(StillEntryPoints, CStillCell, , 65535, CELL_ENTRY_SHORT)
VESKA_LIST(LongStillEntryPoints, CStillCell, , 65535, CELL_ENTRY_LONG)
VESKA_LIST(MovieStreams, CMovieAVFileTable, Stream, 255)
VESKA_LIST(StillStreams, CStillAVFileTable, VOBStream, 255)
VESKA_LIST(AudioStreams, CStillAVFileTable, AAStream, 255)
VESKA_LIST(TimeEntries, CTimeMapTable, TimeEN, 65535)
VESKA_LIST(VobuEntries, CTimeMapTable, VobuEN, 65535)
VESKA_LIST(Programs, CPGCInfo, PG, 255)
VESKA_LIST(MovieCells, CPGCInfo, Cell, 65535, CELL_MOVIE)
VESKA_LIST(StillCells, CPGCInfo, Cell, 65535, CELL_STILL)

#undef VESKA_LIST

using All = testing::Types<AudioEntries, AudioGroups, MovieVOBs, StillGroups, StillEntries,
                           PlayLists, UserChains, TextItems, Texts, Manufacturers, MovieEntryPoints,
                           LongMovieEntryPoints, StillEntryPoints, LongStillEntryPoints,
                           MovieStreams, StillStreams, AudioStreams, TimeEntries, VobuEntries,
                           Programs, MovieCells, StillCells>;

}  // namespace lists

/// The bytes of a record that a test may set at will: those that stand in the file. Of a text, not
/// its length, which its text would have to match; of a cell, the first byte of its header, since a
/// copy of a chain does not take over the cells' addresses.
template <class Record>
std::span<unsigned char> FreeBytes(Record* record) {
  auto* bytes = reinterpret_cast<unsigned char*>(record);
  if constexpr (std::is_same_v<Record, tag_C_ITEM>) {
    if (record->CI->GetType() == CELL_MOVIE) {
      bytes = reinterpret_cast<unsigned char*>(&static_cast<CMovieCell*>(record->CI)->GetHeader());
    } else {
      bytes = reinterpret_cast<unsigned char*>(&static_cast<CStillCell*>(record->CI)->GetHeader());
    }
    return {bytes, 1};
  } else if constexpr (std::is_same_v<Record, tag_IT_TXT>) {
    return {bytes, 1};
  } else if constexpr (kFields<Record>.empty()) {
    return {bytes, 2};  // a start address, or what all forms of a still VOB entry have
  } else {
    return {bytes, kFileSize<Record>};
  }
}

}  // namespace VESKA
