// How many of the items of a table are there, and how many of them whole.
#pragma once

#include <cstdint>

#include "map/map.h"

namespace VESKA::workshop {

struct Items {
  std::uint32_t whole = 0;
  std::uint32_t all = 0;
};

/// The play lists, VOBs, groups, cells, text sets or manufacturer records of a table.
Items ItemsOf(const ImageMap& map, Table table);

}  // namespace VESKA::workshop
