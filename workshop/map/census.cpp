#include "map/census.h"

namespace VESKA::workshop {

Items ItemsOf(const ImageMap& map, Table table) {
  Items items;
  for (const Structure& structure : map.structures) {
    if (structure.table != table || !InfoOf(structure.part).is_item) continue;
    const bool is_run = InfoOf(structure.part).role == Role::kRun;
    items.all += is_run ? structure.count : 1;
    items.whole += is_run ? structure.count : structure.state == State::kWhole ? 1 : 0;
  }
  return items;
}

}  // namespace VESKA::workshop
