/// Deletes the first program with its cells, and keeps right what refers to cells by their number:
/// the header, the play lists and the programs of all chains. (The library keeps no references in
/// step by itself.)
#include <veska/veska.h>

#include <filesystem>
#include <iostream>

namespace {

constexpr std::uint16_t kNoCell = 0xFFFF;

/// What a cell point names once the `count` cells from number `first` on are gone.
void Renumber(VESKA::tag_CELL_POINT& point, int first, int count) {
  if (point.cell == kNoCell || point.cell < first) return;
  if (point.cell < first + count) {
    point = {.cell = kNoCell, .position = 0, .position_ext = 0};
  } else {
    point.cell = static_cast<std::uint16_t>(point.cell - count);
  }
}

void RenumberPrograms(VESKA::CPGCInfo& chain, int first, int count) {
  for (int i = 0; i < chain.GetPGCount(); ++i) {
    Renumber(chain.GetPGNode(i)->cell_point, first, count);
  }
}

bool DeleteProgram(VESKA::CVMGInfo& info, int index) {
  VESKA::CPGCInfo& chain = info.GetOriginalPGC();
  const VESKA::tag_PGI* program = chain.GetPGNode(index);
  if (program == nullptr) return false;
  const int start = chain.GetPGStartCellID(index);
  const int count = program->C_Ns;
  if (start + count > chain.GetCellCount()) return false;  // it counts cells that are not there

  for (int i = 0; i < count; ++i) chain.DeleteCellNode(start);
  chain.DeletePGNode(index);

  const int first = start + 1;  // cell numbers are 1-based
  VESKA::CVMGI_MAT& mat = info.GetMAT();
  Renumber(mat.GetHeader().cell_point_70, first, count);
  Renumber(mat.GetHeader().cell_point_85, first, count);
  VESKA::CPlayListSRPTable& play_lists = mat.GetPlayListTable();
  for (int i = 0; i < play_lists.GetCount(); ++i) Renumber(play_lists[i]->cell_point, first, count);
  RenumberPrograms(chain, first, count);
  VESKA::CUserPGCTable& user_chains = info.GetUserPGCTable();
  for (int i = 0; i < user_chains.GetCount(); ++i) {
    RenumberPrograms(user_chains[i]->UD_PGCI, first, count);
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: delete_program FROM.ifo TO.ifo\n";
    return 2;
  }
  VESKA::CVMGInfo info;
  if (!info.LoadFromFile(std::filesystem::path(argv[1]), VESKA::CVMGInfo::kLoadAll) ||
      !DeleteProgram(info, 0)) {
    std::cerr << argv[1] << ": cannot be loaded, or has no program to delete\n";
    return 1;
  }
  info.AutoComplete();
  if (!info.SaveToFile(std::filesystem::path(argv[2]))) {
    std::cerr << argv[2] << ": cannot be saved\n";
    return 3;
  }
  std::cout << info.GetOriginalPGC().GetPGCount() << " programs are left\n";
  return 0;
}
