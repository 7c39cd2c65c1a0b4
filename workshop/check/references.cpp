#include <veska/records.h>

#include <optional>

#include "basis/cell_points.h"
#include "basis/text.h"
#include "check/examined.h"

namespace VESKA::workshop {
namespace {

/// What a cell point of a structure can name.
struct Cells {
  Code code;            ///< that a point which names none of them is reported with
  std::uint64_t count;  ///< of the cells
};

/// The cells of a chain; none when it is not known how many it has.
std::optional<std::uint64_t> CellsOf(const Examined& file, const Structure* chain) {
  if (chain == nullptr) return {};
  std::uint64_t cells = 0;
  bool has_index = false;
  for (const Structure* child : file.map.ChildrenOf(*chain)) {
    has_index = has_index || child->part == Part::kCellIndex;
    if (child->part == Part::kCell) ++cells;
  }
  if (!has_index || (cells == 0 && file.HasErrors(chain->table))) return {};
  return cells;
}

void CheckCellPoint(Examined& file, const Structure& holder, std::uint64_t at, std::uint32_t number,
                    const Cells& cells) {
  const std::uint64_t cell = file.image.Number(at, sizeof(tag_CELL_POINT::cell));
  if (cell == kNoCell || (cell != 0 && cell <= cells.count)) return;
  if (holder.part == Part::kFileHeader && file.image.IsZero(at, sizeof(tag_CELL_POINT))) {
    if (cells.count != 0) {
      file.Report(Code::kPointNotSet, holder, at, "all its bytes are zero");
    }
    return;
  }
  const std::string range =
      cells.count != 0 ? "1 to " + std::to_string(cells.count) + ", or " : std::string();
  file.Report(cells.code, holder, at, "the cell number is " + std::to_string(cell),
              range + std::to_string(kNoCell) + " for none", number);
}

/// The cell points in each record of a structure.
void CheckCellPointsIn(Examined& file, const Structure& holder, const Cells& cells) {
  const std::uint64_t size = RecordSize(holder.part);
  const bool is_list = InfoOf(holder.part).role == Role::kRun;
  for (std::uint32_t i = 0; i < holder.count; ++i) {
    for (const Field& field : InfoOf(holder.part).fields) {
      if (field.kind != FieldKind::kCellPoint) continue;
      CheckCellPoint(file, holder, holder.offset + size * i + field.offset, is_list ? i + 1 : 0,
                     cells);
    }
  }
}

/// A user-defined chain has cells of its own, which its programs name.
void CheckCellPoints(Examined& file) {
  const auto original = CellsOf(file, file.map.TableOf(Table::kOriginalChain));
  for (const Structure& structure : file.map.structures) {
    if (structure.table == Table::kUserChains && structure.part == Part::kPrograms) {
      const auto own = CellsOf(file, &file.map.ParentOf(structure));
      if (own) CheckCellPointsIn(file, structure, {Code::kUserPointToNoCell, *own});
    } else if (original) {
      CheckCellPointsIn(file, structure, {Code::kPointToNoCell, *original});
    }
  }
}

void CheckProgramsOf(Examined& file, const Structure& programs, std::uint64_t cells) {
  const auto count_at = [&](std::uint32_t i) {
    return programs.offset + kFileSize<tag_PGI> * i + offsetof(tag_PGI, C_Ns);
  };
  std::uint64_t sum = 0;
  std::optional<std::uint32_t> past;
  for (std::uint32_t i = 0; i < programs.count; ++i) {
    const std::uint64_t count = file.image.Number(count_at(i), sizeof(tag_PGI::C_Ns));
    sum += count;
    if (sum > cells && (!past || count > cells)) past = i;
  }
  if (past) {
    const std::uint64_t count = file.image.Number(count_at(*past), sizeof(tag_PGI::C_Ns));
    const std::uint64_t others = sum - count;
    file.Report(Code::kTooManyCells, programs, count_at(*past),
                "C_Ns is " + std::to_string(count) + ", all programs count " + std::to_string(sum) +
                    " cells, the chain has " + std::to_string(cells),
                others <= cells ? std::to_string(cells - others) : "", *past + 1);
  } else if (sum < cells) {
    file.Report(Code::kCellsOfNoProgram, programs, programs.offset,
                "the programs count " + std::to_string(sum) + " cells, the chain has " +
                    std::to_string(cells));
  }
}

void CheckPrograms(Examined& file) {
  for (const Structure& structure : file.map.structures) {
    if (structure.part != Part::kChainHeader) continue;
    const auto children = file.map.ChildrenOf(file.map.ParentOf(structure));
    const Structure* programs = Find(children, Part::kPrograms);
    const Structure* index = Find(children, Part::kCellIndex);
    if (index == nullptr || index->state != State::kWhole) continue;
    if (programs != nullptr && programs->state == State::kWhole) {
      CheckProgramsOf(file, *programs, index->count);
    } else if (programs == nullptr && index->count != 0) {
      file.Report(Code::kCellsOfNoProgram, *index, index->offset,
                  Plural(index->count, "cell") + ", no program");
    }
  }
}

}  // namespace

void CheckReferences(Examined& file) {
  CheckCellPoints(file);
  CheckPrograms(file);
}

}  // namespace VESKA::workshop
