#include <veska/records.h>

#include <algorithm>
#include <cstdint>

#include "basis/cell_points.h"
#include "basis/text.h"
#include "salvage/kept.h"

namespace VESKA::workshop {
namespace {

/// A chain, with the counts of cells in its programs.
struct Chain {
  explicit Chain(Kept& kept) : programs(kept.Find(Part::kPrograms)) {
    const Kept* index = kept.Find(Part::kCellIndex);
    if (index == nullptr) return;
    cells = index->parts;
    counted = index->count;
  }

  unsigned char* CountAt(std::size_t program) {
    return &programs->bytes[kFileSize<tag_PGI> * program + offsetof(tag_PGI, C_Ns)];
  }
  std::size_t Count() const {
    return programs == nullptr ? 0 : static_cast<std::size_t>(programs->count);
  }
  std::uint64_t CellsOf(std::size_t i) { return GetBigEndian(CountAt(i), sizeof(tag_PGI::C_Ns)); }
  void SetCells(std::size_t i, std::uint64_t n) {
    SetBigEndian(CountAt(i), sizeof(tag_PGI::C_Ns), n);
  }
  std::string PointerOf(std::size_t i) const { return programs->pointer + "/" + std::to_string(i); }

  Kept* programs;
  std::span<const Kept> cells;
  std::uint64_t counted = 0;  ///< cells, of which the file may hold less
};

/// Where the programs count more cells than there are: one that alone counts more than all cells
/// gets what the others leave, if they leave any; otherwise those at the end get what is left.
void FitPrograms(Chain& chain, Losses& losses) {
  const std::uint64_t cells = chain.cells.size();
  std::uint64_t sum = 0;
  for (std::size_t i = 0; i < chain.Count(); ++i) sum += chain.CellsOf(i);
  if (sum <= cells) return;
  const auto set = [&](std::size_t i, std::uint64_t count) {
    if (chain.CellsOf(i) == count) return;
    losses.Add(chain.PointerOf(i), "counts " + std::to_string(chain.CellsOf(i)) +
                                       " cells, and gets " + std::to_string(count));
    chain.SetCells(i, count);
  };
  for (std::size_t i = 0; i < chain.Count(); ++i) {
    const std::uint64_t others = sum - chain.CellsOf(i);
    if (chain.CellsOf(i) > cells && others <= cells) return set(i, cells - others);
  }
  std::uint64_t left = cells;
  for (std::size_t i = 0; i < chain.Count(); ++i) {
    set(i, std::min(chain.CellsOf(i), left));
    left -= chain.CellsOf(i);
  }
}

/// Takes the cells that are lost from the counts of their programs.
void TakeFromPrograms(Chain& chain, Losses& losses) {
  std::size_t cell = 0;
  for (std::size_t i = 0; i < chain.Count(); ++i) {
    const std::uint64_t all = chain.CellsOf(i);
    std::uint64_t kept = 0;
    for (std::uint64_t n = 0; n < all; ++n) kept += chain.cells[cell++].is_lost ? 0 : 1;
    if (kept == all) continue;
    chain.SetCells(i, kept);
    losses.Add(chain.PointerOf(i), "keeps " + Plural(kept, "cell") + " of " + std::to_string(all));
  }
}

/// The numbers that the cells of a chain get, by those that they have; 0 for one that is lost.
class CellNumbers {
 public:
  /// With `leaves_others`, what names none of the cells is no loss.
  CellNumbers(const Chain& chain, bool leaves_others) : leaves_others_(leaves_others) {
    std::uint16_t next = 0;
    for (const Kept& cell : chain.cells) {
      numbers_.push_back(cell.is_lost ? std::uint16_t{0} : ++next);
    }
  }

  /// Brings the cell points in records in step.
  void Mend(Kept* records, Losses& losses) const {
    if (records == nullptr) return;
    const PartInfo& info = InfoOf(records->part);
    const bool is_list = info.role == Role::kRun;
    const auto size = static_cast<std::size_t>(RecordSize(info.part));
    for (std::size_t i = 0; i < records->count; ++i) {
      const std::string item = is_list ? "/" + std::to_string(i) : "";
      for (const Field& field : info.fields) {
        if (field.kind != FieldKind::kCellPoint) continue;
        const std::span point(&records->bytes[size * i + field.offset], field.width);
        if (!is_list && IsZero(point)) continue;  // the header's, that are not set
        MendPoint(point.data(), records->pointer + item + "/" + field.name, losses);
      }
    }
  }

 private:
  void MendPoint(unsigned char* at, const std::string& pointer, Losses& losses) const {
    constexpr unsigned kWidth = sizeof(tag_CELL_POINT::cell);
    const std::uint64_t cell = GetBigEndian(at, kWidth);
    if (cell == kNoCell) return;
    const bool is_cell = cell != 0 && cell <= numbers_.size();
    const std::uint16_t number = is_cell ? numbers_[static_cast<std::size_t>(cell) - 1] : 0;
    if (number != 0) return SetBigEndian(at, kWidth, number);
    if (!is_cell && leaves_others_) return;
    losses.Add(pointer, "named cell " + std::to_string(cell) + ", which " +
                            (is_cell ? "is lost" : "does not exist") + ", and names none");
    SetBigEndian(at, kWidth, kNoCell);
  }

  std::vector<std::uint16_t> numbers_;
  bool leaves_others_;
};

void MendPrograms(Chain& chain, const CellNumbers& numbers, Losses& losses) {
  FitPrograms(chain, losses);
  TakeFromPrograms(chain, losses);
  numbers.Mend(chain.programs, losses);
}

/// True when the file holds all cells of a chain and none is lost.
bool HasAllCells(const Chain& chain) {
  return chain.counted == chain.cells.size() &&
         std::none_of(chain.cells.begin(), chain.cells.end(),
                      [](const Kept& cell) { return cell.is_lost; });
}

}  // namespace

void MendReferences(KeptTables& tables, Losses& losses) {
  Chain original(tables[IndexOf(Table::kOriginalChain)]);
  const CellNumbers numbers(original, false);
  numbers.Mend(&tables[IndexOf(Table::kHeader)], losses);
  numbers.Mend(tables[IndexOf(Table::kPlayLists)].Find(Part::kPlayLists), losses);
  MendPrograms(original, numbers, losses);
  Kept* index = tables[IndexOf(Table::kUserChains)].Find(Part::kUserIndex);
  if (index == nullptr) return;
  for (Kept& kept : index->parts) {
    Chain chain(kept);
    MendPrograms(chain, CellNumbers(chain, HasAllCells(chain)), losses);
  }
}

}  // namespace VESKA::workshop
