#include "salvage.h"

#include <veska/layouts.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <initializer_list>
#include <numeric>
#include <string_view>
#include <vector>

#include "cell_points.h"
#include "field_text.h"
#include "findings.h"
#include "image_bytes.h"
#include "image_map.h"
#include "renumber.h"

namespace veska_tool {

using namespace VESKA;

namespace {

constexpr std::size_t kFindingsOfACode = 100;

using Buffer = std::vector<unsigned char>;

/// Sets a number field of the record that stands `at` bytes into `bytes`.
template <class Record>
void SetField(Buffer& bytes, std::string_view name, std::uint64_t value, std::uint64_t at = 0) {
  for (const Field& field : kFields<Record>) {
    if (name == field.name)
      SetBigEndian(&bytes[static_cast<std::size_t>(at) + field.offset], field.width, value);
  }
}

/// What was read and lost, in lines for people, table by table.
class SalvageReport {
 public:
  /// Counts what is made of `what`, `kept` of `all` of it.
  void Count(std::uint64_t kept, std::uint64_t all, const char* what) {
    if (kept != all) is_whole_ = false;
    kept_ += kept;
    const auto same = std::find_if(counts_.begin(), counts_.end(),
                                   [what](const auto& count) { return count.what == what; });
    const auto count = same != counts_.end() ? same : counts_.insert(same, {what, 0, 0});
    count->kept += kept;
    count->all += all;
  }
  /// Adds a line on something that was lost or changed.
  void Lost(const std::string& line) {
    is_whole_ = false;
    lines_ += "  " + line + "\n";
  }
  void EndTable(Table table, bool is_lost) {
    std::string counts;
    for (const Counted& count : counts_) {
      if (count.all == 0) continue;
      counts += (counts.empty() ? "" : ", ") + std::to_string(count.kept) + " of " +
                std::to_string(count.all) + " " + std::string(count.what);
    }
    if (counts.empty()) counts = table == Table::kHeader ? "read" : "nothing in it";
    if (is_lost) counts = "lost";
    texts_[static_cast<std::size_t>(table)] =
        std::string(NameOf(table)) + ": " + counts + "\n" + lines_;
    counts_.clear();
    lines_.clear();
  }

  bool IsWhole() const { return is_whole_; }
  /// How much was read in all.
  std::uint64_t Kept() const { return kept_; }
  std::string Text() const { return std::accumulate(texts_.begin(), texts_.end(), std::string()); }

 private:
  struct Counted {
    std::string_view what;
    std::uint64_t kept;
    std::uint64_t all;
  };
  std::vector<Counted> counts_;
  std::string lines_;
  std::array<std::string, kTables> texts_;  // in the order of the file, not of reading
  std::uint64_t kept_ = 0;
  bool is_whole_ = true;
};

class Salvager {
 public:
  explicit Salvager(std::span<const unsigned char> bytes)
      : image_(bytes), findings_(kFindingsOfACode), map_(MapImage(bytes, findings_)) {}

  SalvageResult Salvage();

 private:
  using Children = std::vector<const Structure*>;

  // The map and the bytes.
  const Structure* TableOf(Table table) const;
  std::size_t PositionOf(const Structure& structure) const {
    return static_cast<std::size_t>(&structure - map_.structures.data());
  }
  Children ChildrenOf(const Structure* structure) const;
  static const Structure* Find(const Children& children, Part part);
  void Lose(const Structure& structure, const std::string& what = "lost");
  void EndTable(Table table);
  Buffer Copy(std::uint64_t offset, std::uint64_t size) const;
  template <class Record>
  Buffer EmptyTable(const Structure& table, std::initializer_list<const char*> counts) const;
  template <class Record, class Add>
  void ReadRecords(const Structure* run, const char* what, Add&& add);

