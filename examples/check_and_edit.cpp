/// Checks a file, edits it with all references kept in step, and saves it: in process, with the
/// workshop's functions.
#include <veska/workshop/check.h>
#include <veska/workshop/edit.h>
#include <veska/workshop/load.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

using namespace VESKA::workshop;

namespace {

void Run(const char* from, const char* to) {
  std::ifstream file(std::filesystem::path(from), std::ios::binary);
  const Bytes bytes(std::istreambuf_iterator<char>(file), {});
  const Examination examination = Check(bytes);
  std::cout << examination.errors << " errors, " << examination.warnings << " warnings\n";
  for (const Finding& finding : examination.findings) {
    std::cout << NameOf(finding.code) << " at " << finding.pointer << ": "
              << EntryOf(finding.code).title << "\n";
  }

  const auto info = Load(bytes);
  const std::vector<std::string> words = {"delete-program", "3", "set-disc-text", "News"};
  for (const std::string& line : Edit(*info, words)) std::cout << line << "\n";
  if (!info->SaveToFile(std::filesystem::path(to))) {
    throw Error(ErrorKind::kFile, Describe(info->GetFailure()));
  }
  std::cout << info->GetOriginalPGC().GetPGCount() << " programs are left\n";
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: check_and_edit FROM.ifo TO.ifo\n";
    return 2;
  }
  try {
    Run(argv[1], argv[2]);
  } catch (const Error& error) {
    std::cerr << argv[1] << ": " << error.what() << "\n";
    return 1;
  }
  return 0;
}
