#include <veska/records.h>

#include <algorithm>

#include "salvage/kept.h"

namespace VESKA::workshop {
namespace {

bool IsRead(const Structure& structure) {
  return structure.state == State::kWhole || structure.state == State::kCut;
}

/// The name of the lists that are such a part.
std::string NameOf(Part part) {
  const std::string key = InfoOf(part).key;
  return key.substr(key.rfind('/') + 1);
}

class Keeper {
 public:
  Keeper(const MappedFile& file, Losses& losses) : file_(file), losses_(losses) {}

  Kept KeepHeader() const;
  Kept KeepTable(Table table) const;

 private:
  Kept Copy(const Structure& structure) const;
  void Lose(const Structure& structure, const std::string& what = "lost") const;
  Kept Lost(const Structure& item, const std::string& what = "lost") const;
  void KeptWith(const Structure& item, const Structure& entries) const;

  void KeepLists(const Structure& whole, Kept& kept) const;
  Kept KeepRun(const Structure& run) const;
  Kept KeepIndex(const Structure& index, std::span<const Structure* const> children) const;
  Kept KeepItem(const Structure& item) const;
  Kept KeepWithEntries(const Structure& item, Part part) const;
  Kept KeepCell(const Structure& cell) const;
  Kept KeepChain(const Structure& chain) const;
  Kept KeepTextSet(const Structure& set) const;

