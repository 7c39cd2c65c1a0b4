#include "image_map.h"

#include <iterator>

namespace veska_tool {
namespace {

using namespace VESKA;

constexpr PartInfo kParts[] = {{"", "", {}},
                               {"header", "", kFields<tag_VMGI_MAT_HEADER>},
                               {"header", "", kFields<tag_PL_SRPTI>},
                               {"play lists", "play list", kFields<tag_PL_SRP>},
                               {"header", "", kFields<tag_M_AVFITI>},
                               {"streams", "stream", kFields<tag_M_VOB_STI>},
                               {"VOB index", "", {}},
                               {"VOB", "", {}},
                               {"general information", "", kFields<tag_M_VOB_GI>},
                               {"seamless information", "", kFields<tag_SMLI>},
                               {"audio gaps", "", kFields<tag_AGAPI>},
                               {"time map", "", kFields<tag_TMAP_GI>},
                               {"time entries", "time entry", kFields<tag_TM_ENT>},
                               {"VOBU entries", "VOBU entry", kFields<tag_VOBU_ENT>},
                               {"header", "", kFields<tag_S_AVFITI>},
                               {"streams", "stream", kFields<tag_S_VOB_STI>},
                               {"group index", "", {}},
                               {"still group", "", {}},
                               {"general information", "", kFields<tag_S_VOG_GI>},
                               {"entries", "entry", {}},
                               {"audio streams", "audio stream", kFields<tag_S_A_ATR>},
                               {"audio group index", "", {}},
                               {"audio group", "", {}},
                               {"general information", "", kFields<tag_S_AAG_GI>},
                               {"entries", "entry", kFields<tag_AA_ENT>},
                               {"header", "", kFields<tag_UD_PGCITI>},
                               {"chain index", "", {}},
                               {"chain", "", {}},
                               {"header", "", kFields<tag_PGC_GI>},
                               {"programs", "program", kFields<tag_PGI>},
                               {"cell index", "", {}},
                               {"cell", "", {}},
                               {"general information", "", kFields<tag_M_C_GI>},
                               {"general information", "", kFields<tag_S_C_GI>},
                               {"entry points", "entry point", {}},
                               {"header", "", kFields<tag_TXTDITI>},
                               {"text set index", "", {}},
                               {"text set", "", {}},
                               {"header", "", kFields<tag_MNFITI>},
                               {"information index", "", {}},
                               {"manufacturer", "", {}},
                               {"general information", "", kFields<tag_A_MNFI>},
                               {"data", "", {}}};
static_assert(std::size(kParts) == static_cast<std::size_t>(Part::kManufacturerData) + 1);

}  // namespace

const PartInfo& InfoOf(Part part) { return kParts[static_cast<std::size_t>(part)]; }

std::uint64_t RecordSize(Part part) {
  const auto fields = InfoOf(part).fields;
  return fields.empty() ? 1 : fields.back().offset + fields.back().width;
}

bool ImageMap::IsLeaf(Part part) {
  switch (part) {
    case Part::kTable:
    case Part::kVob:
    case Part::kStillGroup:
    case Part::kAudioGroup:
    case Part::kUserChain:
    case Part::kCell:
    case Part::kManufacturer:
      return false;
    default:
      return true;
  }
}

std::string ImageMap::PathOf(std::int32_t position, std::uint32_t record) const {
  const Structure& structure = structures[static_cast<std::size_t>(position)];
  if (record == 0) {
    return PathOf(structure.parent, structure.table, structure.part, structure.number);
  }
  return PathOf(structure.parent) + " / " + InfoOf(structure.part).one + " " +
         std::to_string(record);
}

std::string ImageMap::PathOf(std::int32_t parent, Table table, Part part,
                             std::uint32_t number) const {
  if (part == Part::kTable || part == Part::kFileHeader) return NameOf(table);
  std::string path = (parent < 0 ? NameOf(table) : PathOf(parent)) + " / " + InfoOf(part).name;
  if (number != 0) path += " " + std::to_string(number);
  return path;
}

}  // namespace veska_tool
