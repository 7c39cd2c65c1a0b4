// The walk over an index and what it names, the same for every index of the format.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "map_builder.h"

namespace veska_tool {

/// Where the structures of a table or a chain should end: by its own end address (0 for none), and
/// because something else starts there.
struct Room {
  std::uint64_t own = 0;
  std::uint64_t next = 0;
};

/// An index: a count and that many addresses.
struct Index {
  Part part;            ///< the index in the map
  Part item;            ///< what it names
  std::uint64_t least;  ///< the fewest bytes that one of them takes
  const char* address_name;
  FileNumber count;
  std::uint64_t largest;    ///< that the count can hold
  std::uint64_t start;      ///< of the index in the map
  std::uint64_t addresses;  ///< where they stand
  unsigned stride;          ///< from one address to the next
  unsigned width;           ///< of an address
  std::uint64_t base;       ///< what the addresses count from

  std::uint64_t Pointer(std::uint64_t i) const { return addresses + stride * i; }
};

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

class IndexWalk : protected MapBuilder {
 protected:
  using MapBuilder::MapBuilder;

  /// How the items of an index are read.
  struct ItemKind {
    /// Where the item ends by its own counts if it stands at `at`.
    std::function<std::uint64_t(const Item& item, std::uint64_t at)> end;
    /// Maps the item and returns where it ends.
    std::function<std::uint64_t(const Item& item, std::uint32_t number)> walk;
  };

  /// Maps an index and what it names. Returns the end of the last of them, and in `size`, when
  /// given, the size of all with the index; none when one of them is lost.
  std::uint64_t WalkIndex(Index index, const Room& room, const ItemKind& kind,
                          std::optional<std::uint64_t>* size = nullptr);

  /// True when an index can stand there: its addresses agree with each other, or at least name
  /// places behind them.
  bool IndexStands(const Index& index, std::uint64_t end);
  /// The count for which the first structure stands right behind the addresses and the others
  /// follow in order, none when there is no such count.
  std::optional<std::uint64_t> ImpliedCount(const Index& index, std::uint64_t end);
  /// How many blocks stand before an index, which `place(n)` gives for n of them: as stated, or, if
  /// no index can stand there, the one number for which one does.
  std::uint64_t BlocksBefore(const FileNumber& blocks, const Room& room,
                             const std::function<Index(std::uint64_t n)>& place);
  /// Maps an index without what it names. Returns how many addresses the file holds, of as many as
  /// the count says or the addresses imply.
  std::uint64_t AddIndex(const Index& index, const Room& room);

  /// True when the addresses from `first` on leave each item its fewest bytes, in order, up to
  /// `end`.
  bool IsOrderly(const Index& index, std::uint64_t first, std::uint64_t count, std::uint64_t end);
  std::uint64_t Address(const Index& index, std::uint64_t i) const;
  std::string AddressText(const Index& index, std::uint64_t address) const;
  bool IsTableStart(std::uint64_t offset) const;

  std::uint64_t claimed_end_ = 0;            // of the file as its header says, if that is credible
  std::vector<std::uint64_t> table_starts_;  // of sound tables, and the file's end; ascending

 private:
  bool AddressesInRange(const Index& index);
  std::uint64_t CountOf(const Index& index, const Room& room);
  std::vector<Item> ReadItems(const Index& index, const ItemKind& kind);
  void Relocate(const Index& index, std::vector<Item>& items, const Room& room,
                const ItemKind& kind);
  std::size_t RelocateFrom(std::size_t first, const Index& index, std::vector<Item>& items,
                           const Room& room, const ItemKind& kind);
  void FindOverlaps(const Index& index, std::vector<Item>& items, const Room& room);
  void FindGap(const Index& index, std::vector<Item>& items, const Room& room);
  void ReportLost(const Index& index, const std::vector<Item>& items);
  void ReportOrder(const Index& index, const std::vector<Item>& items);
  bool StartsWell(const Index& index, const std::vector<Item>& items, std::size_t i) const;
  bool EndsWell(const std::vector<Item>& items, std::size_t i, std::uint64_t end,
                const Room& room) const;
};

}  // namespace veska_tool
