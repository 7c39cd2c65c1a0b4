// The frame: records and their layouts, the header, the play lists, the file object.
#include <algorithm>
#include <bit>
#include <fstream>
#include <map>
#include <regex>
#include <span>
#include <string>
#include <utility>

#include "frame/byte_order.h"
#include "heap.h"
#include "image_builder.h"

namespace VESKA {
namespace {

template <class Record>
Bytes Convert(const Bytes& bytes) {
  Bytes converted(bytes.size());
  SwapCopy<Record>(converted.data(), bytes.data(), bytes.size() / kFileSize<Record>);
  return converted;
}

struct RecordFormat {
  struct Run {
    std::ptrdiff_t offset, width;
  };

  std::string name;
  Bytes (*convert)(const Bytes&);
  std::size_t size;
  std::span<const Field> fields;
  std::vector<Run> numbers;  // in file order; those of one byte left out
};

template <class Record>
RecordFormat Format(const char* name, std::size_t size, std::vector<RecordFormat::Run> numbers) {
  return {name, Convert<Record>, size, kFields<Record>, std::move(numbers)};
}

const std::vector<RecordFormat> kRecords = {
    Format<tag_VMGI_MAT_HEADER>("tag_VMGI_MAT_HEADER", 512,
                                {{12, 4},
                                 {28, 4},
                                 {64, 2},
                                 {70, 2},
                                 {85, 2},
                                 {256, 4},
                                 {260, 4},
                                 {268, 8},
                                 {304, 4},
                                 {308, 4},
                                 {352, 4},
                                 {356, 4}}),
    Format<tag_PL_SRPTI>("tag_PL_SRPTI", 8, {{4, 4}}),
    Format<tag_PL_SRP>("tag_PL_SRP", 146, {{136, 2}, {138, 2}}),
    Format<tag_PGC_GI>("tag_PGC_GI", 4, {{2, 2}}),
    Format<tag_PGI>("tag_PGI", 142, {{2, 2}, {132, 2}, {134, 2}}),
    Format<tag_M_C_GI>("tag_M_C_GI", 18, {{2, 2}, {4, 2}, {6, 4}, {10, 2}, {12, 4}, {16, 2}}),
    Format<tag_S_C_GI>("tag_S_C_GI", 8, {{2, 2}, {4, 2}}),
    Format<tag_M_C_EPI>("tag_M_C_EPI", 7, {{1, 4}, {5, 2}}),
    Format<tag_S_C_EPI>("tag_S_C_EPI", 2, {}),
    Format<tag_M_AVFITI>("tag_M_AVFITI", 8, {{4, 4}}),
    Format<tag_M_VOB_STI>("tag_M_VOB_STI", 60, {}),
    Format<tag_M_AVFI_GI>("tag_M_AVFI_GI", 2, {{0, 2}}),
    Format<tag_M_VOB_GI>("tag_M_VOB_GI", 23, {{9, 4}, {13, 2}, {15, 4}, {19, 2}, {21, 2}}),
    Format<tag_SMLI>("tag_SMLI", 12, {{0, 4}, {4, 2}, {6, 4}, {10, 2}}),
    Format<tag_AGAPI>("tag_AGAPI", 16, {{0, 4}, {4, 2}, {6, 4}, {10, 2}, {12, 2}, {14, 2}}),
    Format<tag_TMAP_GI>("tag_TMAP_GI", 10, {{0, 2}, {2, 2}, {4, 2}, {6, 4}}),
    Format<tag_TM_ENT>("tag_TM_ENT", 7, {{0, 2}, {3, 4}}),
    Format<tag_VOBU_ENT>("tag_VOBU_ENT", 3, {{1, 2}}),
    Format<tag_S_AVFITI>("tag_S_AVFITI", 8, {{4, 4}}),
    Format<tag_S_VOB_STI>("tag_S_VOB_STI", 54, {}),
    Format<tag_S_A_ATR>("tag_S_A_ATR", 2, {}),
    Format<tag_S_AVFI_GI>("tag_S_AVFI_GI", 2, {{0, 2}}),
    Format<tag_S_VOG_GI>("tag_S_VOG_GI", 18, {{12, 4}, {16, 2}}),
    Format<tag_S_AAFI_GI>("tag_S_AAFI_GI", 2, {{0, 2}}),
    Format<tag_S_AAG_GI>("tag_S_AAG_GI", 6, {{2, 4}}),
    Format<tag_AA_ENT>("tag_AA_ENT", 5, {{1, 2}, {3, 2}}),
    Format<tag_UD_PGCITI>("tag_UD_PGCITI", 6, {{2, 4}}),
    Format<tag_TXTDITI>("tag_TXTDITI", 8, {{2, 2}, {4, 4}}),
    Format<tag_IT_TXT>("tag_IT_TXT", 2, {}),
    Format<tag_MNFITI>("tag_MNFITI", 38, {{0, 2}, {2, 4}}),
    Format<tag_A_MNFI>("tag_A_MNFI", 37, {})};

TEST(Records, HaveTheSizesAndNumbersOfTheFormat) {
  for (const RecordFormat& record : kRecords) {
    SCOPED_TRACE(record.name);
    EXPECT_EQ(record.fields.back().offset + record.fields.back().width, record.size);
    for (const std::size_t count : {1U, 2U, 7U, 16U, 17U, 33U, 100U, 1000U}) {
      const Bytes file = Ramp(count * record.size);
      Bytes memory = file;
      for (std::size_t i = 0; i < count && std::endian::native != std::endian::big; ++i) {
        const auto start = memory.begin() + static_cast<std::ptrdiff_t>(i * record.size);
        for (const auto& [offset, width] : record.numbers) {
          std::reverse(start + offset, start + offset + width);
        }
      }
      EXPECT_EQ(record.convert(file), memory) << count;
      EXPECT_EQ(record.convert(memory), file) << count;
    }
  }
}

/// A field as the tables of docs/format.md describe it.
std::string Described(const Field& field) {
  const std::map<FieldKind, const char*> kKinds = {
      {FieldKind::kNumber, "number"},     {FieldKind::kDerived, "number, derived"},
      {FieldKind::kClock, "clock value"}, {FieldKind::kCellPoint, "cell point"},
      {FieldKind::kBytes, "bytes"},       {FieldKind::kText, "text"}};
  return "| " + std::to_string(field.offset) + " | " + std::to_string(field.width) + " | `" +
         field.name + "` | " + kKinds.at(field.kind) + " |";
}

TEST(Records, AreDocumentedAsTheyAre) {
  std::ifstream document(VESKA_SAMPLES "/../docs/format.md");
  ASSERT_TRUE(document);
  std::map<std::string, std::vector<std::string>> documented;  // by what the heading names
  const std::regex names_record("#+.*`(\\w+)`.*");
  const std::regex is_field(R"(^\| \d+ \| \d+ \| `\w+` \| [\w, ]+ \|)");
  std::string heading;
  for (std::string line; std::getline(document, line);) {
    std::smatch match;
    if (std::regex_match(line, match, names_record)) heading = match[1];
    if (std::regex_search(line, match, is_field)) documented[heading].push_back(match[0]);
  }
  const auto expect = [&](const std::string& name, std::span<const Field> fields) {
    std::vector<std::string> expected;
    for (const Field& field : fields) expected.push_back(Described(field));
    EXPECT_EQ(documented[name], expected) << name;
    documented.erase(name);
  };
  for (const RecordFormat& record : kRecords) expect(record.name, record.fields);
  expect("tag_S_VOB_ENT", kStillEntryFields[3]);
  expect("tag_IT_TXT_ITEM", kTextPointerFields);
  EXPECT_TRUE(documented.empty()) << documented.begin()->first << " is documented only";
}

TEST(Header, IsReadAndWrittenFieldByField) {
  const Bytes image = Ramp(512) + PlayLists({Ramp(146)});
  CVMGI_MAT mat;
  Parse(mat, image);
  const tag_VMGI_MAT_HEADER& header = mat.GetHeader();
  EXPECT_EQ(header.VMG_ID[11], 11);
  EXPECT_EQ(+header.VMG_EA, 0x0C0D0E0FU);
  EXPECT_EQ(header.reserved_16[0], 16);
  EXPECT_EQ(+header.VMGI_MAT_EA, 0x1C1D1E1FU);
  EXPECT_EQ(+header.number_64, 0x4041);
  EXPECT_EQ(+header.cell_point_70.cell, 0x4647);
  EXPECT_EQ(MemoryOf(header).Part(72, 6), Ramp(6, 72));
  EXPECT_EQ(+header.cell_point_85.cell, 0x5556);
  EXPECT_EQ(header.text_93[127], 220);
  EXPECT_EQ(+header.M_AVFIT_SA, 0x00010203U);
  EXPECT_EQ(+header.S_AVFIT_SA, 0x04050607U);
  EXPECT_EQ(+header.number_268, 0x0C0D0E0F10111213U);
  EXPECT_EQ(+header.ORG_PGCI_SA, 0x30313233U);
  EXPECT_EQ(+header.UD_PGCIT_SA, 0x34353637U);
  EXPECT_EQ(+header.TXTDT_MG_SA, 0x60616263U);
  EXPECT_EQ(+header.MNFIT_SA, 0x64656667U);
  EXPECT_EQ(header.reserved_360[151], 0xFF);
  EXPECT_EQ(Written(mat), image);
}

TEST(Header, CompletesItsOwnEndAddressOnly) {
  CVMGI_MAT mat;
  EXPECT_EQ(mat.GetDataSize(), 513U);
  EXPECT_EQ(Completed(mat), Zeros(512).With(28, Long(519)) + PlayLists({}));
  mat.GetPlayListTable().AddNode();
  mat.GetHeader().VMG_EA = 77;
  EXPECT_EQ(Completed(mat),
            Zeros(512).With(12, Long(77)).With(28, Long(665)) + PlayLists({Zeros(146)}));
  mat.Clear();
  EXPECT_EQ(MemoryOf(mat.GetHeader()), Zeros(512));
  EXPECT_TRUE(mat.GetPlayListTable().IsEmpty());
}

TEST(PlayListTable, IsReadAndWrittenFieldByField) {
  CPlayListSRPTable table;
  const Bytes image = PlayLists({Zeros(146), Ramp(146)}).With(0, Hex("AABBCC"));
  Parse(table, image);
  EXPECT_EQ(table.GetHeader().reserved_0[2], 0xCC);
  EXPECT_EQ(table.GetHeader().PL_SRP_Ns, 2);
  EXPECT_EQ(+table.GetHeader().PL_SRPT_EA, 299U);
  EXPECT_EQ(table[1]->reserved_0[7], 7);
  EXPECT_EQ(table[1]->text_8[0], 8);
  EXPECT_EQ(+table[1]->number_136, 0x8889);
  EXPECT_EQ(+table[1]->cell_point.cell, 0x8A8B);
  EXPECT_EQ(MemoryOf(*table[1]).Part(140, 6), Ramp(6, 140));
  EXPECT_EQ(Written(table), image);
}

TEST(PlayListTable, SizeFollowsTheEndAddress) {
  CPlayListSRPTable table;
  EXPECT_EQ(table.GetDataSize(), 1U);
  EXPECT_EQ(Completed(table), PlayLists({}));
  EXPECT_TRUE(table.IsEmpty());
  table.AddNode();
  table.AddNode();
  EXPECT_EQ(table.GetDataSize(), 8U);
  EXPECT_EQ(Completed(table), PlayLists({Zeros(146), Zeros(146)}));
  table.DeleteNodes(0, 1);
  EXPECT_EQ(table.GetDataSize(), 300U);
}

TEST(PlayListTable, DeletesRangesAndSwaps) {
  const struct {
    int a, b;
    const char *deleted, *swapped;  // what is left of "abcd"; null where it is refused
  } kCases[] = {{0, 1, "cd", "bacd"},     {1, 1, "acd", "abcd"},     {0, 3, "", "dbca"},
                {2, 3, "ab", "abdc"},     {2, 1, nullptr, "acbd"},   {3, 0, nullptr, "dbca"},
                {0, 4, nullptr, nullptr}, {-1, 2, nullptr, nullptr}, {4, 4, nullptr, nullptr}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(testing::Message() << c.a << ' ' << c.b);
    const auto check = [](const char* expected, auto operation) {
      CPlayListSRPTable table;
      std::vector<tag_PL_SRP*> records;
      for (const char name : std::string("abcd")) {
        records.push_back(table.AddNode());
        records.back()->text_8[0] = static_cast<unsigned char>(name);
      }
      EXPECT_EQ(operation(table), expected != nullptr);
      std::string left;
      for (int i = 0; i < table.GetCount(); ++i) {
        left.push_back(static_cast<char>(table[i]->text_8[0]));
        EXPECT_EQ(table[i], records[static_cast<std::size_t>(left.back() - 'a')]);
      }
      EXPECT_EQ(left, expected != nullptr ? expected : "abcd");
    };
    check(c.deleted, [&](CPlayListSRPTable& table) { return table.DeleteNodes(c.a, c.b); });
    check(c.swapped, [&](CPlayListSRPTable& table) { return table.SwapNode(c.a, c.b); });
  }
}

TEST(FileObject, AnEmptyOneIsLaidOutIn540Bytes) {
  CVMGInfo info;
  info.AutoComplete();
  File file;
  file.header = Zeros(512);
  EXPECT_EQ(file.Image().size(), 540U);
  EXPECT_EQ(Written(info), file.Image());
  EXPECT_FALSE(info.HasOriginalPGC());
}

/// A small file with something in each table.
File EveryTable() {
  File file;
  file.play_lists = PlayLists({Ramp(138) + Word(1) + Ramp(6)});
  file.movie = Hex("0000 00 01 00000043") + Ramp(60);
  file.still = Hex("00 00 01 00 0000003D") + Ramp(54);
  file.chain = Chain({Program(1, Word(1) + Ramp(6))}, {MovieCell()});
  file.user_chains = UserChains({Chain({}, {StillCell()})});
  file.texts = Hex("11 00 0001 00000010  000C 0005  01 03 414243");
  file.manufacturers = Word(1) + Long(79) + Ramp(32) + Word(40) + Ramp(37) + Hex("ABCDEF");
  return file;
}

TEST(FileObject, LaysOutTablesBackToBackAndTheLastThreeUnlessEmpty) {
  const Bytes image = EveryTable().Image();
  CVMGInfo info;
  ASSERT_TRUE(Load(info, image));
  EXPECT_EQ(Completed(info), image);
  info.GetMAT().GetHeader().MNFIT_SA = 1;
  EXPECT_EQ(Completed(info), image);

  const unsigned long end = info.GetMAT().GetHeader().MNFIT_SA;
  info.GetMNFInfoTable().DeleteNode(0);
  info.GetTextDataMgr().Clear();
  info.AutoComplete();
  EXPECT_EQ(+info.GetMAT().GetHeader().TXTDT_MG_SA, 0U);
  EXPECT_EQ(+info.GetMAT().GetHeader().MNFIT_SA, 0U);
  EXPECT_EQ(info.GetDataSize(), end - 17);
  info.GetMNFInfoTable().AddNode();
  EXPECT_EQ(+info.GetMAT().GetHeader().MNFIT_SA, 0U);
  info.AutoComplete();
  EXPECT_EQ(+info.GetMAT().GetHeader().MNFIT_SA, end - 17);
  EXPECT_EQ(+info.GetMAT().GetHeader().VMG_EA, end - 17 + 77 - 1);
}

TEST(FileObject, LoadsTheTablesThatTheFlagsSelect) {
  const Bytes image = EveryTable().Image();
  for (unsigned flags = 0; flags < 256; ++flags) {
    SCOPED_TRACE(flags);
    CVMGInfo info;
    ASSERT_TRUE(Load(info, image, static_cast<unsigned char>(flags)));
    EXPECT_EQ(info.GetMAT().GetPlayListTable().GetCount(), 1);
    EXPECT_TRUE(info.HasOriginalPGC());
    EXPECT_EQ(info.HasMovieAVFileTable(), (flags & 0x01U) != 0);
    EXPECT_EQ(info.HasStillAVFileTable(), (flags & 0x02U) != 0);
    EXPECT_EQ(info.HasUserPGCTable(), (flags & 0x08U) != 0);
    EXPECT_EQ(info.HasTextDataMgr(), (flags & 0x10U) != 0);
    EXPECT_EQ(info.HasMNFInfoTable(), (flags & 0x20U) != 0);
    EXPECT_EQ(Completed(info) == image, (flags & 0x3BU) == 0x3B);
  }
  CVMGInfo info;  // a table without an address is not there, whatever the flags
  ASSERT_TRUE(Load(info, image.With(256, Zeros(8)).With(308, Zeros(4)).With(352, Zeros(8)), 0xFF));
  EXPECT_FALSE(info.HasMovieAVFileTable() || info.HasStillAVFileTable() || info.HasUserPGCTable() ||
               info.HasTextDataMgr() || info.HasMNFInfoTable());
}

TEST(FileObject, AFailedLoadLeavesWhatItHadRead) {
  const Bytes image = EveryTable().Image();
  CVMGInfo info;
  ASSERT_TRUE(Load(info, image));
  EXPECT_FALSE(info.LoadFromMemory(nullptr, 0x3B));
  EXPECT_FALSE(info.LoadFromMemory(nullptr, 1000, 0x3B));
  EXPECT_FALSE(info.LoadFromFile("no such file", 0x3B));
  EXPECT_EQ(Written(info), image);

  const auto expect_header_only = [&info] {
    EXPECT_EQ(info.GetMAT().GetHeader().VMG_ID[0], 'D');
    EXPECT_EQ(info.GetMAT().GetPlayListTable().GetCount(), 1);
    EXPECT_FALSE(info.HasOriginalPGC() || info.HasMovieAVFileTable() || info.HasUserPGCTable());
  };
  EXPECT_FALSE(Load(info, image.With(11, Text("1", 1))));
  expect_header_only();
  Bytes wrong = image.With(11, Zeros(1));
  ASSERT_TRUE(Load(info, image));
  EXPECT_FALSE(info.LoadFromMemory(wrong.data(), 0x3B));
  expect_header_only();

  EXPECT_FALSE(Load(info, image.Part(0, image.size() - 1)));
  EXPECT_TRUE(info.HasOriginalPGC() && info.HasTextDataMgr());
  EXPECT_FALSE(info.HasMNFInfoTable());
}

TEST(FileObject, ConvertsPositionsOfCellPointsIntoMovieCells) {
  const struct {
    std::size_t cell;
    bool converted;
  } kCases[] = {{1, true}, {2, false}, {3, true}, {4, false}, {0, false}, {0xFFFF, false}};
  const Bytes position = Hex("010203040506");
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.cell);
    const Bytes point = Word(c.cell) + position;
    File file;
    file.header = file.header.With(70, point).With(85, point);
    file.play_lists = PlayLists({Ramp(138) + point, Zeros(138) + point});
    file.chain =
        Chain({Program(2, point), Program(1, point)}, {MovieCell(), StillCell(), MovieCell()});
    file.user_chains = UserChains({Chain({Program(1, point)}, {MovieCell()})});
    const Bytes image = file.Image();
    CVMGInfo info;
    ASSERT_TRUE(Load(info, image));
    const auto expect = [&](tag_CELL_POINT read, bool converted) {
      EXPECT_EQ(+read.cell, c.cell);
      if (converted) {
        EXPECT_EQ(+read.position, 0x01020304U);
        EXPECT_EQ(+read.position_ext, 0x0506);
      } else {
        EXPECT_EQ(MemoryOf(read).Part(2, 6), position);
      }
    };
    expect(info.GetMAT().GetHeader().cell_point_70, c.converted);
    expect(info.GetMAT().GetHeader().cell_point_85, c.converted);
    for (int i = 0; i < 2; ++i) {
      expect(info.GetMAT().GetPlayListTable()[i]->cell_point, c.converted);
      expect(info.GetOriginalPGC().GetPGNode(i)->cell_point, c.converted);
    }
    expect(info.GetUserPGCTable()[0]->UD_PGCI.GetPGNode(0)->cell_point, false);
    EXPECT_EQ(Written(info), image);
  }
}

