// The rules of the house: what the compiler has to refuse, and what the sources must not do.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <type_traits>

#include "support/image_builder.h"

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

// What an accessor hands out of a const object is const, and otherwise as it always was.
template <class Table, class Part>
constexpr bool HandsOut(auto accessor) {
  return std::is_same_v<decltype(accessor(std::declval<Table&>())), Part&> &&
         std::is_same_v<decltype(accessor(std::declval<const Table&>())), const Part&>;
}
#define VESKA_HANDS_OUT(Table, Part, accessor) \
  static_assert(HandsOut<Table, Part>([](auto& table) -> auto& { return table.accessor; }))
VESKA_HANDS_OUT(CVMGInfo, CVMGI_MAT, GetMAT());
VESKA_HANDS_OUT(CVMGInfo, CMovieAVFileTable, GetMovieAVFileTable());
VESKA_HANDS_OUT(CVMGInfo, CStillAVFileTable, GetStillAVFileTable());
VESKA_HANDS_OUT(CVMGInfo, CPGCInfo, GetOriginalPGC());
VESKA_HANDS_OUT(CVMGInfo, CUserPGCTable, GetUserPGCTable());
VESKA_HANDS_OUT(CVMGInfo, CTextDataMgr, GetTextDataMgr());
VESKA_HANDS_OUT(CVMGInfo, CMNFInfoTable, GetMNFInfoTable());
VESKA_HANDS_OUT(CVMGI_MAT, tag_VMGI_MAT_HEADER, GetHeader());
VESKA_HANDS_OUT(CVMGI_MAT, CPlayListSRPTable, GetPlayListTable());
VESKA_HANDS_OUT(CMovieAVFileTable, CMovieAVFile, GetMovieAVFile());
VESKA_HANDS_OUT(CMovieVOB, tag_M_VOB_GI, GetHeader());
VESKA_HANDS_OUT(CMovieVOB, tag_SMLI, GetSeamlessInfo());
VESKA_HANDS_OUT(CMovieVOB, tag_AGAPI, GetAudioGaps());
VESKA_HANDS_OUT(CMovieVOB, CTimeMapTable, GetTimeMapTable());
VESKA_HANDS_OUT(CStillAVFileTable, CStillAVFile, GetStillAVFile());
VESKA_HANDS_OUT(CStillAVFileTable, CAdditionalAFile, GetAdditionalAFile());
VESKA_HANDS_OUT(CStillVOG, tag_S_VOG_GI, GetHeader());
VESKA_HANDS_OUT(CStillAAG, tag_S_AAG_GI, GetHeader());
VESKA_HANDS_OUT(CMovieCell, tag_M_C_GI, GetHeader());
VESKA_HANDS_OUT(CStillCell, tag_S_C_GI, GetHeader());

const fs::path kRoot = fs::path(VESKA_SAMPLES).parent_path();

/// Every line of the sources in some folders, behind its place.
struct Line {
  fs::path file;
  std::string place, text;
};
std::vector<Line> Lines(std::initializer_list<fs::path> folders) {
  std::vector<Line> lines;
  for (const fs::path& folder : folders) {
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

/// Each line that a pattern is found in, but for comments.
void ExpectNone(const std::vector<Line>& lines, const char* forbidden) {
  ASSERT_GT(lines.size(), 2000U);
  const std::regex pattern(forbidden);
  for (const Line& line : lines) {
    const std::string code = line.text.substr(0, line.text.find("//"));
    EXPECT_FALSE(std::regex_search(code, pattern)) << line.place << ": " << line.text;
  }
}

TEST(Sources, OfTheLibrariesPrintNothingAndEndNothing) {
  ExpectNone(Lines({"src", "include", "workshop"}),
             R"(\b(v?[fd]?printf|std::print(ln)?|f?puts?|f?putc|putchar|cout|cerr|clog|perror)\b|)"
             R"(\b(abort|_?exit|_Exit|quick_exit|terminate|assert|raise)\b|)"  // ends
             R"(\b(thread_local|mutable)\b|\bstatic \w+\*? \w+(;| =|\{))");    // a state of its own
}

TEST(Sources, OfTheWorkshopTouchNoFileAndNoEnvironment) {
  ExpectNone(Lines({"workshop"}), R"(\b(\w*fstream|iostream|filesystem|fopen|FILE|cin|getenv)\b|)"
                                  R"(\b(LoadFromFile|SaveToFile|locale|setlocale|time|clock)\()");
}

/// Each name that a line includes, with its place.
template <class Check>
void ForEachInclude(const std::vector<Line>& lines, Check&& check) {
  const std::regex include(R"(^ *# *include *[<"]([^>"]+)[>"])");
  for (const Line& line : lines) {
    std::smatch match;
    if (std::regex_search(line.text, match, include)) check(line, match[1].str());
  }
}

TEST(Sources, OfTheLibraryIncludeTheStandardLibraryAlone) {
  const std::regex own_or_standard(R"(veska/\w+\.h|(frame|pgc)/\w+\.(h|inl)|[a-z_0-9]+)");
  ForEachInclude(Lines({"src", "include"}), [&](const Line& line, const std::string& name) {
    const bool asks_the_platform = line.file.string().starts_with("file_") ||
                                   (line.file == "time_functions.h" && name == "windows.h");
    const bool asks_the_processor =
        line.file == "byte_order.cpp" && (name == "immintrin.h" || name == "arm_neon.h");
    EXPECT_TRUE(asks_the_platform || asks_the_processor || std::regex_match(name, own_or_standard))
        << line.place << ' ' << name;
  });
}

// What lies above another folder, includes it; the walks over bytes and over objects lie side by
// side.
TEST(Sources, OfTheWorkshopIncludeWhatLiesBelowThem) {
  const struct {
    const char* folder;
    const char* below;
  } cases[] = {
      {"include", "none"},
      {"basis", "basis|map"},
      {"tree", "basis|tree"},
      {"map", "basis|tree|map"},
      {"check", "basis|tree|map|check"},
      {"salvage", "basis|tree|map|edit|salvage"},
      {"edit", "basis|tree|edit"},
      {"report", "basis|map|report"},
      {"list", "basis"},
      {"locate", "map"},
  };
  std::size_t folders = 0;
  for (const auto& test : cases) {
    const std::regex allowed("veska/(workshop/)?\\w+\\.h|nlohmann/json(_fwd)?\\.hpp|[a-z_0-9]+|(" +
                             std::string(test.below) + ")/\\w+\\.h");
    const bool is_public = test.folder == cases[0].folder;
    ForEachInclude(Lines({fs::path("workshop") / test.folder}), [&](const Line& line,
                                                                    const std::string& name) {
      EXPECT_TRUE(std::regex_match(name, allowed) && !(is_public && name.starts_with("nlohmann")))
          << line.place << ' ' << name;
    });
    ++folders;
  }
  const auto entries = fs::directory_iterator(kRoot / "workshop");
  EXPECT_EQ(
      std::count_if(begin(entries), end(entries), [](const auto& e) { return e.is_directory(); }),
      static_cast<std::ptrdiff_t>(folders));
}

TEST(Sources, AreAscii) {
  for (const Line& line :
       Lines({"src", "include", "workshop", "tools", "tests", "fuzz", "bench", "examples"})) {
    EXPECT_TRUE(std::all_of(line.text.begin(), line.text.end(), [](char c) {
      return c >= ' ' && c <= '~';
    })) << line.place;
  }
}

}  // namespace
}  // namespace VESKA