  // The tables.
  void ReadHeader();
  void ReadMovieTable();
  bool ReadVob(const Structure& vob, CMovieVOB& to);
  void ReadStillTable();
  template <class Info, class Group>
  bool ReadGroup(const Structure& group, const char* count, Group& to);
  void ReadOriginalChain();
  void ReadUserChains();
  std::vector<bool> ReadChain(const Structure& holder, CPGCInfo& chain);
  bool ReadCell(const Structure& cell, CPGCInfo& chain);
  void ReadTexts();
  void ReadTextSet(const Structure& set, CTextSet& to);
  void ReadManufacturers();

  // What refers to each other.
  void FitPrograms(CPGCInfo& chain, const std::string& where);
  void TakeFromPrograms(CPGCInfo& chain, const std::vector<bool>& kept, const std::string& where);
  void ConvertCellPoints();
  void DropLostCells(const std::vector<bool>& kept);
  void ClearPointsToNoCell(bool has_all_cells);

  ImageBytes image_;
  Findings findings_;
  ImageMap map_;
  std::unique_ptr<CVMGInfo> info_ = std::make_unique<CVMGInfo>();
  SalvageReport report_;
};

// --- The map and the bytes -----------------------------------------------------------------------

const Structure* Salvager::TableOf(Table table) const {
  for (const Structure& structure : map_.structures) {
    const bool is_table = structure.part == Part::kTable || structure.part == Part::kFileHeader;
    if (is_table && structure.table == table) return &structure;
  }
  return nullptr;
}

Salvager::Children Salvager::ChildrenOf(const Structure* structure) const {
  Children children;
  if (structure == nullptr) return children;
  const std::size_t position = PositionOf(*structure);
  for (std::size_t i = position + 1; i < map_.structures.size(); ++i) {
    const Structure& next = map_.structures[i];
    if (next.parent < static_cast<std::int32_t>(position)) break;
    if (next.parent == static_cast<std::int32_t>(position)) children.push_back(&next);
  }
  return children;
}

const Structure* Salvager::Find(const Children& children, Part part) {
  const auto found = std::find_if(children.begin(), children.end(),
                                  [part](const Structure* child) { return child->part == part; });
  return found != children.end() ? *found : nullptr;
}

/// Reports a structure that is lost, in whole or in part, with the reason that the map found.
void Salvager::Lose(const Structure& structure, const std::string& what) {
  const std::string path = map_.PathOf(static_cast<std::int32_t>(PositionOf(structure)));
  std::string line = path + ": " + what;
  for (const Finding& finding : findings_.Kept()) {
    if (!finding.path.starts_with(path) || !finding.right.empty()) continue;
    line += std::string(", since ") + EntryOf(finding.code).title;
    if (!finding.stands.empty()) line += ": " + finding.stands;
    break;
  }
  report_.Lost(line);
}

/// Reports what was made of a table. One that is not in the file is not reported.
void Salvager::EndTable(Table table) {
  const Structure* structure = TableOf(table);
  const bool is_lost = structure != nullptr && structure->state == State::kLost;
  if (is_lost) Lose(*structure);
  report_.EndTable(table, is_lost);
}

Buffer Salvager::Copy(std::uint64_t offset, std::uint64_t size) const {
  const auto bytes = image_.At(offset, size);
  return Buffer(bytes.begin(), bytes.end());
}

/// The header of a table as it stands where the table holds nothing.
template <class Record>
Buffer Salvager::EmptyTable(const Structure& table,
                            std::initializer_list<const char*> counts) const {
  Buffer header = Copy(table.offset, kFileSize<Record>);
  header.resize(kFileSize<Record>);
  for (const char* count : counts) SetField<Record>(header, count, 0);
  return header;
}

/// Gives each record of a run to `add`.
template <class Record, class Add>
void Salvager::ReadRecords(const Structure* run, const char* what, Add&& add) {
  if (run == nullptr) return;
  for (std::uint32_t i = 0; i < run->count; ++i) {
    add(image_.Read<Record>(run->offset + kFileSize<Record> * i));
  }
  report_.Count(run->count, run->counted, what);
}

// --- Header and play lists -----------------------------------------------------------------------

void Salvager::ReadHeader() {
  CVMGI_MAT& mat = info_->GetMAT();
  mat.GetHeader() = image_.Read<tag_VMGI_MAT_HEADER>(0);
  if (findings_.Count(Code::kIdentifier) != 0) {
    std::memcpy(mat.GetHeader().VMG_ID, kIdentifier.data(), sizeof mat.GetHeader().VMG_ID);
    report_.Lost("the identifier is damaged, and was set");
  }
  EndTable(Table::kHeader);

  const Structure* table = TableOf(Table::kPlayLists);
  const Children children = ChildrenOf(table);
  if (table != nullptr) {
    mat.GetPlayListTable().Parse(EmptyTable<tag_PL_SRPTI>(*table, {"PL_SRP_Ns"}).data());
  }
  ReadRecords<tag_PL_SRP>(Find(children, Part::kPlayLists), "play lists",
                          [&](const tag_PL_SRP& record) {
                            if (auto* to = mat.GetPlayListTable().AddNode()) *to = record;
                          });
  EndTable(Table::kPlayLists);
}

// --- Movie table ---------------------------------------------------------------------------------

void Salvager::ReadMovieTable() {
  const Structure* table = TableOf(Table::kMovie);
  const Children children = ChildrenOf(table);
  CMovieAVFileTable& movie = info_->GetMovieAVFileTable();
  if (!children.empty()) {
    movie.Parse(EmptyTable<tag_M_AVFITI>(*table, {"M_AVFI_Ns", "M_VOB_STI_Ns"}).data());
  }
  ReadRecords<tag_M_VOB_STI>(Find(children, Part::kMovieStreams), "streams",
                             [&](const tag_M_VOB_STI& record) {
                               if (auto* to = movie.AddStreamNode()) *to = record;
                             });
  CMovieAVFile& vobs = movie.GetMovieAVFile();
  std::uint64_t all = 0;
  for (const Structure* child : children) {
    if (child->part != Part::kVob) continue;
    ++all;
    if (!ReadVob(*child, vobs.AddNode()->M_VOBI)) vobs.DeleteNode(vobs.GetCount() - 1);
  }
  report_.Count(static_cast<std::uint64_t>(vobs.GetCount()), all, "VOBs");
  EndTable(Table::kMovie);
}

/// False when the VOB cannot be kept: without entries in its time map it would take no bytes.
bool Salvager::ReadVob(const Structure& vob, CMovieVOB& to) {
  const Children children = ChildrenOf(&vob);
  const Structure* map = Find(children, Part::kTimeMap);
  const Structure* times = Find(children, Part::kTimeEntries);
  const Structure* vobus = Find(children, Part::kVobus);
  const bool is_read = (vob.state == State::kWhole || vob.state == State::kCut) && map != nullptr &&
                       map->state == State::kWhole;
  const std::uint32_t time_count = is_read && times != nullptr ? times->count : 0;
  const std::uint32_t vobu_count = is_read && vobus != nullptr ? vobus->count : 0;
  if (time_count + vobu_count == 0 || (vob.state == State::kCut && vobu_count == 0)) {
    Lose(vob, is_read && vob.state == State::kWhole ? "left out, without entries in its time map"
                                                    : "lost");
    return false;
  }
  Buffer bytes = Copy(vob.offset, vob.size);
  const std::uint64_t map_at = map->offset - vob.offset;
  SetField<tag_TMAP_GI>(bytes, "TM_ENT_Ns", time_count, map_at);
  SetField<tag_TMAP_GI>(bytes, "VOBU_ENT_Ns", vobu_count, map_at);
  if (vob.state == State::kCut) {
    Lose(vob, "kept with " + std::to_string(vobu_count) + " of " + std::to_string(vobus->counted) +
                  " VOBU entries");
  }
  return to.Parse(bytes.data());
}

// --- Still table ---------------------------------------------------------------------------------

void Salvager::ReadStillTable() {
  const Structure* table = TableOf(Table::kStill);
  const Children children = ChildrenOf(table);
  CStillAVFileTable& still = info_->GetStillAVFileTable();
  if (!children.empty()) {
    still.Parse(
        EmptyTable<tag_S_AVFITI>(*table, {"S_AVFI_Ns", "S_AAFI_Ns", "S_VOB_STI_Ns", "S_A_ATR_Ns"})
            .data());
  }
  ReadRecords<tag_S_VOB_STI>(Find(children, Part::kStillStreams), "streams",
                             [&](const tag_S_VOB_STI& record) {
                               if (auto* to = still.AddVOBStreamNode()) *to = record;
                             });
  ReadRecords<tag_S_A_ATR>(Find(children, Part::kAudioStreams), "audio streams",
                           [&](const tag_S_A_ATR& record) {
                             if (auto* to = still.AddAAStreamNode()) *to = record;
                           });
  CStillAVFile& groups = still.GetStillAVFile();
  CAdditionalAFile& audio = still.GetAdditionalAFile();
  std::uint64_t all_groups = 0;
  std::uint64_t all_audio = 0;
  for (const Structure* child : children) {
    if (child->part == Part::kStillGroup) {
      ++all_groups;
      const bool kept = ReadGroup<tag_S_VOG_GI>(*child, "S_VOB_Ns", groups.AddNode()->S_VOGI);
      if (!kept) groups.DeleteNode(groups.GetCount() - 1);
    } else if (child->part == Part::kAudioGroup) {
      ++all_audio;
      const bool kept = ReadGroup<tag_S_AAG_GI>(*child, "AA_ENT_Ns", audio.AddNode()->S_AAGI);
      if (!kept) audio.DeleteNode(audio.GetCount() - 1);
    } else if (child->part == Part::kAudioStreams && child->state == State::kLost) {
      Lose(*child);
    }
  }
  report_.Count(static_cast<std::uint64_t>(groups.GetCount()), all_groups, "groups");
  report_.Count(static_cast<std::uint64_t>(audio.GetCount()), all_audio, "audio groups");
  EndTable(Table::kStill);
}

/// False when the group cannot be kept: without entries it would take no bytes.
template <class Info, class Group>
bool Salvager::ReadGroup(const Structure& group, const char* count, Group& to) {
  const Children children = ChildrenOf(&group);
  const bool is_read = group.state == State::kWhole || group.state == State::kCut;
  const bool has_entries = children.size() == 2 && children[1]->count != 0;
  if (!is_read || !has_entries) {
    Lose(group, group.state == State::kWhole ? "left out, without entries" : "lost");
    return false;
  }
  const Structure& entries = *children[1];
  if (group.state == State::kCut) {
    Lose(group, "kept with " + std::to_string(entries.count) + " of " +
                    std::to_string(entries.counted) + " entries");
  }
  Buffer bytes = Copy(group.offset, group.size);
  SetField<Info>(bytes, count, entries.count);
  return to.Parse(bytes.data());
}

// --- Chains --------------------------------------------------------------------------------------

void Salvager::ReadOriginalChain() {
  const Structure* table = TableOf(Table::kOriginalChain);
  bool has_all_cells = false;
  if (table == nullptr) {
    report_.Lost("the chain is lost");
  } else if (table->state != State::kLost) {
    const std::vector<bool> kept = ReadChain(*table, info_->GetOriginalPGC());
    const Structure* index = Find(ChildrenOf(table), Part::kCellIndex);
    has_all_cells = index == nullptr || static_cast<std::uint32_t>(std::count(
                                            kept.begin(), kept.end(), true)) == index->counted;
    ConvertCellPoints();
    TakeFromPrograms(info_->GetOriginalPGC(), kept, "");
    DropLostCells(kept);
  }
  ClearPointsToNoCell(has_all_cells);
  EndTable(Table::kOriginalChain);
}

void Salvager::ReadUserChains() {
  const Structure* table = TableOf(Table::kUserChains);
  if (table == nullptr) return;
  if (table->state == State::kLost) return EndTable(Table::kUserChains);
  const Children children = ChildrenOf(table);
  CUserPGCTable& chains = info_->GetUserPGCTable();
  chains.Parse(EmptyTable<tag_UD_PGCITI>(*table, {"UD_PGCI_Ns"}).data());
  std::uint64_t all = 0;
  for (const Structure* child : children) {
    if (child->part != Part::kUserChain) continue;
    ++all;
    if (child->state == State::kLost) {
      Lose(*child);
      continue;
    }
    CPGCInfo& chain = chains.AddNode()->UD_PGCI;
    const std::string where = "user chain " + std::to_string(child->number) + ", ";
    const std::vector<bool> kept = ReadChain(*child, chain);
    TakeFromPrograms(chain, kept, where);
    for (std::size_t i = kept.size(); i-- > 0;) {
      if (!kept[i]) chain.DeleteCellNode(static_cast<int>(i));
    }
  }
  report_.Count(static_cast<std::uint64_t>(chains.GetCount()), all, "chains");
  EndTable(Table::kUserChains);
}

/// Reads the chain that `holder` is made of. A cell that is lost keeps its place for now; false
/// stands for it in the result.
std::vector<bool> Salvager::ReadChain(const Structure& holder, CPGCInfo& chain) {
  chain.Parse(EmptyTable<tag_PGC_GI>(holder, {"PG_Ns", "CI_SRP_Ns"}).data());
  const Children children = ChildrenOf(&holder);
  ReadRecords<tag_PGI>(Find(children, Part::kPrograms), "programs", [&](const tag_PGI& record) {
    if (auto* to = chain.AddPGNode()) *to = record;
  });
  std::vector<bool> kept;
  for (const Structure* child : children) {
    if (child->part == Part::kCell) kept.push_back(ReadCell(*child, chain));
  }
  const Structure* index = Find(children, Part::kCellIndex);
  const auto count = static_cast<std::uint64_t>(std::count(kept.begin(), kept.end(), true));
  report_.Count(count, index != nullptr ? index->counted : count, "cells");
  return kept;
}

bool Salvager::ReadCell(const Structure& cell, CPGCInfo& chain) {
  const Children children = ChildrenOf(&cell);
  const bool is_lost = children.empty() || children.front()->state != State::kWhole;
  const bool is_still = !is_lost && children.front()->part == Part::kStillCellInfo;
  tag_C_ITEM* item = chain.AddCellNode(is_still || is_lost ? CELL_STILL : CELL_MOVIE);
  if (is_lost) {
    Lose(cell);
    return false;
  }
  const Structure* entries = Find(children, Part::kEntryPoints);
  const std::uint32_t count = entries != nullptr ? entries->count : 0;
  if (cell.state == State::kDoubtful) Lose(cell, "kept without its entry points");
  if (cell.state == State::kCut) {
    Lose(cell, "kept with " + std::to_string(count) + " of " + std::to_string(entries->counted) +
                   " entry points");
  }
  Buffer bytes = Copy(cell.offset, cell.size);
  SetField<tag_M_C_GI>(bytes, "C_EPI_Ns", count);
  return item->CI->Parse(bytes.data());
}

// --- What refers to each other -------------------------------------------------------------------

/// Where the programs count more cells than there are: one that alone counts more than all cells
/// gets what the others leave, if they leave any; otherwise those at the end get what is left.
void Salvager::FitPrograms(CPGCInfo& chain, const std::string& where) {
  const int cells = chain.GetCellCount();
  const int sum = chain.GetPGStartCellID(chain.GetPGCount());
  if (sum <= cells) return;
  const auto set = [&](int i, int count) {
    tag_PGI* program = chain.GetPGNode(i);
    if (program->C_Ns == count) return;
    report_.Lost(where + "program " + std::to_string(i + 1) + ": counts " +
                 std::to_string(program->C_Ns) + " cells, and gets " + std::to_string(count));
    program->C_Ns = static_cast<std::uint16_t>(count);
  };
  for (int i = 0; i < chain.GetPGCount(); ++i) {
    const int count = chain.GetPGNode(i)->C_Ns;
    if (count > cells && sum - count <= cells) return set(i, cells - (sum - count));
  }
  int left = cells;
  for (int i = 0; i < chain.GetPGCount(); ++i) {
    set(i, std::min<int>(chain.GetPGNode(i)->C_Ns, left));
    left -= chain.GetPGNode(i)->C_Ns;
  }
}

/// Takes the cells that are lost from the counts of their programs.
void Salvager::TakeFromPrograms(CPGCInfo& chain, const std::vector<bool>& kept,
                                const std::string& where) {
  FitPrograms(chain, where);
  std::size_t first = 0;
  for (int i = 0; i < chain.GetPGCount(); ++i) {
    tag_PGI* program = chain.GetPGNode(i);
    const std::size_t end = first + program->C_Ns;
    int lost = 0;
    for (; first < end; ++first) lost += kept[first] ? 0 : 1;
    if (lost == 0) continue;
    program->C_Ns = static_cast<std::uint16_t>(program->C_Ns - lost);
    report_.Lost(where + "program " + std::to_string(i + 1) + ": keeps " +
                 Plural(program->C_Ns, "cell") + " of " + std::to_string(program->C_Ns + lost));
  }
}

/// Makes numbers of the positions in movie cells, which were read as bytes.
void Salvager::ConvertCellPoints() {
  CPGCInfo& chain = info_->GetOriginalPGC();
  VisitCellPoints(*info_, [&](tag_CELL_POINT& point, const std::string&, bool converts) {
    const tag_C_ITEM* item = point.cell != kNoCell ? chain.GetCellNode(point.cell - 1) : nullptr;
    if (!converts || item == nullptr || item->CI->GetType() != CELL_MOVIE) return;
    PositionToNumbers(point);
  });
}

void Salvager::DropLostCells(const std::vector<bool>& kept) {
  std::vector<int> order;
  for (std::size_t i = 0; i < kept.size(); ++i) {
    if (kept[i]) order.push_back(static_cast<int>(i));
  }
  if (order.size() == kept.size()) return;
  for (const LostReference& lost : Renumber(*info_, order)) {
    report_.Lost(lost.holder + ": named cell " + std::to_string(lost.number) +
                 ", which is lost, and names none");
  }
  for (std::size_t i = kept.size(); i-- > 0;) {
    if (!kept[i]) info_->GetOriginalPGC().DeleteCellNode(static_cast<int>(i));
  }
}

/// What a user-defined chain names beside the cells of a chain that is whole is no loss, and is
/// left.
void Salvager::ClearPointsToNoCell(bool has_all_cells) {
  const int cells = info_->GetOriginalPGC().GetCellCount();
  VisitCellPoints(*info_, [&](tag_CELL_POINT& point, const std::string& holder, bool converts) {
    const bool in_user_chain = !converts;
    if (has_all_cells && in_user_chain) return;
    if (point.cell == kNoCell || (point.cell != 0 && point.cell <= cells)) return;
    const bool is_unset = point == tag_CELL_POINT{} && holder.starts_with("header");
    if (is_unset) return;
    report_.Lost(holder + ": named cell " + std::to_string(point.cell) +
                 ", which does not exist, and names none");
    point.cell = kNoCell;
  });
}

// --- Texts and manufacturers ---------------------------------------------------------------------

void Salvager::ReadTexts() {
  const Structure* table = TableOf(Table::kTexts);
  if (table == nullptr) return;
  if (table->state == State::kLost) return EndTable(Table::kTexts);
  const Children children = ChildrenOf(table);
  CTextDataMgr& texts = info_->GetTextDataMgr();
  texts.Parse(EmptyTable<tag_TXTDITI>(*table, {"IT_TXT_SRP_Ns"}).data());
  std::uint64_t kept = 0;
  std::uint64_t all = 0;
  for (const Structure* child : children) {
    if (child->part != Part::kTextSet) continue;
    ++all;
    tag_IT_TXT_ITEM* item = texts.AddNode();
    if (child->state == State::kLost || child->state == State::kDoubtful) {
      Lose(*child, "lost; an empty set keeps its place");
      continue;
    }
    ++kept;
    ReadTextSet(*child, item->IT_TXT);
  }
  report_.Count(kept, all, "text sets");
  EndTable(Table::kTexts);
}

/// Reads the texts that lie in the set as a whole.
void Salvager::ReadTextSet(const Structure& set, CTextSet& to) {
  constexpr std::uint64_t kHead = kFileSize<tag_IT_TXT>;
  std::uint64_t size = 0;
  while (size < set.size) {
    const std::uint64_t next =
        size + kHead + image_.Byte(set.offset + size + offsetof(tag_IT_TXT, length));
    if (next > set.size) break;
    size = next;
  }
  if (size < set.size || set.state == State::kCut) {
    Lose(set, "its last text runs past its end, and is lost");
  }
  to.Parse(Copy(set.offset, size).data(), static_cast<unsigned long>(size));
}

void Salvager::ReadManufacturers() {
  const Structure* table = TableOf(Table::kManufacturers);
  if (table == nullptr) return;
  if (table->state == State::kLost) return EndTable(Table::kManufacturers);
  const Children children = ChildrenOf(table);
  CMNFInfoTable& manufacturers = info_->GetMNFInfoTable();
  manufacturers.Parse(EmptyTable<tag_MNFITI>(*table, {"MNFI_Ns"}).data());
  std::uint64_t all = 0;
  for (const Structure* child : children) {
    if (child->part != Part::kManufacturer) continue;
    ++all;
    if (child->state != State::kWhole) {
      Lose(*child);
      continue;
    }
    auto information = image_.Read<tag_A_MNFI>(child->offset);
    Buffer data = Copy(child->offset + kFileSize<tag_A_MNFI>, child->size - kFileSize<tag_A_MNFI>);
    information.MNF_DATA_SZ = static_cast<std::uint32_t>(data.size());
    information.MNF_DATA = data.data();
    if (manufacturers.AddNode() != nullptr) {
      manufacturers.SetNode(manufacturers.GetCount() - 1, information);
    }
  }
  report_.Count(static_cast<std::uint64_t>(manufacturers.GetCount()), all, "manufacturers");
  EndTable(Table::kManufacturers);
}

// --- All together --------------------------------------------------------------------------------

/// What was taken otherwise than it stands there.
std::string TakenLines(const Findings& findings) {
  std::string lines;
  for (const Finding& finding : findings.Kept()) {
    switch (finding.code) {
      case Code::kTableElsewhere:
      case Code::kElsewhere:
      case Code::kCountAndRoom:
      case Code::kPresenceValue:
      case Code::kPresentUncounted:
      case Code::kWrongCellKind:
        if (finding.right.empty()) break;
        lines += "  " + finding.path + ": " + finding.stands + ", taken as " + finding.right + "\n";
        break;
      default:
        break;
    }
  }
  return lines.empty() ? "" : "contradicts all else, and is taken otherwise:\n" + lines;
}

SalvageResult Salvager::Salvage() {
  SalvageResult result;
  if (map_.structures.empty()) {
    result.report = "nothing can be read: the file is shorter than its header\n";
    return result;
  }
  ReadHeader();
  ReadMovieTable();
  ReadStillTable();
  ReadUserChains();
  ReadOriginalChain();  // behind all that names its cells, which are renumbered where some are lost
  ReadTexts();
  ReadManufacturers();
  result.report = report_.Text() + TakenLines(findings_);
  result.is_whole = report_.IsWhole() && findings_.Count(Severity::kError) == 0;
  if (report_.Kept() == 0 && !result.is_whole) return result;
  info_->AutoComplete();
  result.info = std::move(info_);
  return result;
}

}  // namespace

SalvageResult SalvageImage(std::span<const unsigned char> bytes) {
  return Salvager(bytes).Salvage();
}

}  // namespace veska_tool
