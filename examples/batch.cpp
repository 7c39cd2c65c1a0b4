/// Brings many files into canonical form, each beside the old one as FILE.new. One file's failure
/// does not stop the others; the exit status tells whether there was one.
#include <veska/veska.h>

#include <filesystem>
#include <iostream>

int main(int argc, char** argv) {
  int failures = 0;
  VESKA::CVMGInfo info;  // reused: a load begins by clearing it
  for (int i = 1; i < argc; ++i) {
    const std::filesystem::path from = argv[i];
    std::filesystem::path to = from;
    to += ".new";
    const bool loaded = info.LoadFromFile(from, VESKA::CVMGInfo::kLoadAll);
    if (loaded) info.AutoComplete();
    if (loaded && info.SaveToFile(to)) {
      std::cout << to.string() << ": " << info.GetDataSize() << " bytes\n";
    } else {
      std::cerr << (loaded ? to : from).string() << ": " << Describe(info.GetFailure()) << '\n';
      ++failures;
    }
  }
  return failures == 0 ? 0 : 1;
}
