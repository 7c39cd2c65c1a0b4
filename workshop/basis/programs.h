// Which cells belong to which program.
#pragma once

#include <veska/CPGCInfo.h>

#include <algorithm>
#include <vector>

namespace VESKA::workshop {

/// The cells of a program: the next of its chain's list that its `C_Ns` counts.
struct ProgramCells {
  int first;    // position of the first one, which may be past the list
  int counted;  // by the program
  int there;    // of those, in the list

  int End() const { return first + counted; }
};

/// What CPGCInfo::GetProgramVOBType tells, in words.
inline constexpr const char* kProgramKinds[] = {"movie", "still", "mixed", "none"};

/// The cells of each program of a chain, in order.
inline std::vector<ProgramCells> CellsOfPrograms(const CPGCInfo& chain) {
  std::vector<ProgramCells> programs;
  int first = 0;
  for (int i = 0; i < chain.GetPGCount(); ++i) {
    const int counted = chain.GetPGNode(i)->C_Ns;
    programs.push_back({first, counted, std::clamp(chain.GetCellCount() - first, 0, counted)});
    first += counted;
  }
  return programs;
}

}  // namespace VESKA::workshop
