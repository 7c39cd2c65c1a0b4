// Writes a management file with 6 million VOBU entries, for the benchmark of the page.
#include <veska/veska.h>

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  VESKA::CVMGInfo info;
  if (!info.LoadFromFile(argv[1], VESKA::CVMGInfo::kLoadAll)) return 1;
  VESKA::CMovieAVFile& vobs = info.GetMovieAVFileTable().GetMovieAVFile();
  constexpr int kVobs = 100;
  constexpr int kVobus = 60000;
  while (vobs.GetCount() < kVobs) vobs.AddNode()->M_VOBI = vobs[0]->M_VOBI;
  for (int i = 0; i < kVobs; ++i) {
    VESKA::CTimeMapTable& map = vobs[i]->M_VOBI.GetTimeMapTable();
    for (int k = map.GetVobuENCount(); k < kVobus; ++k) {
      const VESKA::tag_VOBU_ENT entry = *map.GetVobuENNode(k % 200);
      *map.AddVobuENNode() = entry;
    }
  }
  info.AutoComplete();
  return info.SaveToFile(argv[2]) ? 0 : 3;
}
