// Editing the original program chain of a file with all that refers to it.
#pragma once

#include <veska/CVMGInfo.h>

#include <string>
#include <vector>

namespace VESKA::workshop {

/// Throws std::bad_alloc unless `done`: the lists refuse what is in range only for lack of memory.
void Require(bool done);

/// The programs and cells of the original program chain, edited so that each program keeps its
/// cells and every cell point that counts them its cell. Positions are 0-based and have to be in
/// range.
///
/// A program is the next `C_Ns` cells of the list. Cells behind the last program's belong to none.
/// Where the programs count more cells than there are, the editor starts by setting their counts to
/// the cells that they have.
class ChainEditor {
 public:
  /// What follows from the edits that nobody asked for is appended to `notes`, one line each.
  ChainEditor(VESKA::CVMGInfo& info, std::vector<std::string>& notes);

  int ProgramCount() const { return chain_.GetPGCount(); }
  int CellCount() const { return chain_.GetCellCount(); }
  /// The positions of a program's first cell and behind its last.
  int FirstCell(int program) const { return chain_.GetPGStartCellID(program); }
  int EndCell(int program) const { return FirstCell(program) + chain_.GetPGNode(program)->C_Ns; }

  /// Deletes a program and its cells.
  void DeleteProgram(int program);
  /// Moves a program with its cells to position `to`.
  void MoveProgram(int program, int to);
  /// Makes the cells of `program` from `cell` on a program of their own right behind it, with the
  /// same texts and numbers. The program's cell point goes with its cell; the other program gets
  /// none. `cell` is one of the program's but its first. False when there are 255 programs.
  bool SplitProgram(int program, int cell);
  /// Gives the cells of the next program to `program`, whose record stays as it is otherwise, and
  /// deletes the next program's record.
  void JoinPrograms(int program);

  /// Deletes a cell. A program that loses its last one stays.
  void DeleteCell(int cell);
  /// Moves a cell to position `to`, where it joins the program of the cell that stood there.
  void MoveCell(int cell, int to);

 private:
  int ProgramOf(int cell) const;
  void AddToCount(int program, int cells);
  void DeleteCells(int first, int end);
  void MoveCells(int first, int end, int shift);
  void RenumberFor(const std::vector<int>& new_order);

  VESKA::CVMGInfo& info_;
  VESKA::CPGCInfo& chain_;
  std::vector<std::string>& notes_;
};

}  // namespace VESKA::workshop