  const MappedFile& file_;
  Losses& losses_;
};

/// A structure with all that it is made of, as far as the file goes.
Kept Keeper::Copy(const Structure& structure) const {
  Kept kept{structure.part, file_.map.PointerOf(structure), {}, structure.count};
  if (InfoOf(structure.part).role != Role::kWhole) {
    const auto bytes = file_.image.At(structure.offset, structure.size);
    kept.bytes.assign(bytes.begin(), bytes.end());
  }
  for (const Structure* child : file_.map.ChildrenOf(structure)) {
    kept.parts.push_back(Copy(*child));
  }
  return kept;
}

/// Tells of a structure that is lost, in whole or in part, with the reason that the map found.
void Keeper::Lose(const Structure& structure, const std::string& what) const {
  const std::string pointer = file_.map.PointerOf(structure);
  for (const Finding& finding : file_.findings.Kept()) {
    if (!IsWithin(finding.pointer, pointer) || !finding.right.empty()) continue;
    std::string reason = EntryOf(finding.code).title;
    if (!finding.stands.empty()) reason += ": " + finding.stands;
    return losses_.Add(pointer, what, reason);
  }
  losses_.Add(pointer, what);
}

Kept Keeper::Lost(const Structure& item, const std::string& what) const {
  Lose(item, what);
  return {item.part, file_.map.PointerOf(item), {}, 0, true};
}

void Keeper::KeptWith(const Structure& item, const Structure& entries) const {
  Lose(item, "kept with " + std::to_string(entries.count) + " of " +
                 std::to_string(entries.counted) + " " + NameOf(entries.part));
}

// --- Items ---------------------------------------------------------------------------------------

Kept Keeper::KeepItem(const Structure& item) const {
  switch (item.part) {
    case Part::kVob:
      return KeepWithEntries(item, Part::kVobus);
    case Part::kStillGroup:
      return KeepWithEntries(item, Part::kStillEntries);
    case Part::kAudioGroup:
      return KeepWithEntries(item, Part::kAudioEntries);
    case Part::kCell:
      return KeepCell(item);
    case Part::kUserChain:
      return KeepChain(item);
    case Part::kTextSet:
      return KeepTextSet(item);
    default:
      return item.state == State::kWhole ? Copy(item) : Lost(item);
  }
}

/// A VOB or a group, which cannot be kept without entries: it would take no bytes.
Kept Keeper::KeepWithEntries(const Structure& item, Part part) const {
  const auto children = file_.map.ChildrenOf(item);
  const Structure* entries = Find(children, part);
  const Structure* times = Find(children, Part::kTimeEntries);
  const bool has_entries = entries != nullptr && entries->count != 0;
  const bool has_times = times != nullptr && times->count != 0 && item.state == State::kWhole;
  if (!IsRead(item) || (!has_entries && !has_times)) {
    const std::string where = item.part == Part::kVob ? " in its time map" : "";
    return Lost(item, item.state == State::kWhole ? "left out, without entries" + where : "lost");
  }
  if (item.state == State::kCut) KeptWith(item, *entries);
  return Copy(item);
}

Kept Keeper::KeepCell(const Structure& cell) const {
  const auto children = file_.map.ChildrenOf(cell);
  if (children.empty() || children.front()->state != State::kWhole) return Lost(cell);
  if (cell.state == State::kDoubtful) Lose(cell, "kept without its entries");
  if (cell.state == State::kCut) KeptWith(cell, *Find(children, Part::kEntryPoints));
  Kept kept = Copy(cell);
  const bool is_still = kept.parts.front().part == Part::kStillCellInfo;
  unsigned char& type = kept.parts.front().bytes[offsetof(tag_M_C_GI, C_TY)];
  if ((CellKind(type) == CELL_STILL) != is_still) {
    type = static_cast<unsigned char>((type & 0x1FU) | (is_still ? 0x20U : 0U));
  }
  return kept;
}

Kept Keeper::KeepChain(const Structure& chain) const {
  if (!file_.image.Holds(chain.offset, kFileSize<tag_PGC_GI>) || chain.state == State::kLost) {
    return Lost(chain);
  }
  Kept kept{chain.part, file_.map.PointerOf(chain)};
  KeepLists(chain, kept);
  return kept;
}

/// The texts that lie in the set as a whole. Texts are named by the number of their set.
Kept Keeper::KeepTextSet(const Structure& set) const {
  if (!IsRead(set)) return Lost(set, "lost; an empty set keeps its place");
  std::uint64_t size = 0;
  while (size < set.size) {
    const std::uint64_t next = size + TextSize(file_.image, set.offset + size);
    if (next > set.size) break;
    size = next;
  }
  if (size < set.size || set.state == State::kCut) {
    Lose(set, "its last text runs past its end, and is lost");
  }
  Kept kept = Copy(set);
  kept.bytes.resize(static_cast<std::size_t>(size));
  return kept;
}

// --- Lists and tables ----------------------------------------------------------------------------

/// The records of a run, as many as the file has.
Kept Keeper::KeepRun(const Structure& run) const {
  if (run.state == State::kLost) Lose(run);
  losses_.Count(run.table, run.count, run.counted, InfoOf(run.part).key);
  return Copy(run);
}

Kept Keeper::KeepIndex(const Structure& index, std::span<const Structure* const> children) const {
  Kept kept{index.part, file_.map.PointerOf(index), {}, index.counted};
  const Part part = IndexInfoOf(index.part).item;
  for (const Structure* child : children) {
    if (child->part == part) kept.parts.push_back(KeepItem(*child));
  }
  const auto count = std::count_if(kept.parts.begin(), kept.parts.end(),
                                   [](const Kept& item) { return !item.is_lost; });
  const std::uint64_t all = part == Part::kCell ? index.counted : kept.parts.size();
  losses_.Count(index.table, static_cast<std::uint64_t>(count), all, InfoOf(part).key);
  return kept;
}

/// The header and the lists of a table or a chain: those of records are told of first.
void Keeper::KeepLists(const Structure& whole, Kept& kept) const {
  const auto children = file_.map.ChildrenOf(whole);
  const auto keep = [&](Role role, auto&& keep_one) {
    for (const Structure* child : children) {
      if (InfoOf(child->part).role == role) kept.parts.push_back(keep_one(*child));
    }
  };
  keep(Role::kHeader, [&](const Structure& header) { return Copy(header); });
  keep(Role::kRun, [&](const Structure& run) { return KeepRun(run); });
  keep(Role::kIndex, [&](const Structure& index) { return KeepIndex(index, children); });
  std::sort(kept.parts.begin(), kept.parts.end(),
            [](const Kept& a, const Kept& b) { return a.part < b.part; });
}

/// Where the file ends in the header or lacks the table, the header is zeros.
Kept Keeper::KeepTable(Table table) const {
  Kept kept{Part::kTable, PointerOf(table)};
  const Structure* structure = file_.map.TableOf(table);
  if (structure != nullptr) {
    losses_.At(table).is_lost = structure->state == State::kLost;
    if (structure->state == State::kLost) Lose(*structure);
    KeepLists(*structure, kept);
  } else if (table == Table::kOriginalChain) {
    losses_.Add(kept.pointer, "lost");
  }
  const auto size = static_cast<std::size_t>(RecordSize(HeaderOf(table)));
  if (kept.parts.empty()) kept.parts.push_back({HeaderOf(table), kept.pointer});
  if (kept.parts.front().bytes.size() < size) kept.parts.front().bytes = Bytes(size);
  return kept;
}

Kept Keeper::KeepHeader() const {
  losses_.At(Table::kHeader);
  Kept kept = Copy(file_.map.structures.front());
  if (file_.findings.Count(Code::kIdentifier) == 0) return kept;
  std::copy(kFileIdentifier.begin(), kFileIdentifier.end(), kept.bytes.begin());
  losses_.Add("/header/VMG_ID", "damaged, and was set");
  return kept;
}

}  // namespace

Kept* Kept::Find(Part which) {
  const auto found = std::find_if(parts.begin(), parts.end(),
                                  [which](const Kept& one) { return one.part == which; });
  return found != parts.end() ? &*found : nullptr;
}

KeptTables Keep(const MappedFile& file, Losses& losses) {
  const Keeper keeper(file, losses);
  KeptTables tables{{Part::kTable, ""}, keeper.KeepHeader()};
  for (const TableInfo& row : kTables) {
    if (row.table > Table::kHeader) tables.push_back(keeper.KeepTable(row.table));
  }
  return tables;
}

}  // namespace VESKA::workshop
