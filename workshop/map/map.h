// Which structure lies where in a file, however damaged the file is.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "map/findings.h"
#include "map/parts.h"

namespace VESKA::workshop {

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

  std::int32_t PositionOf(const Structure& structure) const {
    return static_cast<std::int32_t>(&structure - structures.data());
  }
  const Structure& ParentOf(const Structure& structure) const {
    return structures[static_cast<std::size_t>(structure.parent)];
  }
  /// The structure that is a whole table, or the header; null when it is not in the file.
  const Structure* TableOf(Table table) const;
  /// What a structure is made of, in the order of the file.
  std::vector<const Structure*> ChildrenOf(const Structure& structure) const;

  /// The place of a structure in the file's JSON document: "/movie/vobs/2/time_map". With a number,
  /// from 1, that of its record: "/play_lists/lists/1".
  std::string PointerOf(std::int32_t position, std::uint32_t record = 0) const;
  std::string PointerOf(const Structure& structure, std::uint32_t record = 0) const {
    return PointerOf(PositionOf(structure), record);
  }
  /// The place of a part of a structure that need not be in the map.
  std::string PointerOf(std::int32_t parent, Table table, Part part,
                        std::uint32_t number = 0) const;
  /// True when the structure is not made of others, so that its bytes are its own.
  static bool IsLeaf(Part part) { return InfoOf(part).role != Role::kWhole; }
};

/// The first of the structures that is such a part; null when none is.
const Structure* Find(std::span<const Structure* const> structures, Part part);

/// Maps a file of any bytes in time and memory proportional to their number, and reports what
/// contradicts itself in addresses, counts and sizes.
///
/// A count or an address is taken as it stands, unless it contradicts what surrounds it and one
/// other value makes everything fit: then that value is used and reported as the right one.
ImageMap MapImage(std::span<const unsigned char> bytes, Findings& findings);

/// The bytes of a file, which are not owned, with its map and what was found in it.
struct MappedFile {
  /// Keeps `limit` findings of each code.
  MappedFile(std::span<const unsigned char> bytes, std::size_t limit)
      : image(bytes), findings(limit), map(MapImage(bytes, findings)) {}

  ImageBytes image;
  Findings findings;
  ImageMap map;
};

}  // namespace VESKA::workshop
