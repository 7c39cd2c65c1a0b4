#include "map/map.h"

#include <algorithm>
#include <iterator>

namespace VESKA::workshop {
namespace {

constexpr PartInfo kParts[] = {
    {Part::kTable, "", {}, Role::kWhole},
    {Part::kFileHeader, "", kFields<tag_VMGI_MAT_HEADER>, Role::kHeader},
    {Part::kPlayListHeader, "", kFields<tag_PL_SRPTI>, Role::kHeader},
    {Part::kPlayLists, "lists", kFields<tag_PL_SRP>, Role::kRun, true, true},
    {Part::kMovieHeader, "", kFields<tag_M_AVFITI>, Role::kHeader},
    {Part::kMovieStreams, "streams", kFields<tag_M_VOB_STI>, Role::kRun, false, true},
    {Part::kVobIndex, "vobs", {}, Role::kIndex},
    {Part::kVob, "vobs", {}, Role::kWhole, true},
    {Part::kVobInfo, "", kFields<tag_M_VOB_GI>, Role::kHeader, false, true},
    {Part::kSeamless, "seamless_block", kFields<tag_SMLI>, Role::kHeader},
    {Part::kAudioGaps, "audio_gap_block", kFields<tag_AGAPI>, Role::kHeader},
    {Part::kTimeMap, "time_map", kFields<tag_TMAP_GI>, Role::kHeader},
    {Part::kTimeEntries, "time_map/times", kFields<tag_TM_ENT>, Role::kRun},
    {Part::kVobus, "time_map/vobus", kFields<tag_VOBU_ENT>, Role::kRun, false, true},
    {Part::kStillHeader, "", kFields<tag_S_AVFITI>, Role::kHeader},
    {Part::kStillStreams, "streams", kFields<tag_S_VOB_STI>, Role::kRun, false, true},
    {Part::kGroupIndex, "groups", {}, Role::kIndex},
    {Part::kStillGroup, "groups", {}, Role::kWhole, true},
    {Part::kGroupInfo, "", kFields<tag_S_VOG_GI>, Role::kHeader},
    {Part::kStillEntries, "entries", {}, Role::kEntries},
    {Part::kAudioStreams, "audio_streams", kFields<tag_S_A_ATR>, Role::kRun},
    {Part::kAudioIndex, "audio_groups", {}, Role::kIndex},
    {Part::kAudioGroup, "audio_groups", {}, Role::kWhole, true},
    {Part::kAudioGroupInfo, "", kFields<tag_S_AAG_GI>, Role::kHeader},
    {Part::kAudioEntries, "entries", kFields<tag_AA_ENT>, Role::kRun, false, true},
    {Part::kUserHeader, "", kFields<tag_UD_PGCITI>, Role::kHeader},
    {Part::kUserIndex, "chains", {}, Role::kIndex},
    {Part::kUserChain, "chains", {}, Role::kWhole},
    {Part::kChainHeader, "", kFields<tag_PGC_GI>, Role::kHeader},
    {Part::kPrograms, "programs", kFields<tag_PGI>, Role::kRun, false, true},
    {Part::kCellIndex, "cells", {}, Role::kIndex},
    {Part::kCell, "cells", {}, Role::kWhole, true},
    {Part::kMovieCellInfo, "", kFields<tag_M_C_GI>, Role::kHeader, false, true},
    {Part::kStillCellInfo, "", kFields<tag_S_C_GI>, Role::kHeader},
    {Part::kEntryPoints, "entries", {}, Role::kEntries},
    {Part::kTextHeader, "", kFields<tag_TXTDITI>, Role::kHeader},
    {Part::kTextIndex, "sets", {}, Role::kIndex},
    {Part::kTextSet, "sets", {}, Role::kEntries, true},
    {Part::kManufacturerHeader, "", kFields<tag_MNFITI>, Role::kHeader},
    {Part::kManufacturerIndex, "items", {}, Role::kIndex},
    {Part::kManufacturer, "items", {}, Role::kWhole, true},
    {Part::kManufacturerInfo, "", kFields<tag_A_MNFI>, Role::kHeader, false, true},
    {Part::kManufacturerData, "data", {}, Role::kBytes},
};
static_assert(std::size(kParts) == static_cast<std::size_t>(Part::kManufacturerData) + 1);

}  // namespace

const PartInfo& InfoOf(Part part) { return kParts[static_cast<std::size_t>(part)]; }

std::uint64_t RecordSize(Part part) {
  const auto fields = InfoOf(part).fields;
  return fields.empty() ? 1 : fields.back().offset + fields.back().width;
}

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
