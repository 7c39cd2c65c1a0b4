// Where the structures that an index names stand, and which of them are lost.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "map/index_walk.h"

namespace VESKA::workshop {

class ItemPlacing {
 public:
  ItemPlacing(Walk& walk, const Index& index, const Room& room, const ItemKind& kind)
      : walk_(walk), index_(index), room_(room), kind_(kind) {}

  std::vector<Item> Place();

 private:
  void ReadItems();
  bool StartsWell(std::size_t i) const;
  bool EndsWell(std::size_t i, std::uint64_t end) const;
  void Relocate();
  std::size_t RelocateFrom(std::size_t first);
  void FindOverlaps();
  void FitLast(Item& item) const;
  void FindGap();
  void ReportLost();
  void ReportOrder();

  Walk& walk_;
  const Index& index_;
  const Room& room_;
  const ItemKind& kind_;
  std::vector<Item> items_;
};

}  // namespace VESKA::workshop
