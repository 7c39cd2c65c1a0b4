/// Makes a file from nothing: one movie VOB with a time map, and a program of one cell that plays
/// it.
#include <veska/veska.h>

#include <cstring>
#include <filesystem>
#include <iostream>

namespace {

constexpr char kIdentifier[] = "DVD_RTR_VMG0";
constexpr std::uint16_t kNoCell = 0xFFFF;

void AddMovie(VESKA::CMovieAVFileTable& table) {
  table.AddStreamNode()->bytes_0[0] = 0x10;
  VESKA::CMovieVOB& vob = table.GetMovieAVFile().AddNode()->M_VOBI;
  const SYSTEMTIME recorded = {2006, 7, 0, 15, 12, 34, 56, 0};
  SetRTRTime(vob.GetHeader().bytes_2, &recorded);
  vob.GetHeader().time_15 = {.base = 90000, .ext = 0};
  for (unsigned i = 0; i < 25; ++i) {
    constexpr unsigned kFields = 25;
    constexpr unsigned kPacks = 300;
    vob.GetTimeMapTable().AddVobuENNode()->word_1 = kFields << 10U | kPacks;
  }
}

void AddProgram(VESKA::CPGCInfo& chain) {
  auto* cell = static_cast<VESKA::CMovieCell*>(chain.AddCellNode(VESKA::CELL_MOVIE)->CI);
  cell->GetHeader().number_2 = 1;
  cell->GetHeader().time_12 = {.base = 90000, .ext = 0};
  VESKA::tag_PGI* program = chain.AddPGNode();
  program->C_Ns = 1;
  program->cell_point = {.cell = 1, .position = 0, .position_ext = 0};
  std::memcpy(program->text_4, "Made from nothing", 17);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::cerr << "usage: make_file TO.ifo\n";
    return 2;
  }
  VESKA::CVMGInfo info;
  VESKA::tag_VMGI_MAT_HEADER& header = info.GetMAT().GetHeader();
  std::memcpy(header.VMG_ID, kIdentifier, sizeof header.VMG_ID);
  header.cell_point_70.cell = header.cell_point_85.cell = kNoCell;
  AddMovie(info.GetMovieAVFileTable());
  AddProgram(info.GetOriginalPGC());

  info.AutoComplete();
  const std::filesystem::path path = argv[argc - 1];
  if (!info.SaveToFile(path)) {
    std::cerr << path.string() << ": " << Describe(info.GetFailure()) << '\n';
    return 3;
  }
  std::cout << path.string() << ": " << info.GetDataSize() << " bytes\n";
  return 0;
}
