/// Loads a file, renames its first program and adds a play list that starts there, completes what
/// follows from that, and saves it under another name.
#include <veska/veska.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <string_view>

namespace {

constexpr std::string_view kTitle = "Renamed by the example";

/// Puts `title` into one of the 128-byte text areas of the file, zero bytes behind it.
void SetText(unsigned char (&area)[128], std::string_view title) {
  std::fill(std::begin(area), std::end(area), static_cast<unsigned char>(0));
  std::copy_n(title.begin(), std::min(title.size(), std::size(area)), area);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: edit_and_save FROM.ifo TO.ifo\n";
    return 2;
  }
  VESKA::CVMGInfo info;
  if (!info.LoadFromFile(std::filesystem::path(argv[1]), VESKA::CVMGInfo::kLoadAll)) {
    std::cerr << argv[1] << ": " << Describe(info.GetFailure()) << '\n';
    return 1;
  }

  VESKA::tag_PGI* program = info.GetOriginalPGC().GetPGNode(0);
  VESKA::tag_PL_SRP* play_list = info.GetMAT().GetPlayListTable().AddNode();
  if (program == nullptr || play_list == nullptr) {
    std::cerr << argv[1] << ": no program, or no room for another play list\n";
    return 1;
  }
  SetText(program->text_4, kTitle);
  SetText(play_list->text_8, "Starts with the first cell");
  play_list->cell_point = {.cell = 1, .position = 0, .position_ext = 0};

  info.AutoComplete();
  if (!info.SaveToFile(std::filesystem::path(argv[2]))) {
    std::cerr << argv[2] << ": " << Describe(info.GetFailure()) << '\n';
    return 3;
  }
  std::cout << argv[2] << ": " << info.GetDataSize() << " bytes\n";
  return 0;
}
