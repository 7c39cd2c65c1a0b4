/// Deletes the first program with its cells. What refers to cells by their number is kept right:
/// the header, the play lists and the other programs.
#include <veska/veska.h>
#include <veska/workshop/edit.h>

#include <filesystem>
#include <iostream>

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: delete_program FROM.ifo TO.ifo\n";
    return 2;
  }
  VESKA::CVMGInfo info;
  if (!info.LoadFromFile(std::filesystem::path(argv[1]), VESKA::CVMGInfo::kLoadAll)) {
    std::cerr << argv[1] << ": " << Describe(info.GetFailure()) << "\n";
    return 1;
  }
  try {
    const std::string words[] = {"delete-program", "1"};
    for (const std::string& followed : VESKA::workshop::Edit(info, words)) {
      std::cout << followed << "\n";
    }
  } catch (const VESKA::workshop::Error& error) {
    std::cerr << argv[1] << ": " << error.what() << "\n";
    return 1;
  }
  if (!info.SaveToFile(std::filesystem::path(argv[2]))) {
    std::cerr << argv[2] << ": " << Describe(info.GetFailure()) << "\n";
    return 3;
  }
  std::cout << info.GetOriginalPGC().GetPGCount() << " programs are left\n";
  return 0;
}
