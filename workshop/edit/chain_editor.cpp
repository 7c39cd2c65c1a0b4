#include "edit/chain_editor.h"

#include <algorithm>
#include <new>
#include <numeric>
#include <utility>

#include "basis/cell_points.h"
#include "basis/programs.h"
#include "edit/renumber.h"

namespace VESKA::workshop {
namespace {

using VESKA::tag_CELL_POINT;
using VESKA::tag_PGI;

std::vector<int> PresentOrder(int count) {
  std::vector<int> order(static_cast<std::size_t>(count));
  std::iota(order.begin(), order.end(), 0);
  return order;
}

}  // namespace

void Require(bool done) {
  if (!done) throw std::bad_alloc();
}

ChainEditor::ChainEditor(VESKA::CVMGInfo& info, std::vector<std::string>& notes)
    : info_(info), chain_(info.GetOriginalPGC()), notes_(notes) {
  const std::vector<ProgramCells> programs = CellsOfPrograms(chain_);
  for (int i = 0; i < ProgramCount(); ++i) {
    const auto& [first, counted, there] = programs[static_cast<std::size_t>(i)];
    if (counted == there) continue;
    const std::string left = std::to_string(there);
    std::string note = "program " + std::to_string(i + 1) + " counted " + std::to_string(counted);
    note += " cells where " + left;
    note += " are left: now " + left;
    notes_.push_back(std::move(note));
    chain_.GetPGNode(i)->C_Ns = static_cast<std::uint16_t>(there);
  }
}

void ChainEditor::DeleteProgram(int program) {
  const int first = FirstCell(program);
  const int end = EndCell(program);
  Require(chain_.DeletePGNode(program));
  DeleteCells(first, end);
}

void ChainEditor::MoveProgram(int program, int to) {
  const int shift =
      to > program ? EndCell(to) - EndCell(program) : FirstCell(to) - FirstCell(program);
  MoveCells(FirstCell(program), EndCell(program), shift);
  Require(chain_.MovePGNodes(program, program, to - program));
}

bool ChainEditor::SplitProgram(int program, int cell) {
  if (ProgramCount() == 255) return false;
  tag_PGI* second = chain_.InsertPGNode(program);
  Require(second != nullptr && chain_.MovePGNodes(program, program, 1));
  tag_PGI* first = chain_.GetPGNode(program);
  *second = *first;

  const int cells = first->C_Ns;
  const int first_cells = cell - FirstCell(program);
  first->C_Ns = static_cast<std::uint16_t>(first_cells);
  second->C_Ns = static_cast<std::uint16_t>(cells - first_cells);

  const int named = first->cell_point.cell - 1;
  const bool goes_along = named >= cell && named < EndCell(program + 1);
  (goes_along ? first : second)->cell_point = tag_CELL_POINT{kNoCell, 0, 0};
  if (goes_along) {
    notes_.push_back("program " + std::to_string(program + 1) + " named cell " +
                     std::to_string(named + 1) + ", which goes to program " +
                     std::to_string(program + 2) + ": it names none now");
  }
  return true;
}

void ChainEditor::JoinPrograms(int program) {
  AddToCount(program, chain_.GetPGNode(program + 1)->C_Ns);
  Require(chain_.DeletePGNode(program + 1));
}

void ChainEditor::DeleteCell(int cell) {
  AddToCount(ProgramOf(cell), -1);
  DeleteCells(cell, cell + 1);
}

void ChainEditor::MoveCell(int cell, int to) {
  const int from_program = ProgramOf(cell);
  const int to_program = ProgramOf(to);
  MoveCells(cell, cell + 1, to - cell);
  AddToCount(from_program, -1);
  AddToCount(to_program, 1);
}

/// The program that a cell belongs to, -1 for none.
int ChainEditor::ProgramOf(int cell) const {
  const std::vector<ProgramCells> programs = CellsOfPrograms(chain_);
  const auto program = std::find_if(programs.begin(), programs.end(),
                                    [cell](const ProgramCells& run) { return cell < run.End(); });
  return program == programs.end() ? -1 : static_cast<int>(program - programs.begin());
}

void ChainEditor::AddToCount(int program, int cells) {
  tag_PGI* record = chain_.GetPGNode(program);
  if (record != nullptr) record->C_Ns = static_cast<std::uint16_t>(record->C_Ns + cells);
}

void ChainEditor::DeleteCells(int first, int end) {
  std::vector<int> order = PresentOrder(CellCount());
  order.erase(order.begin() + first, order.begin() + end);
  RenumberFor(order);
  for (int i = end - 1; i >= first; --i) Require(chain_.DeleteCellNode(i));
}

void ChainEditor::MoveCells(int first, int end, int shift) {
  if (first == end || shift == 0) return;
  std::vector<int> order = PresentOrder(CellCount());
  const auto begin = order.begin();
  if (shift > 0) {
    std::rotate(begin + first, begin + end, begin + end + shift);
  } else {
    std::rotate(begin + first + shift, begin + first, begin + end);
  }
  RenumberFor(order);
  Require(chain_.MoveCellNodes(first, end - 1, shift));
}

void ChainEditor::RenumberFor(const std::vector<int>& new_order) {
  const bool deletes = std::cmp_less(new_order.size(), CellCount());
  for (const LostReference& lost : Renumber(info_, chain_, new_order)) {
    notes_.push_back(lost.holder + " named cell " + std::to_string(lost.number) +
                     (deletes ? ", which is deleted" : ", which has no number any more") +
                     ": it names none now");
  }
}

}  // namespace VESKA::workshop