TEST(FileObject, CellNumber0xFFFFIsNoneEvenInAChainThatLong) {
  File file;
  file.header = file.header.With(70, Hex("FFFF 010203040506"));
  file.chain = Hex("00 00 FFFF");
  for (int i = 0; i < 0xFFFF; ++i) file.chain += Long(4 + 4 * 0xFFFF);
  file.chain += MovieCell();
  Bytes image = file.Image();
  CVMGInfo info;
  ASSERT_TRUE(info.LoadFromMemory(image.data(), 0));
  ASSERT_EQ(info.GetOriginalPGC().GetCellNode(0xFFFE)->CI->GetType(), CELL_MOVIE);
  EXPECT_EQ(MemoryOf(info.GetMAT().GetHeader()).Part(72, 6), Hex("010203040506"));
}

TEST(FileObject, LoadingTakesAHandfulOfHeapCallsForALongList) {
  const std::size_t n = 200;
  Bytes vobus = Zeros(25) + Word(9 * n) + Zeros(6 + 27 * n);
  Bytes texts = Hex("00 00 0001") + Long(11 + 3 * n) + Word(12) + Word(3 * n);
  Bytes entry_points = MovieCell().With(4, Word(n));
  for (std::size_t i = 0; i < n; ++i) {
    texts += Hex("01 01 41");
    entry_points += Byte(0x40) + Zeros(134);
  }
  File file;
  file.play_lists = PlayLists(std::vector<Bytes>(n, Zeros(146)));
  file.movie = Hex("0000 01 00") + Long(13 + vobus.size()) + Hex("0001 0000000E") + vobus;
  file.chain = Chain(std::vector<Bytes>(n, Zeros(142)), {entry_points, StillCell()});
  file.user_chains = UserChains({Chain({}, std::vector<Bytes>(9 * n, MovieCell()))});
  file.texts = texts;
  const Bytes image = file.Image();
  CVMGInfo info;
  const std::size_t calls = heap::Calls();
  ASSERT_TRUE(Load(info, image));
  EXPECT_LE(heap::Calls() - calls, 20U);
  EXPECT_EQ(Written(info), image);
}

TEST(FileObject, BuffersAreZeroAndGoBack) {
  CVMGInfo info;
  info.AutoComplete();
  unsigned char* data = info.AllocData();
  ASSERT_NE(data, nullptr);
  EXPECT_EQ(Bytes(data, data + 540), Zeros(540));
  info.FreeData(data);
  info.FreeData(nullptr);
}

}  // namespace
}  // namespace VESKA
