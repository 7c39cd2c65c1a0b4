// What the walks over the tables work with.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "map/builder.h"

namespace VESKA::workshop {

/// Where the structures of a table or a chain should end: by its own end address (0 for none), and
/// because something else starts there.
struct Room {
  std::uint64_t own = 0;
  std::uint64_t next = 0;
};

struct Walk {
  /// True when a table starts at `offset`, or the file ends there.
  bool IsTableStart(std::uint64_t offset) const {
    return std::binary_search(table_starts.begin(), table_starts.end(), offset);
  }
  /// Where the next table behind `offset` starts.
  std::uint64_t NextTable(std::uint64_t offset) const {
    const auto next = std::upper_bound(table_starts.begin(), table_starts.end(), offset);
    return next != table_starts.end() ? *next : claimed_end;
  }
  /// The room of a table that starts at `at`.
  Room RoomOf(std::uint64_t at, const FileNumber& end_address) const {
    const std::uint64_t own = at + end_address.value + 1;
    return {own <= claimed_end ? own : 0, NextTable(at)};
  }

  MapBuilder build;
  std::uint64_t claimed_end = 0;                 ///< of the file by its header, if that is credible
  std::vector<std::uint64_t> table_starts = {};  ///< of sound tables, and the file's end; ascending
  std::uint64_t end = 0;                         ///< of the table before
  std::uint64_t own_end = 0;  ///< of the table by its end address, 0 when that is no place
};

/// The walks over the tables that stand at `at`: they return the end of the last structure.
std::uint64_t MovieTable(Walk& walk, std::uint64_t at);
std::uint64_t StillTable(Walk& walk, std::uint64_t at);
std::uint64_t OriginalChain(Walk& walk, std::uint64_t at);
std::uint64_t UserChains(Walk& walk, std::uint64_t at);
std::uint64_t Texts(Walk& walk, std::uint64_t at);
std::uint64_t Manufacturers(Walk& walk, std::uint64_t at);

/// Compares the end address of what starts at `start` with the end of its last structure.
void CheckEnd(Walk& walk, const FileNumber& end_address, std::uint64_t start, std::uint64_t end);

}  // namespace VESKA::workshop
