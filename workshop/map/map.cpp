#include "map/map.h"

#include <algorithm>

namespace VESKA::workshop {

const Structure* ImageMap::TableOf(Table table) const {
  for (const Structure& structure : structures) {
    const bool is_table = structure.part == Part::kTable || structure.part == Part::kFileHeader;
    if (is_table && structure.table == table) return &structure;
  }
  return nullptr;
}

std::vector<const Structure*> ImageMap::ChildrenOf(const Structure& structure) const {
  const std::int32_t position = PositionOf(structure);
  std::vector<const Structure*> children;
  for (auto i = static_cast<std::size_t>(position) + 1; i < structures.size(); ++i) {
    if (structures[i].parent < position) break;
    if (structures[i].parent == position) children.push_back(&structures[i]);
  }
  return children;
}

const Structure* Find(std::span<const Structure* const> structures, Part part) {
  const auto found = std::find_if(structures.begin(), structures.end(),
                                  [part](const Structure* one) { return one->part == part; });
  return found != structures.end() ? *found : nullptr;
}

std::string ImageMap::PointerOf(std::int32_t position, std::uint32_t record) const {
  const Structure& structure = structures[static_cast<std::size_t>(position)];
  std::string pointer =
      PointerOf(structure.parent, structure.table, structure.part, structure.number);
  if (record != 0) pointer += "/" + std::to_string(record - 1);
  return pointer;
}

std::string ImageMap::PointerOf(std::int32_t parent, Table table, Part part,
                                std::uint32_t number) const {
  std::string pointer = parent < 0 ? workshop::PointerOf(table) : PointerOf(parent);
  if (const char* key = InfoOf(part).key; *key != '\0') pointer += std::string("/") + key;
  if (number != 0) pointer += "/" + std::to_string(number - 1);
  return pointer;
}

}  // namespace VESKA::workshop
