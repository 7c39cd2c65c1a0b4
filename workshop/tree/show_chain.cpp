// Program chains as text.
#include "basis/programs.h"
#include "tree/outline.h"

namespace VESKA::workshop {
namespace {

/// `program 1 "name"`, where the name is readable.
std::string NameOf(const Outline& to, int i, const tag_PGI& program) {
  const std::string text = to.Text(program.text_4);
  return Numbered("program", i) + (text.front() == '"' ? " " + text : "");
}

template <class CellClass>
void ShowCell(Outline& to, const std::string& name, std::uint32_t address, const CellClass& cell) {
  int long_entries = 0;
  for (int i = 0; i < cell.GetCount(); ++i) long_entries += IsLongEntry(cell.GetNode(i)->EP_TY);
  to.Heading(name, to.Fields(cell.GetHeader()) + ", " + Plural(cell.GetDataSize(), "byte") +
                       " at CI_SA " + std::to_string(address) + ", " +
                       std::to_string(cell.GetCount() - long_entries) + " short and " +
                       std::to_string(long_entries) + " long entry points");
  const Outline::Deeper deeper(to);
  to.List(cell.GetCount(), "entry point", [&](int i) {
    const auto& entry = *cell.GetNode(i);
    to.Heading(Numbered("entry point", i),
               to.Fields(entry) + (IsLongEntry(entry.EP_TY) ? ", long" : ", short"));
    if (entry.block != nullptr) to.Data({entry.block, kEntryBlockSize});
  });
}

void ShowCells(Outline& to, const CPGCInfo& chain, int first, int count) {
  const Outline::Deeper deeper(to);
  to.List(count, "cell", [&](int i) {
    const tag_C_ITEM& item = *chain.GetCellNode(first + i);
    const std::string name = Numbered("cell", first + i);
    if (item.CI->GetType() == CELL_MOVIE) {
      ShowCell(to, name + ": movie", item.CI_SA, static_cast<const CMovieCell&>(*item.CI));
    } else {
      ShowCell(to, name + ": still", item.CI_SA, static_cast<const CStillCell&>(*item.CI));
    }
  });
}

/// "cells 4 to 12".
std::string CellsText(const ProgramCells& cells) {
  const auto& [first, counted, there] = cells;
  if (counted == 0) return "no cells";
  const std::string text = counted == 1
                               ? Numbered("cell", first)
                               : Numbered("cells", first) + " to " + std::to_string(cells.End());
  return there == counted ? text : text + " (of which " + std::to_string(there) + " are there)";
}

}  // namespace

void ShowChain(Outline& to, const CPGCInfo& chain, const CPGCInfo* user_chain) {
  static constexpr const char* kKinds[] = {"movie", "still", "mixed", "none"};
  const Outline::Deeper deeper(to);
  const std::vector<ProgramCells> programs = CellsOfPrograms(chain);
  to.List(chain.GetPGCount(), "program", [&](int i) {
    const tag_PGI& program = *chain.GetPGNode(i);
    const ProgramCells& cells = programs[static_cast<std::size_t>(i)];
    to.Heading(NameOf(to, i, program), CellsText(cells) + ", " +
                                           kKinds[chain.GetProgramVOBType(i)] + ", " +
                                           to.NamedFields(program, user_chain));
    ShowCells(to, chain, cells.first, cells.there);
  });
  const int next = programs.empty() ? 0 : programs.back().End();
  if (next >= chain.GetCellCount()) return;
  to.Heading("cells that no program counts", "");
  ShowCells(to, chain, next, chain.GetCellCount() - next);
}

}  // namespace VESKA::workshop
