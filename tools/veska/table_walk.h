// The walk over all tables of a file.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "index_walk.h"

namespace veska_tool {

class TableWalk : private IndexWalk {
 public:
  TableWalk(std::span<const unsigned char> bytes, ImageMap& map, Findings& findings)
      : IndexWalk(bytes, map, findings) {}

  void Walk();

 private:
  /// A table that the header names. Its walk returns the end of its last structure.
  struct Place {
    Table table;
    const char* field;  ///< the header's field that names it
    std::uint64_t (TableWalk::*walk)(std::uint64_t at);
    std::uint64_t least;  ///< the fewest bytes by which it can be told
  };
  static const Place kPlaces[];

  // Where the tables are: table_walk.cpp.
  FileNumber HeaderField(const char* name) const;
  void ReadTableStarts();
  bool IsInFile(std::uint64_t start) const;
  std::uint64_t NextTable(std::uint64_t offset) const;
  Room RoomOf(std::uint64_t at, const FileNumber& end_address) const;
  void WalkTables();
  void FindTable(const Place& place);
  bool TryTable(const Place& place, std::uint64_t at);
  bool TryBehind(const Place& place, const FileNumber& address);
  void ReportMissing(const Place& place, const FileNumber& address);
  void CheckEnd(const FileNumber& end_address, std::uint64_t start, std::uint64_t end);
  void FileHeader();
  void PlayLists();
  std::uint64_t PlayListCount(const FileNumber& count, const Room& room);
  void CheckFileEnd();

  // The movie and the still table: av_walk.cpp.
  std::uint64_t MovieTable(std::uint64_t at);
  std::uint64_t StillTable(std::uint64_t at);
  bool IsPresent(const FileNumber& presence, const Index& index, const Room& room);
  ItemKind Vobs();
  std::uint64_t Vob(const Item& item, std::uint32_t number);
  std::uint64_t TimeMap(std::uint64_t at, const Fit& fit);
  bool FitTimeMap(std::uint64_t at, const Fit& fit, FileNumber& times, FileNumber& vobus);
  struct GroupParts {
    Part group, info, entries;
  };
  template <class Info>
  ItemKind GroupsOf(const GroupParts& parts, const char* count_name, EntrySize size);
  ItemKind StillGroups();
  ItemKind AudioGroups();
  /// What stands behind the still groups.
  struct AudioPart {
    std::uint64_t table = 0;
    FileNumber streams;
    FileNumber presence;
    std::uint64_t streams_at = 0;  ///< where the streams stand, 0 when that cannot be told
    std::optional<std::uint64_t> index_at;
  };
  bool AudioStandsAsStated(std::uint64_t table, std::uint64_t streams_at, const Room& room);
  AudioPart FindAudioPart(std::uint64_t table, std::uint64_t from, const Room& room);
  Index AudioIndex(std::uint64_t table, std::uint64_t at) const;
  std::uint64_t WalkAudioPart(AudioPart part, std::optional<std::uint64_t> groups_end,
                              const Room& room);

  // Chains, texts and manufacturers: chain_walk.cpp.
  std::uint64_t OriginalChain(std::uint64_t at);
  std::uint64_t UserChains(std::uint64_t at);
  std::uint64_t Chain(std::uint64_t at, const Room& room);
  std::uint64_t EndOfChain(std::uint64_t at);
  std::uint64_t EndOfCell(std::uint64_t at, bool is_still);
  std::uint64_t Cell(const Item& item, std::uint32_t number);
  std::uint64_t Texts(std::uint64_t at);
  FileNumber TextSetSize(const Item& item) const;
  std::uint64_t EndOfTexts(std::uint64_t at, std::uint64_t end);
  std::uint64_t TextSet(const Item& item, std::uint32_t number);
  std::uint64_t Manufacturers(std::uint64_t at);
  std::vector<Item> InformationsOf(const Index& index, const Room& room);
  void Manufacturer(const Item& item, std::uint32_t number);

  std::uint64_t end_ = 0;      // of the table before
  std::uint64_t own_end_ = 0;  // of the table as its end address says, 0 when that is no place
};

/// The size in the file of a still VOB entry and of the entry points of both kinds of cell.
unsigned StillEntrySize(std::uint8_t type);
unsigned MovieEntryPointSize(std::uint8_t type);
unsigned StillEntryPointSize(std::uint8_t type);

/// True when the cell that stands at `at` is a still cell.
bool IsStillCell(const ImageBytes& image, std::uint64_t at);

}  // namespace veska_tool
