/// Prints the mean bitrate of every movie VOB, and that of its busiest VOBU, from the time maps.
#include <veska/veska.h>

#include <algorithm>
#include <filesystem>
#include <iostream>

namespace {

constexpr double kBitsPerPack = 2048 * 8;
constexpr double kFieldsPerSecond = 50;  // 60 / 1.001 on discs recorded from NTSC

double MegabitsPerSecond(unsigned long packs, unsigned long fields) {
  if (fields == 0) return 0;
  const double seconds = static_cast<double>(fields) / kFieldsPerSecond;
  return static_cast<double>(packs) * kBitsPerPack / seconds / 1e6;
}

}  // namespace

int main(int argc, char** argv) {
  VESKA::CVMGInfo info;
  if (argc < 2) {
    std::cerr << "usage: bitrate FILE.ifo\n";
    return 2;
  }
  if (!info.LoadFromFile(std::filesystem::path(argv[1]), VESKA::CVMGInfo::kLoadMovie)) {
    std::cerr << argv[1] << ": " << Describe(info.GetFailure()) << '\n';
    return 1;
  }
  int number = 0;
  for (const VESKA::tag_M_VOBI_ITEM& vob : info.GetMovieAVFileTable().GetMovieAVFile().Items()) {
    const VESKA::CTimeMapTable& map = vob.M_VOBI.GetTimeMapTable();
    double peak = 0;
    for (const VESKA::tag_VOBU_ENT& vobu : map.VobuEntries()) {
      peak = std::max(peak, MegabitsPerSecond(vobu.VOBU_SZ(), vobu.VOBU_PB_TM()));
    }
    std::cout << "VOB " << ++number << ": "
              << MegabitsPerSecond(map.GetPackCount(), map.GetFieldCount()) << " Mbit/s, peak "
              << peak << " Mbit/s\n";
  }
  return 0;
}
