#include "image_check.h"

#include <veska/CVMGInfo.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "cell_points.h"
#include "field_text.h"
#include "table_walk.h"

namespace veska_tool {

using namespace VESKA;

namespace {

/// The rules that the map alone does not settle.
class Checker {
 public:
  Checker(std::span<const unsigned char> bytes, CheckResult& result)
      : image_(bytes),
        bytes_(bytes),
        map_(result.map),
        findings_(result.findings),
        result_(result) {}

  void Check();

 private:
  using Structures = std::span<const Structure>;

  void Report(Code code, const Structure& structure, std::uint64_t offset, std::string stands,
              std::string right = {}, std::uint32_t number = 0);
  std::int32_t PositionOf(const Structure& structure) const {
    return static_cast<std::int32_t>(&structure - map_.structures.data());
  }
  bool HasErrors(Table table) const { return findings_.Count(Severity::kError, table) != 0; }

  void CheckPlaces();
  void CheckOverlap(const Structure& first, const Structure& second);
  void CheckGap(const Structure& first, const Structure& second);

  void CheckStructure(const Structure& structure);
  void CheckZeroRecords(const Structure& run);
  void CheckTimeMap(const Structure& map);
  void CheckGroup(const Structure& info, std::uint64_t count, Code code, const char* name);
  void CheckCell(const Structure& info);
  void CheckEntryPoints(const Structure& entries);
  void CheckTexts(const Structure& set);
  void CheckEmptyTable(const Structure& index);

  void CheckCellPoints();
  void CheckCellPoint(const Structure& holder, std::uint64_t at, std::uint32_t number);
  void CheckPrograms();
  void CheckProgramsOf(const Structure& programs, std::uint64_t cells);

  void CheckLoading();
  std::vector<unsigned char> OnlyTable(Table table) const;
  void CheckCompleting(CVMGInfo& info);
  void Summarize();

