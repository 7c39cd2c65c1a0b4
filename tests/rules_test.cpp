// The rules of the house: what the compiler has to refuse, and what the sources must not do.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <type_traits>

#include "image_builder.h"

namespace VESKA {
namespace {

namespace fs = std::filesystem;

// Headers that AutoComplete owns can be read but not written.
template <class... Tables>
constexpr bool kOwnTheirHeader =
    (std::is_const_v<std::remove_reference_t<decltype(std::declval<Tables&>().GetHeader())>> &&
     ...);
static_assert(kOwnTheirHeader<CPlayListSRPTable, CMovieAVFileTable, CMovieAVFile, CTimeMapTable,
                              CStillAVFileTable, CStillAVFile, CAdditionalAFile, CUserPGCTable,
                              CTextDataMgr, CMNFInfoTable>);

// Writing an object is not const: the interface leaves the library free to convert it in place.
template <class T>
concept IsWrittenConst = requires(const T& table, unsigned char* out) {
  table.GetData(out);
};
static_assert(!IsWrittenConst<CVMGInfo> && !IsWrittenConst<CPGCInfo>);

const fs::path kRoot = fs::path(VESKA_SAMPLES).parent_path();

/// Every line of the sources in some folders, behind its place.
struct Line {
  fs::path file;
  std::string place, text;
};
std::vector<Line> Lines(std::initializer_list<const char*> folders) {
  std::vector<Line> lines;
  for (const char* folder : folders) {
    for (const auto& entry : fs::recursive_directory_iterator(kRoot / folder)) {
      const fs::path& path = entry.path();
      if (path.extension() != ".h" && path.extension() != ".cpp" && path.extension() != ".inl") {
        continue;
      }
      std::ifstream file(path);
      int number = 0;
      for (std::string text; std::getline(file, text);) {
        lines.push_back({path.filename(), path.string() + ':' + std::to_string(++number), text});
      }
    }
  }
  return lines;
}

TEST(Sources, OfTheLibraryPrintNothingAndEndNothing) {
  const std::regex forbidden(
      R"(\b(\w*print\w*|f?puts?|f?putc|putchar|cout|cerr|clog|perror)\b|)"  // prints
      R"(\b(abort|_?exit|_Exit|quick_exit|terminate|assert|raise)\b|)"      // ends
      R"(\b(thread_local|mutable)\b|\bstatic \w+\*? \w+(;| =|\{))");  // keeps a state of its own
  const std::vector<Line> lines = Lines({"src", "include"});
  ASSERT_GT(lines.size(), 2000U);
  for (const Line& line : lines) {
    const std::string code = line.text.substr(0, line.text.find("//"));
    EXPECT_FALSE(std::regex_search(code, forbidden)) << line.place << ": " << line.text;
  }
}

TEST(Sources, OfTheLibraryIncludeTheStandardLibraryAlone) {
  const std::regex include(R"(^ *# *include *[<"]([^>"]+)[>"])");
  const std::regex own_or_standard(R"(veska/\w+\.h|frame/\w+\.(h|inl)|[a-z_0-9]+)");
  for (const Line& line : Lines({"src", "include"})) {
    std::smatch match;
    if (line.file.string().starts_with("file_") || !std::regex_search(line.text, match, include) ||
        (line.file == "time_functions.h" && match[1] == "windows.h")) {
      continue;  // what has to ask the platform
    }
    EXPECT_TRUE(std::regex_match(match[1].str(), own_or_standard)) << line.place << ' ' << match[1];
  }
}

TEST(Sources, AreAscii) {
  for (const Line& line :
       Lines({"src", "include", "tools", "tests", "fuzz", "bench", "examples"})) {
    EXPECT_TRUE(std::ranges::all_of(line.text, [](char c) { return c >= ' ' && c <= '~'; }))
        << line.place;
  }
}

}  // namespace
}  // namespace VESKA
