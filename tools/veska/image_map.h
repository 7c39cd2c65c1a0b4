// Which structure lies where in a file, however damaged the file is.
#pragma once

#include <veska/layouts.h>

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "findings.h"
#include "image_bytes.h"

namespace veska_tool {

/// What a structure is.
enum class Part : unsigned char {
  kTable,       ///< a whole table: the structures below belong to one
  kFileHeader,  ///< in no table
  kPlayListHeader,
  kPlayLists,
  kMovieHeader,
  kMovieStreams,
  kVobIndex,
  kVob,
  kVobInfo,
  kSeamless,
  kAudioGaps,
  kTimeMap,
  kTimeEntries,
  kVobus,
  kStillHeader,
  kStillStreams,
  kGroupIndex,
  kStillGroup,
  kGroupInfo,
  kStillEntries,
  kAudioStreams,
  kAudioIndex,
  kAudioGroup,
  kAudioGroupInfo,
  kAudioEntries,
  kUserHeader,
  kUserIndex,
  kUserChain,
  kChainHeader,
  kPrograms,
  kCellIndex,
  kCell,
  kMovieCellInfo,
  kStillCellInfo,
  kEntryPoints,
  kTextHeader,
  kTextIndex,
  kTextSet,
  kManufacturerHeader,
  kManufacturerIndex,
  kManufacturer,
  kManufacturerInfo,
  kManufacturerData
};

/// The name of a part, that of one of its records where they count, and the fields of its record
/// where it is one record or several of one length.
struct PartInfo {
  const char* name;
  const char* one;
  std::span<const VESKA::Field> fields;
};
const PartInfo& InfoOf(Part part);
/// The size of a part's record in the file; 1 for parts that are runs of bytes.
std::uint64_t RecordSize(Part part);

/// How far a structure can be relied on.
enum class State : unsigned char {
  kWhole,
  kCut,       ///< the file ends in it: what is there is right as far as it goes
  kDoubtful,  ///< its counts contradict where the next structure starts, so its end is not known
  kLost       ///< where it stands is not known
};

/// One structure of a file. Those made of others come before what they are made of.
struct Structure {
  Table table;
  Part part;
  State state = State::kWhole;
  std::uint32_t number = 0;   ///< among its like, from 1; 0 when there is only one
  std::int32_t parent = -1;   ///< the position of the structure that it belongs to, -1 for none
  std::uint32_t count = 1;    ///< how many records, entries or addresses of it are in the file
  std::uint32_t counted = 1;  ///< how many there should be
  std::uint64_t offset = 0;   ///< in the file
  std::uint64_t size = 0;     ///< as far as the file goes; 0 when lost
};

/// The structures of a file.
class ImageMap {
 public:
  std::vector<Structure> structures;

  /// Where a structure belongs: "movie table / VOB 3 / time map". With a number, where its record
  /// of that number does: "play list table / play list 2".
  std::string PathOf(std::int32_t position, std::uint32_t record = 0) const;
  /// The path of a part of a structure that need not be in the map.
  std::string PathOf(std::int32_t parent, Table table, Part part, std::uint32_t number = 0) const;
  /// True when the structure is not made of others, so that its bytes are its own.
  static bool IsLeaf(Part part);
};

/// Maps a file of any bytes in time and memory proportional to their number, and reports what
/// contradicts itself in addresses, counts and sizes.
///
/// A count or an address is taken as it stands, unless it contradicts what surrounds it and one
/// other value makes everything fit: then that value is used and reported as the right one.
ImageMap MapImage(std::span<const unsigned char> bytes, Findings& findings);

}  // namespace veska_tool
