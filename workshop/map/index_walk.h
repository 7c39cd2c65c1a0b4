// The walk over an index and what it names, the same for every index of the format.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "map/walk.h"

namespace VESKA::workshop {

/// An index: a count and that many addresses.
struct Index {
  IndexInfo info;
  FileNumber count;
  std::uint64_t start;       ///< of the index in the map
  std::uint64_t addresses;   ///< where they stand
  std::uint64_t base;        ///< what they count from
  std::uint64_t behind = 0;  ///< where what it names can start: set as it is mapped

  /// From one address to the next.
  unsigned Stride() const { return info.width + info.size_width; }
  std::uint64_t Pointer(std::uint64_t i) const { return addresses + Stride() * i; }
};
/// The index that stands at `at` and is counted in the header at `header`, if not by itself.
Index IndexAt(const Walk& walk, Part part, std::uint64_t header, std::uint64_t at);

/// One of the structures that an index names.
struct Item {
  std::uint64_t pointer = 0;  ///< where its address stands
  std::uint64_t stated = 0;   ///< its address, from the start of the file
  std::uint64_t at = 0;       ///< where it is read
  std::uint64_t end = 0;      ///< where it ends by its own counts
  Fit fit;
  Room room;  ///< from where it is read to where the next one is
  bool lost = false;
};

/// How the items of an index are read.
struct ItemKind {
  /// Where the item ends by its own counts if it stands at `at`.
  std::function<std::uint64_t(const Item& item, std::uint64_t at)> end;
  /// Maps the item and returns where it ends.
  std::function<std::uint64_t(const Item& item, std::uint32_t number)> walk;
};

/// Maps an index and what it names. Returns the end of the last of them, and in `size`, when given,
/// the size of all with the index: up to the end of the file when it ends in them, none when one of
/// them is lost.
std::uint64_t WalkIndex(Walk& walk, Index index, const Room& room, const ItemKind& kind,
                        std::optional<std::uint64_t>* size = nullptr);

/// Maps an index without what it names. Leaves in it as many addresses as the file holds, of as
/// many as there are.
void AddIndex(Walk& walk, Index& index, const Room& room);
/// Where the structures that a mapped index names stand, and which of them are lost.
std::vector<Item> PlaceItems(Walk& walk, const Index& index, const Room& room,
                             const ItemKind& kind);
/// The addresses of a mapped index, which is all that is known of its items at first.
std::vector<Item> ItemsOf(Walk& walk, const Index& index);

/// The count for which the first structure stands right behind the addresses and the others follow
/// in order, none when there is no such count.
std::optional<std::uint64_t> ImpliedCount(Walk& walk, const Index& index, std::uint64_t end);
/// How many blocks stand before an index, which `place(n)` gives for n of them: as stated, or, if
/// no index can stand there, the one number for which one does.
std::uint64_t BlocksBefore(Walk& walk, const FileNumber& blocks, const Room& room,
                           const std::function<Index(std::uint64_t n)>& place);
/// True when the addresses from `first` on leave each structure its fewest bytes, up to `end`.
bool IsOrderly(Walk& walk, const Index& index, std::uint64_t first, std::uint64_t count,
               std::uint64_t end);

/// An address from the start of the file; as it stands, for people.
std::uint64_t Address(const Walk& walk, const Index& index, std::uint64_t i);
std::string AddressText(const Index& index, std::uint64_t address);

}  // namespace VESKA::workshop
