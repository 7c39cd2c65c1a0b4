/// Lists what is on a disc: its programs with their names, kinds and cells, and its play lists.
#include <veska/veska.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <string>

namespace {

constexpr unsigned kNoCell = 0xFFFF;

/// The readable part of a text area: up to the first zero byte, other bytes than ASCII text as
/// dots.
std::string Readable(const unsigned char (&area)[128]) {
  std::string text(std::begin(area), std::find(std::begin(area), std::end(area), 0));
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c < ' ' || c > '~'; }, '.');
  return text;
}

const char* KindOf(VESKA::CPGCInfo::PG_VOB_TYPE type) {
  switch (type) {
    case VESKA::CPGCInfo::PG_VOB_MOVIE:
      return "movie";
    case VESKA::CPGCInfo::PG_VOB_STILL:
      return "still pictures";
    default:
      return "movie and still pictures";
  }
}

}  // namespace

int main(int argc, char** argv) {
  VESKA::CVMGInfo info;
  if (argc < 2) {
    std::cerr << "usage: list_disc FILE.ifo\n";
    return 2;
  }
  if (!info.LoadFromFile(std::filesystem::path(argv[1]), VESKA::CVMGInfo::kLoadAll)) {
    std::cerr << argv[1] << ": " << Describe(info.GetFailure()) << '\n';
    return 1;
  }
  std::cout << "Disc: " << Readable(info.GetMAT().GetHeader().text_93) << '\n';

  const VESKA::CPGCInfo& chain = info.GetOriginalPGC();
  for (int i = 0; i < chain.GetPGCount(); ++i) {
    const VESKA::tag_PGI* program = chain.GetPGNode(i);
    const int first_cell = chain.GetPGStartCellID(i) + 1;
    std::cout << "Program " << i + 1 << ": " << Readable(program->text_4) << " ("
              << KindOf(chain.GetProgramVOBType(i)) << ", " << program->C_Ns << " cells from cell "
              << first_cell << ")\n";
  }
  int number = 0;
  for (const VESKA::tag_PL_SRP& play_list : info.GetMAT().GetPlayListTable().PlayLists()) {
    std::cout << "Play list " << ++number << ": " << Readable(play_list.text_8);
    const unsigned cell = play_list.cell_point.cell;
    if (cell != kNoCell) std::cout << " (from cell " << cell << ')';
    std::cout << '\n';
  }
  return 0;
}
