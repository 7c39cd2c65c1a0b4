#include <veska/records.h>

#include <algorithm>
#include <cstdint>

#include "basis/cell_points.h"
#include "basis/text.h"
#include "salvage/kept.h"

namespace VESKA::workshop {
namespace {

constexpr std::size_t kProgram = kFileSize<tag_PGI>;

std::size_t CountOf(const KeptChain& chain) { return chain.programs.size() / kProgram; }
std::uint64_t CellsOf(const KeptChain& chain, std::size_t program) {
  return GetField<tag_PGI>(chain.programs, "C_Ns", kProgram * program);
}
void SetCells(KeptChain& chain, std::size_t program, std::uint64_t count) {
  SetField<tag_PGI>(chain.programs, "C_Ns", count, kProgram * program);
}
std::string PointerOf(const KeptChain& chain, std::size_t program) {
  return chain.pointer + "/programs/" + std::to_string(program);
}

/// Where the programs count more cells than there are: one that alone counts more than all cells
/// gets what the others leave, if they leave any; otherwise those at the end get what is left.
void FitPrograms(KeptChain& chain, Losses& losses) {
  const std::uint64_t cells = chain.cells.size();
  std::uint64_t sum = 0;
  for (std::size_t i = 0; i < CountOf(chain); ++i) sum += CellsOf(chain, i);
  if (sum <= cells) return;
  const auto set = [&](std::size_t i, std::uint64_t count) {
    if (CellsOf(chain, i) == count) return;
    losses.Add(PointerOf(chain, i), "counts " + std::to_string(CellsOf(chain, i)) +
                                        " cells, and gets " + std::to_string(count));
    SetCells(chain, i, count);
  };
  for (std::size_t i = 0; i < CountOf(chain); ++i) {
    const std::uint64_t others = sum - CellsOf(chain, i);
    if (CellsOf(chain, i) > cells && others <= cells) return set(i, cells - others);
  }
  std::uint64_t left = cells;
  for (std::size_t i = 0; i < CountOf(chain); ++i) {
    set(i, std::min(CellsOf(chain, i), left));
    left -= CellsOf(chain, i);
  }
}

/// Takes the cells that are lost from the counts of their programs.
void TakeFromPrograms(KeptChain& chain, Losses& losses) {
  std::size_t cell = 0;
  for (std::size_t i = 0; i < CountOf(chain); ++i) {
    const std::uint64_t all = CellsOf(chain, i);
    std::uint64_t kept = 0;
    for (std::uint64_t n = 0; n < all; ++n) kept += chain.cells[cell++] ? 1 : 0;
    if (kept == all) continue;
    SetCells(chain, i, kept);
    losses.Add(PointerOf(chain, i), "keeps " + Plural(kept, "cell") + " of " + std::to_string(all));
  }
}

/// The numbers that the cells of a chain get, by those that they have; 0 for one that is lost.
class CellNumbers {
 public:
  explicit CellNumbers(const KeptChain& chain) : leaves_others_(chain.has_all_cells) {
    std::uint16_t next = 0;
    for (const auto& cell : chain.cells) {
      numbers_.push_back(cell ? ++next : std::uint16_t{0});
    }
  }

  /// What a user-defined chain names beside its cells is no loss where it has them all.
  bool LeavesOthers() const { return leaves_others_; }

  /// Brings the cell points in a list of records in step.
  template <class Record>
  void Mend(Bytes& records, const std::string& pointer, bool is_list, bool leaves_others,
            Losses& losses) const {
    for (std::size_t at = 0; at < records.size(); at += kFileSize<Record>) {
      const std::string item = is_list ? "/" + std::to_string(at / kFileSize<Record>) : "";
      for (const Field& field : kFields<Record>) {
        if (field.kind != FieldKind::kCellPoint) continue;
        const std::span point(&records[at + field.offset], field.width);
        if (!is_list && IsZero(point)) continue;  // the header's, that are not set
        MendPoint(point.data(), pointer + item + "/" + field.name, leaves_others, losses);
      }
    }
  }

 private:
  void MendPoint(unsigned char* at, const std::string& pointer, bool leaves_others,
                 Losses& losses) const {
    constexpr unsigned kWidth = sizeof(tag_CELL_POINT::cell);
    const std::uint64_t cell = GetBigEndian(at, kWidth);
    if (cell == kNoCell) return;
    const bool is_cell = cell != 0 && cell <= numbers_.size();
    const std::uint16_t number = is_cell ? numbers_[static_cast<std::size_t>(cell) - 1] : 0;
    if (number != 0) return SetBigEndian(at, kWidth, number);
    if (!is_cell && leaves_others) return;
    losses.Add(pointer, "named cell " + std::to_string(cell) + ", which " +
                            (is_cell ? "is lost" : "does not exist") + ", and names none");
    SetBigEndian(at, kWidth, kNoCell);
  }

  std::vector<std::uint16_t> numbers_;
  bool leaves_others_;
};

void MendPrograms(KeptChain& chain, const CellNumbers& numbers, bool leaves_others,
                  Losses& losses) {
  FitPrograms(chain, losses);
  TakeFromPrograms(chain, losses);
  numbers.Mend<tag_PGI>(chain.programs, chain.pointer + "/programs", true, leaves_others, losses);
}

}  // namespace

void MendReferences(Kept& kept, Losses& losses) {
  const CellNumbers numbers(kept.original);
  numbers.Mend<tag_VMGI_MAT_HEADER>(kept.header, "/header", false, false, losses);
  numbers.Mend<tag_PL_SRP>(kept.play_lists.records, "/play_lists/lists", true, false, losses);
  MendPrograms(kept.original, numbers, false, losses);
  for (KeptChain& chain : kept.user_chains) {
    const CellNumbers own(chain);
    MendPrograms(chain, own, own.LeavesOthers(), losses);
  }
}

}  // namespace VESKA::workshop
