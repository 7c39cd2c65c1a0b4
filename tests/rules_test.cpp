// The rules of the house: what the library's interface promises to the compiler, and what its
// sources must not do.
#include <concepts>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <type_traits>

#include "image_builder.h"

namespace VESKA {
namespace {

namespace fs = std::filesystem;

// What every table offers, and that writing one is not const.
template <class T>
concept Table = std::copyable<T> && std::default_initializable<T> &&
    std::has_virtual_destructor_v<T> && requires(T t, const T c, unsigned char* bytes) {
  { t.Clear() } -> std::same_as<void>;
  { c.GetDataSize() } -> std::same_as<unsigned long>;
  { t.GetData(bytes) } -> std::same_as<void>;
  { t = c } -> std::same_as<T&>;
} && !requires(const T c, unsigned char* bytes) {
  c.GetData(bytes);
};
template <class T>
concept Parsed = Table<T> && requires(T t, unsigned char* data) {
  { t.Parse(data) } -> std::same_as<bool>;
  { t.AutoComplete() } -> std::same_as<void>;
};
template <class T>
concept Listed = requires(const T c) {
  { c.IsEmpty() } -> std::same_as<bool>;
};
template <class T>
concept Indexed = Table<T> && Listed<T> && requires(T t, unsigned char* data, unsigned long n) {
  { t.Parse(data, n) } -> std::same_as<bool>;
  { t.AutoComplete(n) } -> std::same_as<void>;
};
static_assert(Parsed<CVMGI_MAT> && !Listed<CVMGI_MAT>);
static_assert(Parsed<CPlayListSRPTable> && Parsed<CMovieAVFileTable> && Parsed<CMovieVOB>);
static_assert(Parsed<CTimeMapTable> && Parsed<CStillAVFileTable> && Parsed<CStillVOG>);
static_assert(Parsed<CStillAAG> && Parsed<CPGCInfo> && Parsed<CMovieCell> && Parsed<CStillCell>);
static_assert(Parsed<CUserPGCTable> && Parsed<CTextDataMgr> && Parsed<CMNFInfoTable>);
static_assert(Indexed<CMovieAVFile> && Indexed<CStillAVFile> && Indexed<CAdditionalAFile>);
static_assert(Table<CTextSet> && Listed<CTextSet> && !Parsed<CTextSet>);
static_assert(Table<CVMGInfo> && std::is_abstract_v<CBaseCell>);
static_assert(std::derived_from<CMovieCell, CBaseCell> && std::derived_from<CStillCell, CBaseCell>);

// Headers that AutoComplete owns can be read but not written; the others are the host's to set.
template <class T, class Header>
constexpr bool kReadOnly =
    std::same_as<decltype(std::declval<const T&>().GetHeader()), const Header&>;
template <class T, class Header>
constexpr bool kWritable = std::same_as<decltype(std::declval<T&>().GetHeader()), Header&>;
static_assert(kReadOnly<CPlayListSRPTable, tag_PL_SRPTI>);
static_assert(kReadOnly<CMovieAVFileTable, tag_M_AVFITI>);
static_assert(kReadOnly<CMovieAVFile, tag_M_AVFI_GI>);
static_assert(kReadOnly<CTimeMapTable, tag_TMAP_GI>);
static_assert(kReadOnly<CStillAVFileTable, tag_S_AVFITI>);
static_assert(kReadOnly<CStillAVFile, tag_S_AVFI_GI>);
static_assert(kReadOnly<CAdditionalAFile, tag_S_AAFI_GI>);
static_assert(kReadOnly<CUserPGCTable, tag_UD_PGCITI>);
static_assert(kReadOnly<CTextDataMgr, tag_TXTDITI>);
static_assert(kReadOnly<CMNFInfoTable, tag_MNFITI>);
static_assert(kWritable<CPGCInfo, const tag_PGC_GI>);
static_assert(kWritable<CVMGI_MAT, tag_VMGI_MAT_HEADER> && kWritable<CMovieVOB, tag_M_VOB_GI>);
static_assert(kWritable<CStillVOG, tag_S_VOG_GI> && kWritable<CStillAAG, tag_S_AAG_GI>);
static_assert(kWritable<CMovieCell, tag_M_C_GI> && kWritable<CStillCell, tag_S_C_GI>);

// The five functions keep their plain names and forms.
static_assert(std::same_as<decltype(&GetSCR), void (*)(const unsigned char*, tag_SCR*)>);
static_assert(std::same_as<decltype(&SCR2Millisecond), unsigned long (*)(const tag_SCR*)>);
static_assert(std::same_as<decltype(&V_SCRComp), int (*)(const tag_SCR*, const tag_SCR*)>);
static_assert(std::same_as<decltype(&GetWinTime), void (*)(SYSTEMTIME*, const unsigned char*)>);
static_assert(std::same_as<decltype(&SetRTRTime), void (*)(unsigned char*, const SYSTEMTIME*)>);
static_assert(sizeof(SYSTEMTIME) == 16);

const fs::path kRoot = fs::path(VESKA_SAMPLES).parent_path();

/// Every line of the sources in some folders, with its place.
struct Line {
  fs::path file;
  std::size_t number;
  std::string text;
};
std::vector<Line> Lines(std::initializer_list<const char*> folders) {
  std::vector<Line> lines;
  for (const char* folder : folders) {
    for (const auto& entry : fs::recursive_directory_iterator(kRoot / folder)) {
      const std::string kind = entry.path().extension().string();
      if (kind != ".h" && kind != ".cpp" && kind != ".inl") continue;
      std::ifstream file(entry.path());
      std::size_t number = 0;
      for (std::string text; std::getline(file, text);) {
        lines.push_back({entry.path().lexically_relative(kRoot), ++number, text});
      }
    }
  }
  return lines;
}

void ExpectNone(const std::vector<Line>& lines, const std::regex& pattern, const char* what) {
  for (const Line& line : lines) {
    const std::string code = line.text.substr(0, line.text.find("//"));
    EXPECT_FALSE(std::regex_search(code, pattern))
        << line.file << ':' << line.number << ' ' << what << ": " << line.text;
  }
}

TEST(Sources, OfTheLibraryPrintNothingAndEndNothing) {
  const std::vector<Line> lines = Lines({"src", "include"});
  ASSERT_GT(lines.size(), 2000U);
  ExpectNone(lines, std::regex(R"(\b(\w*print\w*|f?puts?|f?putc|putchar|cout|cerr|clog|perror)\b)"),
             "prints");
  ExpectNone(lines, std::regex(R"(\b(abort|_?exit|_Exit|quick_exit|terminate|assert|raise)\b)"),
             "ends the program");
  ExpectNone(lines, std::regex(R"(\b(thread_local|mutable|goto)\b|\bstatic \w+\*? \w+(;| =|\{))"),
             "keeps a state of its own");
}

TEST(Sources, OfTheLibraryIncludeTheStandardLibraryAlone) {
  const std::regex include(R"(^ *# *include *[<"]([^>"]+)[>"])");
  const std::regex own_or_standard(R"(veska/\w+\.h|frame/\w+\.(h|inl)|[a-z_0-9]+)");
  for (const Line& line : Lines({"src", "include"})) {
    std::smatch match;
    if (!std::regex_search(line.text, match, include)) continue;
    const std::string file = line.file.filename().string();
    if (file == "file_posix.cpp" || file == "file_windows.cpp") continue;  // the platform's files
    const std::string name = match[1];
    const bool platform_time = file == "time_functions.h" && name == "windows.h";
    EXPECT_TRUE(platform_time || std::regex_match(name, own_or_standard))
        << line.file << ':' << line.number << ' ' << name;
  }
}

TEST(Sources, AreAscii) {
  for (const Line& line :
       Lines({"src", "include", "tools", "tests", "fuzz", "bench", "examples"})) {
    for (const char c : line.text) {
      EXPECT_TRUE(c == '\t' || (c >= ' ' && c <= '~')) << line.file << ':' << line.number;
    }
  }
}

TEST(Sources, AreAllBroughtByTheOneHeader) {
  std::ostringstream all;
  all << std::ifstream(kRoot / "include/veska/veska.h").rdbuf();
  for (const auto& entry : fs::directory_iterator(kRoot / "include/veska")) {
    const std::string name = entry.path().filename().string();
    if (name[0] != 'C' || name == "CellOf.h") continue;
    EXPECT_NE(all.str().find("#include <veska/" + name + ">"), std::string::npos) << name;
  }
}

}  // namespace
}  // namespace VESKA
