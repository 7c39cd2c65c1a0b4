#include <veska/records.h>

#include <algorithm>

#include "map/sizes.h"
#include "salvage/kept.h"

namespace VESKA::workshop {
namespace {

using Children = std::vector<const Structure*>;

/// What every table is kept with.
struct Keeper {
  Bytes Copy(std::uint64_t offset, std::uint64_t size) const;
  template <class Record>
  Bytes Header(const Structure* table) const;
  Children ChildrenOf(Table table) const;
  void Lose(const Structure& structure, const std::string& what = "lost") const;
  Bytes Run(const Children& children, Part part, const char* what) const;
  template <class Item, class KeepOne>
  std::vector<Item> Items(const Children& children, Part part, const char* what,
                          KeepOne keep) const;

  const DamagedFile& file;
  Losses& losses;
};

Bytes Keeper::Copy(std::uint64_t offset, std::uint64_t size) const {
  const auto bytes = file.image.At(offset, size);
  return {bytes.begin(), bytes.end()};
}

/// The record that a table or a chain begins with; zeros where the file ends in it or lacks it.
template <class Record>
Bytes Keeper::Header(const Structure* table) const {
  constexpr std::uint64_t kSize = kFileSize<Record>;
  const bool is_there =
      table != nullptr && table->state != State::kLost && file.image.Holds(table->offset, kSize);
  return is_there ? Copy(table->offset, kSize) : Bytes(kSize);
}

/// What a table is made of; nothing where it is lost or not in the file.
Children Keeper::ChildrenOf(Table table) const {
  const Structure* structure = file.map.TableOf(table);
  if (structure == nullptr) return {};
  losses.At(table);
  if (structure->state == State::kLost) losses.LoseTable(table);
  return file.map.ChildrenOf(*structure);
}

/// Tells of a structure that is lost, in whole or in part, with the reason that the map found.
void Keeper::Lose(const Structure& structure, const std::string& what) const {
  const std::string pointer = file.map.PointerOf(file.map.PositionOf(structure));
  for (const Finding& finding : file.findings.Kept()) {
    if (!IsWithin(finding.pointer, pointer) || !finding.right.empty()) continue;
    std::string reason = EntryOf(finding.code).title;
    if (!finding.stands.empty()) reason += ": " + finding.stands;
    return losses.Add(pointer, what, reason);
  }
  losses.Add(pointer, what);
}

/// The records of a run, as many as the file has.
Bytes Keeper::Run(const Children& children, Part part, const char* what) const {
  const Structure* run = Find(children, part);
  if (run == nullptr) return {};
  if (run->state == State::kLost) Lose(*run);
  losses.Count(run->table, run->count, run->counted, what);
  return Copy(run->offset, RecordSize(part) * run->count);
}

/// What `keep` gives for the items of a list, but for those for which it gives none.
template <class Item, class KeepOne>
std::vector<Item> Keeper::Items(const Children& children, Part part, const char* what,
                                KeepOne keep) const {
  std::vector<Item> items;
  std::uint64_t all = 0;
  for (const Structure* child : children) {
    if (child->part != part) continue;
    ++all;
    if (auto item = keep(*child)) items.push_back(std::move(*item));
  }
  if (all != 0) losses.Count(children.front()->table, items.size(), all, what);
  return items;
}

bool IsRead(const Structure& structure) {
  return structure.state == State::kWhole || structure.state == State::kCut;
}

std::string KeptWith(const Structure& entries, const char* what) {
  return "kept with " + std::to_string(entries.count) + " of " + std::to_string(entries.counted) +
         " " + what;
}

/// None when the VOB cannot be kept: without entries in its time map it would take no bytes.
std::optional<Bytes> Vob(const Keeper& keep, const Structure& vob) {
  const Children children = keep.file.map.ChildrenOf(vob);
  const Structure* map = Find(children, Part::kTimeMap);
  const Structure* times = Find(children, Part::kTimeEntries);
  const Structure* vobus = Find(children, Part::kVobus);
  const bool is_read = IsRead(vob) && map != nullptr && map->state == State::kWhole;
  const std::uint32_t time_count = is_read && times != nullptr ? times->count : 0;
  const std::uint32_t vobu_count = is_read && vobus != nullptr ? vobus->count : 0;
  const bool is_cut = vob.state == State::kCut;
  if (time_count + vobu_count == 0 || (is_cut && vobu_count == 0)) {
    keep.Lose(vob, is_read && !is_cut ? "left out, without entries in its time map" : "lost");
    return {};
  }
  if (is_cut) keep.Lose(vob, KeptWith(*vobus, "vobus"));
  Bytes bytes = keep.Copy(vob.offset, vob.size);
  const auto map_at = static_cast<std::size_t>(map->offset - vob.offset);
  SetField<tag_TMAP_GI>(bytes, "TM_ENT_Ns", time_count, map_at);
  SetField<tag_TMAP_GI>(bytes, "VOBU_ENT_Ns", vobu_count, map_at);
  return bytes;
}

/// None when the group cannot be kept: without entries it would take no bytes.
template <class Info>
std::optional<Bytes> Group(const Keeper& keep, const Structure& group, const char* count) {
  const Children children = keep.file.map.ChildrenOf(group);
  if (!IsRead(group) || children.size() != 2 || children[1]->count == 0) {
    keep.Lose(group, group.state == State::kWhole ? "left out, without entries" : "lost");
    return {};
  }
  if (group.state == State::kCut) keep.Lose(group, KeptWith(*children[1], "entries"));
  Bytes bytes = keep.Copy(group.offset, group.size);
  SetField<Info>(bytes, count, children[1]->count);
  return bytes;
}

std::optional<Bytes> Cell(const Keeper& keep, const Structure& cell) {
  const Children children = keep.file.map.ChildrenOf(cell);
  if (children.empty() || children.front()->state != State::kWhole) {
    keep.Lose(cell);
    return {};
  }
  const Structure* entries = Find(children, Part::kEntryPoints);
  if (cell.state == State::kDoubtful) keep.Lose(cell, "kept without its entries");
  if (cell.state == State::kCut) keep.Lose(cell, KeptWith(*entries, "entries"));
  Bytes bytes = keep.Copy(cell.offset, cell.size);
  SetField<tag_M_C_GI>(bytes, "C_EPI_Ns", entries != nullptr ? entries->count : 0);
  const bool is_still = children.front()->part == Part::kStillCellInfo;
  unsigned char& type = bytes[offsetof(tag_M_C_GI, C_TY)];
  if ((CellKind(type) == CELL_STILL) != is_still) {
    type = static_cast<unsigned char>((type & 0x1FU) | (is_still ? 0x20U : 0U));
  }
  return bytes;
}

KeptChain Chain(const Keeper& keep, const Structure& chain) {
  const Children children = keep.file.map.ChildrenOf(chain);
  KeptChain kept;
  kept.pointer = keep.file.map.PointerOf(keep.file.map.PositionOf(chain));
  kept.header = keep.Header<tag_PGC_GI>(&chain);
  kept.programs = keep.Run(children, Part::kPrograms, "programs");
  std::uint64_t count = 0;
  for (const Structure* child : children) {
    if (child->part != Part::kCell) continue;
    kept.cells.push_back(Cell(keep, *child));
    count += kept.cells.back() ? 1 : 0;
  }
  const Structure* index = Find(children, Part::kCellIndex);
  const std::uint64_t all = index != nullptr ? index->counted : count;
  keep.losses.Count(chain.table, count, all, "cells");
  kept.has_all_cells = count == all;
  return kept;
}

/// The texts that lie in the set as a whole.
Bytes TextSet(const Keeper& keep, const Structure& set) {
  std::uint64_t size = 0;
  while (size < set.size) {
    const std::uint64_t next = size + TextSize(keep.file.image, set.offset + size);
    if (next > set.size) break;
    size = next;
  }
  if (size < set.size || set.state == State::kCut) {
    keep.Lose(set, "its last text runs past its end, and is lost");
  }
  return keep.Copy(set.offset, size);
}

// --- The tables ----------------------------------------------------------------------------------

void KeepHeader(const Keeper& keep, Kept& kept) {
  kept.header = keep.Copy(0, kFileSize<tag_VMGI_MAT_HEADER>);
  keep.losses.At(Table::kHeader);
  if (keep.file.findings.Count(Code::kIdentifier) == 0) return;
  std::copy(kFileIdentifier.begin(), kFileIdentifier.end(), kept.header.begin());
  keep.losses.Add("/header/VMG_ID", "damaged, and was set");
}

void KeepMovie(const Keeper& keep, Kept& kept) {
  const Children children = keep.ChildrenOf(Table::kMovie);
  kept.movie.header = keep.Header<tag_M_AVFITI>(keep.file.map.TableOf(Table::kMovie));
  kept.movie.records = keep.Run(children, Part::kMovieStreams, "streams");
  kept.vobs = keep.Items<Bytes>(children, Part::kVob, "vobs",
                                [&keep](const auto& vob) { return Vob(keep, vob); });
}

void KeepStill(const Keeper& keep, Kept& kept) {
  const Children children = keep.ChildrenOf(Table::kStill);
  kept.still.header = keep.Header<tag_S_AVFITI>(keep.file.map.TableOf(Table::kStill));
  kept.still.records = keep.Run(children, Part::kStillStreams, "streams");
  kept.audio_streams = keep.Run(children, Part::kAudioStreams, "audio_streams");
  kept.groups = keep.Items<Bytes>(
      children, Part::kStillGroup, "groups",
      [&keep](const auto& group) { return Group<tag_S_VOG_GI>(keep, group, "S_VOB_Ns"); });
  kept.audio_groups = keep.Items<Bytes>(
      children, Part::kAudioGroup, "audio_groups",
      [&keep](const auto& group) { return Group<tag_S_AAG_GI>(keep, group, "AA_ENT_Ns"); });
}

void KeepChains(const Keeper& keep, Kept& kept) {
  const Structure* original = keep.file.map.TableOf(Table::kOriginalChain);
  kept.original.pointer = PointerOf(Table::kOriginalChain);
  kept.original.header = Bytes(kFileSize<tag_PGC_GI>);
  kept.original.has_all_cells = false;
  keep.ChildrenOf(Table::kOriginalChain);
  if (original == nullptr) {
    keep.losses.Add(kept.original.pointer, "lost");
  } else if (original->state != State::kLost) {
    kept.original = Chain(keep, *original);
  }
  kept.user_header = keep.Header<tag_UD_PGCITI>(keep.file.map.TableOf(Table::kUserChains));
  const auto user_chain = [&keep](const Structure& chain) -> std::optional<KeptChain> {
    if (chain.state != State::kLost && keep.file.image.Holds(chain.offset, kFileSize<tag_PGC_GI>)) {
      return Chain(keep, chain);
    }
    keep.Lose(chain);
    return {};
  };
  kept.user_chains = keep.Items<KeptChain>(keep.ChildrenOf(Table::kUserChains), Part::kUserChain,
                                           "chains", user_chain);
}

/// Texts are named by the number of their set, so that one that is lost keeps its place.
void KeepTexts(const Keeper& keep, Kept& kept) {
  kept.text_header = keep.Header<tag_TXTDITI>(keep.file.map.TableOf(Table::kTexts));
  std::uint64_t count = 0;
  for (const Structure* child : keep.ChildrenOf(Table::kTexts)) {
    if (child->part != Part::kTextSet) continue;
    const bool is_kept = IsRead(*child);
    if (!is_kept) keep.Lose(*child, "lost; an empty set keeps its place");
    kept.text_sets.push_back(is_kept ? TextSet(keep, *child) : Bytes());
    count += is_kept ? 1 : 0;
  }
  if (!kept.text_sets.empty()) {
    keep.losses.Count(Table::kTexts, count, kept.text_sets.size(), "sets");
  }
}

void KeepManufacturers(const Keeper& keep, Kept& kept) {
  kept.manufacturer_header = keep.Header<tag_MNFITI>(keep.file.map.TableOf(Table::kManufacturers));
  const auto manufacturer = [&keep](const Structure& item) -> std::optional<Bytes> {
    if (item.state == State::kWhole) return keep.Copy(item.offset, item.size);
    keep.Lose(item);
    return {};
  };
  kept.manufacturers = keep.Items<Bytes>(keep.ChildrenOf(Table::kManufacturers),
                                         Part::kManufacturer, "items", manufacturer);
}

}  // namespace

Kept Keep(const DamagedFile& file, Losses& losses) {
  const Keeper keep{file, losses};
  Kept kept;
  KeepHeader(keep, kept);
  kept.play_lists.header = keep.Header<tag_PL_SRPTI>(file.map.TableOf(Table::kPlayLists));
  kept.play_lists.records = keep.Run(keep.ChildrenOf(Table::kPlayLists), Part::kPlayLists, "lists");
  KeepMovie(keep, kept);
  KeepStill(keep, kept);
  KeepChains(keep, kept);
  KeepTexts(keep, kept);
  KeepManufacturers(keep, kept);
  for (const TableInfo& row : kTables) {
    const Structure* table = file.map.TableOf(row.table);
    if (table != nullptr && table->state == State::kLost) keep.Lose(*table);
  }
  return kept;
}

}  // namespace VESKA::workshop
