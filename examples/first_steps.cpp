#include <veska/veska.h>

#include <filesystem>
#include <iostream>

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const std::filesystem::path from = argv[1], to = argv[2];

  VESKA::CVMGInfo info;
  if (!info.LoadFromFile(from, VESKA::CVMGInfo::kLoadAll)) {
    std::cerr << argv[1] << ": " << Describe(info.GetFailure()) << '\n';  // why it failed
    return 1;
  }

  const VESKA::CPGCInfo& chain = info.GetOriginalPGC();
  std::cout << chain.GetPGCount() << " programs, " << chain.GetCellCount() << " cells\n";

  info.GetMAT().GetPlayListTable().DeleteNode(0);  // edit,
  info.AutoComplete();                             // complete what follows from it,
  if (info.SaveToFile(to)) return 0;               // and save: all of it, or nothing
  std::cerr << argv[2] << ": " << Describe(info.GetFailure()) << '\n';
  return 3;
}