  ImageBytes image_;
  std::span<const unsigned char> bytes_;
  const ImageMap& map_;
  Findings& findings_;
  CheckResult& result_;
  std::optional<std::uint64_t> cells_;  // of the original chain
  std::set<std::pair<std::int32_t, std::int32_t>> overlaps_;
};

void Checker::Check() {
  if (!map_.structures.empty()) {
    CheckPlaces();
    for (const Structure& structure : map_.structures) CheckStructure(structure);
    CheckCellPoints();
    CheckPrograms();
  }
  CheckLoading();
  Summarize();
  findings_.Sort();
}

void Checker::Report(Code code, const Structure& structure, std::uint64_t offset,
                     std::string stands, std::string right, std::uint32_t number) {
  findings_.Add({code, structure.table, map_.PathOf(PositionOf(structure), number), offset,
                 std::move(stands), std::move(right)});
}

// --- Places: what overlaps, what belongs to nothing ----------------------------------------------

void Checker::CheckPlaces() {
  std::vector<const Structure*> leaves;
  for (const Structure& structure : map_.structures) {
    if (structure.size != 0 && ImageMap::IsLeaf(structure.part)) leaves.push_back(&structure);
  }
  std::stable_sort(leaves.begin(), leaves.end(),
                   [](const Structure* a, const Structure* b) { return a->offset < b->offset; });
  const Structure* last = nullptr;
  for (const Structure* leaf : leaves) {
    if (last != nullptr && leaf->offset < last->offset + last->size) CheckOverlap(*last, *leaf);
    if (last != nullptr && leaf->offset > last->offset + last->size) CheckGap(*last, *leaf);
    if (last == nullptr || leaf->offset + leaf->size > last->offset + last->size) last = leaf;
  }
}

/// Reported once for each pair of tables, or of structures of one table.
void Checker::CheckOverlap(const Structure& first, const Structure& second) {
  const bool same_table = first.table == second.table;
  const auto holder = [&](const Structure& structure) {
    return same_table ? structure.parent : -static_cast<std::int32_t>(structure.table);
  };
  if (!overlaps_.emplace(holder(first), holder(second)).second) return;
  Report(Code::kOverlap, second, second.offset,
         "it starts in " + map_.PathOf(PositionOf(first)) + ", which ends at " +
             std::to_string(first.offset + first.size));
}

/// Where structures were not found, or an end address already tells of it, nothing more is said.
void Checker::CheckGap(const Structure& first, const Structure& second) {
  if (HasErrors(first.table) || HasErrors(second.table)) return;
  const bool between_tables = first.table != second.table;
  if (between_tables && findings_.Count(Severity::kWarning, first.table) != 0 &&
      findings_.Count(Code::kEndBehind) != 0) {
    return;
  }
  const std::uint64_t end = first.offset + first.size;
  Report(Code::kUnusedBytes, first, end,
         Plural(second.offset - end, "byte") + ", then " + map_.PathOf(PositionOf(second)));
}

// --- Contents ------------------------------------------------------------------------------------

void Checker::CheckStructure(const Structure& structure) {
  if (structure.state == State::kLost || structure.state == State::kCut) return;
  switch (structure.part) {
    case Part::kPlayLists:
    case Part::kMovieStreams:
    case Part::kVobInfo:
    case Part::kVobus:
    case Part::kStillStreams:
    case Part::kAudioEntries:
    case Part::kPrograms:
    case Part::kManufacturerInfo:
      return CheckZeroRecords(structure);
    case Part::kTimeMap:
      return CheckTimeMap(structure);
    case Part::kGroupInfo:
      return CheckGroup(structure, image_.Read<tag_S_VOG_GI>(structure.offset).S_VOB_Ns,
                        Code::kEmptyStillGroup, "S_VOB_Ns");
    case Part::kAudioGroupInfo:
      return CheckGroup(structure, image_.Read<tag_S_AAG_GI>(structure.offset).AA_ENT_Ns,
                        Code::kEmptyAudioGroup, "AA_ENT_Ns");
    case Part::kMovieCellInfo:
      CheckZeroRecords(structure);
      return CheckCell(structure);
    case Part::kStillCellInfo:
      return CheckCell(structure);
    case Part::kEntryPoints:
      return CheckEntryPoints(structure);
    case Part::kTextSet:
      return CheckTexts(structure);
    case Part::kVobIndex:
    case Part::kGroupIndex:
    case Part::kAudioIndex:
    case Part::kUserIndex:
    case Part::kTextIndex:
    case Part::kManufacturerIndex:
      return CheckEmptyTable(structure);
    default:
      return;
  }
}

/// One finding for each stretch of them.
void Checker::CheckZeroRecords(const Structure& run) {
  const std::uint64_t size = RecordSize(run.part);
  const auto is_zero = [&](std::uint32_t i) {
    return i < run.count && image_.IsZero(run.offset + size * i, size);
  };
  for (std::uint32_t i = 0; i < run.count; ++i) {
    if (!is_zero(i)) continue;
    const std::uint32_t first = i;
    while (is_zero(i + 1)) ++i;
    std::string which;
    if (run.count > 1) which = "number " + std::to_string(first + 1);
    if (i > first) which += " to " + std::to_string(i + 1) + " of " + std::to_string(run.count);
    Report(Code::kZeroRecords, run, run.offset + size * first, which);
  }
}

void Checker::CheckTimeMap(const Structure& map) {
  if (map_.structures[static_cast<std::size_t>(map.parent)].state != State::kWhole) return;
  const auto header = image_.Read<tag_TMAP_GI>(map.offset);
  if (header.VOBU_ENT_Ns != 0) return;
  Report(header.TM_ENT_Ns == 0 ? Code::kEmptyVob : Code::kNoVobus, map, map.offset,
         "TM_ENT_Ns is " + std::to_string(header.TM_ENT_Ns) + ", VOBU_ENT_Ns is 0");
}

void Checker::CheckGroup(const Structure& info, std::uint64_t count, Code code, const char* name) {
  const bool is_whole =
      map_.structures[static_cast<std::size_t>(info.parent)].state == State::kWhole;
  if (is_whole && count == 0) {
    Report(code, info, info.offset, std::string(name) + " is 0");
  }
}

void Checker::CheckCell(const Structure& info) {
  const unsigned kind = image_.Byte(info.offset + offsetof(tag_M_C_GI, C_TY)) >> 5U;
  if (kind <= CELL_STILL) return;
  std::string bits;
  for (unsigned bit = 4; bit != 0; bit >>= 1U) bits += (kind & bit) != 0 ? '1' : '0';
  Report(Code::kCellKind, info, info.offset + offsetof(tag_M_C_GI, C_TY), "the kind is " + bits,
         "001");
}

void Checker::CheckEntryPoints(const Structure& entries) {
  const Structure& info = map_.structures[static_cast<std::size_t>(PositionOf(entries)) - 1];
  const bool is_still = info.part == Part::kStillCellInfo;
  std::uint64_t at = entries.offset;
  for (std::uint32_t i = 0; i < entries.count; ++i) {
    const std::uint8_t type = image_.Byte(at);
    if ((type & 0x80U) != 0) {
      Report(Code::kEntryKind, entries, at,
             (type & 0x40U) != 0 ? "the kind is 11" : "the kind is 10", "00 or 01", i + 1);
    }
    at += is_still ? StillEntryPointSize(type) : MovieEntryPointSize(type);
  }
}

void Checker::CheckTexts(const Structure& set) {
  const std::uint64_t end = set.offset + set.size;
  std::uint64_t at = set.offset;
  for (std::uint32_t number = 1; at < end; ++number) {
    const std::uint64_t next =
        at + kFileSize<tag_IT_TXT> + image_.Byte(at + offsetof(tag_IT_TXT, length));
    if (next > end) {
      Report(Code::kTextPastSet, set, at,
             "text " + std::to_string(number) + " ends " + Plural(next - end, "byte") +
                 " after the set");
      return;
    }
    at = next;
  }
}

void Checker::CheckEmptyTable(const Structure& index) {
  if (index.count != 0) return;
  const bool is_left_out = index.table > Table::kOriginalChain;
  Report(is_left_out ? Code::kEmptyTable : Code::kPresentButEmpty, index, index.offset,
         "its count is 0");
}

// --- References ----------------------------------------------------------------------------------

void Checker::CheckCellPoints() {
  std::uint64_t cells = 0;
  bool has_chain = false;
  for (const Structure& structure : map_.structures) {
    if (structure.table != Table::kOriginalChain) continue;
    has_chain = has_chain || structure.part == Part::kCellIndex;
    if (structure.part == Part::kCell) ++cells;
  }
  if (has_chain && (cells != 0 || !HasErrors(Table::kOriginalChain))) cells_ = cells;
  for (const Structure& structure : map_.structures) {
    const auto in_each = [&](std::uint64_t record, std::uint64_t point) {
      for (std::uint32_t i = 0; i < structure.count; ++i) {
        CheckCellPoint(structure, structure.offset + record * i + point, i + 1);
      }
    };
    if (structure.part == Part::kFileHeader) {
      CheckCellPoint(structure, offsetof(tag_VMGI_MAT_HEADER, cell_point_70), 0);
      CheckCellPoint(structure, offsetof(tag_VMGI_MAT_HEADER, cell_point_85), 0);
    } else if (structure.part == Part::kPlayLists) {
      in_each(kFileSize<tag_PL_SRP>, offsetof(tag_PL_SRP, cell_point));
    } else if (structure.part == Part::kPrograms) {
      in_each(kFileSize<tag_PGI>, offsetof(tag_PGI, cell_point));
    }
  }
}

void Checker::CheckCellPoint(const Structure& holder, std::uint64_t at, std::uint32_t number) {
  const std::uint64_t cell = image_.Number(at, sizeof(tag_CELL_POINT::cell));
  if (!cells_ || cell == kNoCell || (cell != 0 && cell <= *cells_)) return;
  if (holder.part == Part::kFileHeader && image_.IsZero(at, sizeof(tag_CELL_POINT))) {
    if (*cells_ != 0) Report(Code::kPointNotSet, holder, at, "all its bytes are zero");
    return;
  }
  const bool is_user = holder.table == Table::kUserChains;
  Report(is_user ? Code::kUserPointToNoCell : Code::kPointToNoCell, holder, at,
         "the cell number is " + std::to_string(cell),
         (*cells_ != 0 ? "1 to " + std::to_string(*cells_) + ", or " : std::string()) +
             std::to_string(kNoCell) + " for none",
         number);
}

void Checker::CheckPrograms() {
  const Structure* programs = nullptr;
  const Structure* index = nullptr;
  std::int32_t chain = -1;
  const auto finish = [&] {
    const bool is_whole = index != nullptr && index->state == State::kWhole;
    if (is_whole && programs != nullptr && programs->state == State::kWhole) {
      CheckProgramsOf(*programs, index->count);
    } else if (is_whole && programs == nullptr && index->count != 0) {
      Report(Code::kCellsOfNoProgram, *index, index->offset,
             Plural(index->count, "cell") + ", no program");
    }
    programs = index = nullptr;
  };
  for (const Structure& structure : map_.structures) {
    if (structure.part == Part::kChainHeader) {
      finish();
      chain = structure.parent;
    } else if (structure.part == Part::kPrograms && structure.parent == chain) {
      programs = &structure;
    } else if (structure.part == Part::kCellIndex && structure.parent == chain) {
      index = &structure;
    }
  }
  finish();
}

void Checker::CheckProgramsOf(const Structure& programs, std::uint64_t cells) {
  constexpr std::uint64_t kSize = kFileSize<tag_PGI>;
  const auto count_at = [&](std::uint32_t i) {
    return programs.offset + kSize * i + offsetof(tag_PGI, C_Ns);
  };
  std::uint64_t sum = 0;
  std::optional<std::uint32_t> past;
  for (std::uint32_t i = 0; i < programs.count; ++i) {
    const std::uint64_t count = image_.Number(count_at(i), sizeof(tag_PGI::C_Ns));
    sum += count;
    if (sum > cells && (!past || count > cells)) past = i;
  }
  if (past) {
    const std::uint64_t count = image_.Number(count_at(*past), sizeof(tag_PGI::C_Ns));
    const std::uint64_t others = sum - count;
    Report(Code::kTooManyCells, programs, count_at(*past),
           "C_Ns is " + std::to_string(count) + ", all programs count " + std::to_string(sum) +
               " cells, the chain has " + std::to_string(cells),
           others <= cells ? std::to_string(cells - others) : "", *past + 1);
  } else if (sum < cells) {
    Report(Code::kCellsOfNoProgram, programs, programs.offset,
           "the programs count " + std::to_string(sum) + " cells, the chain has " +
               std::to_string(cells));
  }
}

// --- Loading and completing ----------------------------------------------------------------------

struct TableLoad {
  Table table;
  unsigned char flag;
};
constexpr TableLoad kLoads[] = {{Table::kPlayLists, 0},
                                {Table::kMovie, CVMGInfo::kLoadMovie},
                                {Table::kStill, CVMGInfo::kLoadStill},
                                {Table::kOriginalChain, 0},
                                {Table::kUserChains, CVMGInfo::kLoadUserChains},
                                {Table::kTexts, CVMGInfo::kLoadTexts},
                                {Table::kManufacturers, CVMGInfo::kLoadManufacturers}};

bool Loads(CVMGInfo& info, std::vector<unsigned char>& image, unsigned char flags) {
  return info.LoadFromMemory(image.data(), static_cast<unsigned long>(image.size()), flags);
}

void Checker::CheckLoading() {
  const auto info = std::make_unique<CVMGInfo>();
  std::vector<unsigned char> image(bytes_.begin(), bytes_.end());
  result_.loads = Loads(*info, image, CVMGInfo::kLoadAll);
  if (result_.loads) return CheckCompleting(*info);
  if (image_.Size() < kFileSize<tag_VMGI_MAT_HEADER>) return;
  for (const TableLoad& load : kLoads) {
    std::vector<unsigned char> only = OnlyTable(load.table);
    if (Loads(*info, only, load.flag)) continue;
    const Finding* cause = findings_.FirstError(load.table);
    findings_.Add({Code::kDoesNotLoad, load.table, NameOf(load.table),
                   cause != nullptr ? cause->offset : 0,
                   cause != nullptr ? cause->path + ": " + EntryOf(cause->code).title
                                    : "it needs more memory than its size allows",
                   ""});
  }
  if (findings_.Count(Severity::kError) != 0) return;
  findings_.Add({Code::kDoesNotLoad, Table::kFile, NameOf(Table::kFile), 0,
                 "all tables together need more memory than the file's size allows", ""});
}

/// The image with every other table that is always loaded made empty.
std::vector<unsigned char> Checker::OnlyTable(Table table) const {
  std::vector<unsigned char> image(bytes_.begin(), bytes_.end());
  std::ranges::copy(kIdentifier, image.begin());
  constexpr std::size_t kPlayLists = kFileSize<tag_VMGI_MAT_HEADER>;
  if (table != Table::kPlayLists) {
    image.resize(std::max(image.size(), kPlayLists + kFileSize<tag_PL_SRPTI>));
    image[kPlayLists + offsetof(tag_PL_SRPTI, PL_SRP_Ns)] = 0;
  }
  if (table != Table::kOriginalChain) {
    const std::size_t end = image.size();
    image.resize(end + kFileSize<tag_PGC_GI>);
    SetBigEndian(&image[offsetof(tag_VMGI_MAT_HEADER, ORG_PGCI_SA)],
                 sizeof(tag_VMGI_MAT_HEADER::ORG_PGCI_SA), end);
  }
  return image;
}

/// What completing would make of the header of a file that loads.
void Checker::CheckCompleting(CVMGInfo& info) {
  if (findings_.Count(Severity::kError) != 0) return;
  info.AutoComplete();
  std::vector<unsigned char> image(info.GetDataSize());
  info.GetData(image.data());
  const ImageBytes completed(image);
  const Structure& header = map_.structures.front();
  for (const Field& field : InfoOf(header.part).fields) {
    if (field.kind != FieldKind::kDerived) continue;
    const std::uint64_t stands = image_.Number(field.offset, field.width);
    const std::uint64_t right = completed.Number(field.offset, field.width);
    if (stands == right) continue;
    Report(Code::kCompletingChanges, header, field.offset,
           std::string(field.name) + " is " + std::to_string(stands), std::to_string(right));
  }
}

// --- Summary -------------------------------------------------------------------------------------

bool IsItem(Part part) {
  return part == Part::kVob || part == Part::kStillGroup || part == Part::kAudioGroup ||
         part == Part::kCell || part == Part::kTextSet || part == Part::kManufacturer;
}

void Checker::Summarize() {
  for (std::size_t i = static_cast<std::size_t>(Table::kHeader); i < kTables; ++i) {
    const auto table = static_cast<Table>(i);
    TableSummary summary{table, Condition::kAbsent};
    for (const Structure& structure : map_.structures) {
      if (structure.table != table) continue;
      if (structure.part == Part::kTable || structure.part == Part::kFileHeader) {
        summary.offset = structure.offset;
        summary.size = structure.size;
        summary.condition = structure.state == State::kLost ? Condition::kLost : Condition::kSound;
      }
      if (structure.part == Part::kPlayLists) {
        summary.items = summary.readable = structure.count;
      }
      if (!IsItem(structure.part)) continue;
      ++summary.items;
      if (structure.state == State::kWhole) ++summary.readable;
    }
    if (summary.condition == Condition::kSound && HasErrors(table)) {
      summary.condition = Condition::kDamaged;
    }
    result_.tables.push_back(summary);
  }
}

}  // namespace

const char* NameOf(Condition condition) {
  constexpr const char* kNames[] = {"absent", "sound", "damaged", "lost"};
  return kNames[static_cast<std::size_t>(condition)];
}

CheckResult CheckImage(std::span<const unsigned char> bytes, std::size_t limit) {
  CheckResult result{{}, Findings(limit), false, {}};
  result.map = MapImage(bytes, result.findings);
  Checker(bytes, result).Check();
  return result;
}

}  // namespace veska_tool
