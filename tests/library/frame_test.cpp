// The frame: records and their layouts, the header, the play lists, the file object.
#include <algorithm>
#include <bit>
#include <map>
#include <regex>
#include <span>
#include <typeinfo>

#include "frame/byte_order.h"
#include "support/heap.h"
#include "support/image_builder.h"

namespace VESKA {
namespace {

using Rows = std::vector<std::string>;

/// The fields in the tables of docs/format.md, by the record that a heading names.
std::map<std::string, Rows> Document() {
  const std::regex heading("#+.*`(\\w+)`.*");
  const std::regex row(R"((\| \d+ \| \d+ \| `\w+` \| [\w, ]+ \|).*)");
  std::map<std::string, Rows> records;
  std::ifstream document(VESKA_SAMPLES "/../docs/format.md");
  std::string record;
  for (std::string line; std::getline(document, line);) {
    std::smatch match;
    if (std::regex_match(line, match, heading)) record = match[1];
    if (std::regex_match(line, match, row)) records[record].push_back(match[1]);
  }
  return records;
}

Rows Documented(std::span<const Field> fields) {
  const char* const kKinds[] = {"number",     "number, derived", "clock value",
                                "cell point", "bytes",           "text"};
  Rows rows;
  for (const Field& field : fields) {
    rows.push_back("| " + std::to_string(field.offset) + " | " + std::to_string(field.width) +
                   " | `" + field.name + "` | " + kKinds[static_cast<int>(field.kind)] + " |");
  }
  return rows;
}

/// The bytes in memory of a record that stands so in the file: each of its numbers is reversed.
Bytes InMemory(Bytes record, std::span<const Field> fields) {
  for (const Field& field : fields) {
    const std::map<FieldKind, std::vector<unsigned>> kWidths = {
        {FieldKind::kNumber, {field.width}},
        {FieldKind::kDerived, {field.width}},
        {FieldKind::kClock, {4, 2}},
        {FieldKind::kCellPoint, {2}},
        {FieldKind::kBytes, {}},
        {FieldKind::kText, {}}};
    auto place = record.begin() + field.offset;
    for (const unsigned width : kWidths.at(field.kind)) {
      if (std::endian::native != std::endian::big) std::reverse(place, place + width);
      place += width;
    }
  }
  return record;
}

template <class Record>
class RecordTest : public testing::Test {};
using Records =
    testing::Types<tag_VMGI_MAT_HEADER, tag_PL_SRPTI, tag_PL_SRP, tag_PGC_GI, tag_PGI, tag_M_C_GI,
                   tag_S_C_GI, tag_M_C_EPI, tag_S_C_EPI, tag_M_AVFITI, tag_M_VOB_STI, tag_M_AVFI_GI,
                   tag_M_VOB_GI, tag_SMLI, tag_AGAPI, tag_TMAP_GI, tag_TM_ENT, tag_VOBU_ENT,
                   tag_S_AVFITI, tag_S_VOB_STI, tag_S_A_ATR, tag_S_AVFI_GI, tag_S_VOG_GI,
                   tag_S_AAFI_GI, tag_S_AAG_GI, tag_AA_ENT, tag_UD_PGCITI, tag_TXTDITI, tag_IT_TXT,
                   tag_MNFITI, tag_A_MNFI>;
TYPED_TEST_SUITE(RecordTest, Records);

TYPED_TEST(RecordTest, IsConvertedNumberByNumber) {
  for (const std::size_t count : {1U, 2U, 7U, 16U, 17U, 33U, 300U}) {
    Bytes file, memory;
    for (unsigned i = 0; i < count; ++i) {
      file += Ramp(kFileSize<TypeParam>, i);
      memory += InMemory(Ramp(kFileSize<TypeParam>, i), kFields<TypeParam>);
    }
    Bytes converted(file.size());
    CopyRecords<TypeParam>(converted.data(), file.data(), count);
    EXPECT_EQ(converted, memory) << count;
    CopyRecords<TypeParam>(converted.data(), memory.data(), count);
    EXPECT_EQ(converted, file) << count;
  }
}

/// The name of a record's type, which compilers give with others around it.
template <class Record>
std::string NameOf() {
  std::smatch name;
  const std::string type = typeid(Record).name();
  std::regex_search(type, name, std::regex("(tag_\\w+?)E?$"));
  return name[1];
}

template <class... Records>
std::map<std::string, Rows> LaidOut(testing::Types<Records...>) {
  return {{NameOf<Records>(), Documented(kFields<Records>)}...,
          {"tag_S_VOB_ENT", Documented(kStillEntryFields[3])},
          {"tag_IT_TXT_ITEM", Documented(kTextPointerFields)}};
}

TEST(Records, AreWhatTheDocumentSays) { EXPECT_EQ(LaidOut(Records()), Document()); }

TEST(Header, CarriesAllAndCompletesItsOwnEndAddressOnly) {
  const Bytes table = PlayLists({Zeros(146), Ramp(146)}).With(0, Hex("AABBCC"));
  ExpectRoundTrip<CPlayListSRPTable>(table);
  ExpectRoundTrip<CVMGI_MAT>(Ramp(512).With(28, Long(511 + table.size())) + table);
  CVMGI_MAT mat;
  EXPECT_EQ(mat.GetDataSize(), 513U);
  Parse(mat, Ramp(512) + table);
  EXPECT_EQ(+mat.GetHeader().number_268, 0x0C0D0E0F10111213U);
  EXPECT_EQ(+mat.GetHeader().cell_point_85.cell, 0x5556);
  EXPECT_EQ(MemoryOf(mat.GetHeader()).Part(87, 6), Ramp(6, 87)) << "is not the header's to convert";
  EXPECT_EQ(+mat.GetPlayListTable()[1]->cell_point.cell, 0x8A8B);
}

TEST(PlayListTable, SizeFollowsTheEndAddressAndWhatIsWrittenTheList) {
  CPlayListSRPTable table;
  EXPECT_EQ(table.GetDataSize(), 1U);
  EXPECT_EQ(Completed(table), PlayLists({}));
  table.AddNode();
  table.AddNode()->text_8[0] = 7;
  EXPECT_EQ(table.GetDataSize(), 8U);
  Bytes all(300);
  table.GetData(all.data());
  EXPECT_EQ(all, PlayLists({}) + Zeros(146 + 8) + Byte(7) + Zeros(137));
  EXPECT_EQ(Completed(table).size(), 300U);
  table.DeleteNodes(0, 1);
  EXPECT_EQ(table.GetDataSize(), 300U);
}

TEST(PlayListTable, DeletesRangesAndSwaps) {
  const struct {
    int a, b;
    std::string deleted, swapped;  // what is left of "abcd", which is all where it is refused
  } kCases[] = {{0, 1, "cd", "bacd"},   {1, 1, "acd", "abcd"},   {0, 3, "", "dbca"},
                {2, 3, "ab", "abdc"},   {2, 1, "abcd", "acbd"},  {3, 0, "abcd", "dbca"},
                {0, 4, "abcd", "abcd"}, {-1, 2, "abcd", "abcd"}, {4, 4, "abcd", "abcd"}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(testing::Message() << c.a << ' ' << c.b);
    for (const bool deletes : {true, false}) {
      CPlayListSRPTable table;
      for (const unsigned char name : Text("abcd", 4)) table.AddNode()->text_8[0] = name;
      const tag_PL_SRP* last = table[3];
      const bool done = deletes ? table.DeleteNodes(c.a, c.b) : table.SwapNode(c.a, c.b);
      EXPECT_EQ(done, deletes ? c.deleted != "abcd" : c.a >= 0 && c.a < 4 && c.b < 4);
      std::string left;
      for (int i = 0; i < table.GetCount(); ++i) {
        left.push_back(static_cast<char>(table[i]->text_8[0]));
        EXPECT_EQ(table[i] == last, left.back() == 'd') << "records do not move in memory";
      }
      EXPECT_EQ(left, deletes ? c.deleted : c.swapped);
    }
  }
}

TEST(FileObject, AnEmptyOneIsLaidOutIn540Bytes) {
  CVMGInfo info;
  info.AutoComplete();
  File file;
  file.header = Zeros(512);
  EXPECT_EQ(file.Image().size(), 540U);
  EXPECT_EQ(Written(info), file.Image());
  unsigned char* data = info.AllocData();
  EXPECT_EQ(Bytes(data, data + 540), Zeros(540));
  info.FreeData(data);
  info.FreeData(nullptr);
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
  info.GetMAT().GetHeader().MNFIT_SA = 1;
  EXPECT_EQ(Completed(info), image);
  File rest = EveryTable();
  rest.texts = rest.manufacturers = {};
  info.GetMNFInfoTable().DeleteNode(0);
  info.GetTextDataMgr().Clear();
  EXPECT_EQ(Completed(info), rest.Image());
  rest.manufacturers = Word(1) + Long(76) + Ramp(32) + Word(40) + Zeros(37);
  info.GetMNFInfoTable().AddNode();
  EXPECT_EQ(+info.GetMAT().GetHeader().MNFIT_SA, 0U);
  EXPECT_EQ(Completed(info), rest.Image());
}

/// The load flags of the tables that are not empty.
unsigned Present(const CVMGInfo& info) {
  return (info.HasMovieAVFileTable() ? 0x01U : 0) | (info.HasStillAVFileTable() ? 0x02U : 0) |
         (info.HasUserPGCTable() ? 0x08U : 0) | (info.HasTextDataMgr() ? 0x10U : 0) |
         (info.HasMNFInfoTable() ? 0x20U : 0);
}

TEST(FileObject, LoadsTheTablesThatTheFlagsSelect) {
  const Bytes image = EveryTable().Image();
  const Bytes no_addresses = image.With(256, Zeros(8)).With(308, Zeros(4)).With(352, Zeros(8));
  for (unsigned flags = 0; flags < 256; ++flags) {
    SCOPED_TRACE(flags);
    CVMGInfo info;
    ASSERT_TRUE(Load(info, image, static_cast<unsigned char>(flags)));
    EXPECT_EQ(Present(info), flags & 0x3BU);
    EXPECT_TRUE(info.HasOriginalPGC() && !info.GetMAT().GetPlayListTable().IsEmpty());
    EXPECT_EQ(Completed(info) == image, Present(info) == 0x3B);
    ASSERT_TRUE(Load(info, no_addresses, static_cast<unsigned char>(flags)));
    EXPECT_EQ(Present(info), 0U);
  }
}

TEST(FileObject, AFailedLoadLeavesWhatItHadRead) {
  const Bytes image = EveryTable().Image();
  CVMGInfo info;
  ASSERT_TRUE(Load(info, image));
  EXPECT_FALSE(info.LoadFromMemory(nullptr, 0x3B) || info.LoadFromMemory(nullptr, 1000, 0x3B));
  EXPECT_FALSE(info.LoadFromFile("no such file", 0x3B));
  EXPECT_EQ(Written(info), image);
  EXPECT_FALSE(Load(info, image.Part(0, image.size() - 1)));
  EXPECT_EQ(Present(info), 0x1BU) << "the last table is not there";

  Bytes wrong = image.With(11, Text("1", 1));
  for (const bool bounded : {true, false}) {
    ASSERT_TRUE(Load(info, image));
    EXPECT_FALSE(bounded ? Load(info, wrong) : info.LoadFromMemory(wrong.data(), 0x3B));
    EXPECT_EQ(MemoryOf(info.GetMAT().GetHeader()).Part(0, 12), wrong.Part(0, 12));
    EXPECT_EQ(info.GetMAT().GetPlayListTable().GetCount(), 1);
    EXPECT_TRUE(Present(info) == 0 && !info.HasOriginalPGC());
  }
}

TEST(FileObject, ConvertsPositionsOfCellPointsIntoMovieCells) {
  const std::pair<unsigned, bool> kCells[] = {{1, true},  {2, false}, {3, true},
                                              {4, false}, {0, false}, {0xFFFF, false}};
  for (const auto& [cell, is_movie] : kCells) {
    SCOPED_TRACE(cell);
    const Bytes point = Word(cell) + Hex("010203040506");
    File file;
    file.header = file.header.With(70, point).With(85, point);
    file.play_lists = PlayLists({Ramp(138) + point, Zeros(138) + point});
    file.chain =
        Chain({Program(2, point), Program(1, point)}, {MovieCell(), StillCell(), MovieCell()});
    file.user_chains = UserChains({Chain({Program(1, point)}, {MovieCell()})});
    CVMGInfo info;
    ASSERT_TRUE(Load(info, file.Image()));
    const tag_VMGI_MAT_HEADER& header = info.GetMAT().GetHeader();
    std::vector<tag_CELL_POINT> points = {header.cell_point_70, header.cell_point_85};
    for (int i = 0; i < 2; ++i) {
      points.push_back(info.GetMAT().GetPlayListTable()[i]->cell_point);
      points.push_back(info.GetOriginalPGC().GetPGNode(i)->cell_point);
    }
    const tag_CELL_POINT kConverted = {static_cast<std::uint16_t>(cell), 0x01020304, 0x0506};
    for (const tag_CELL_POINT& read : points) {
      const Bytes kept = MemoryOf(read).Part(2, 6);
      EXPECT_TRUE(is_movie ? read == kConverted : kept == point.Part(2, 6));
    }
    const tag_PGI* users = info.GetUserPGCTable()[0]->UD_PGCI.GetPGNode(0);
    EXPECT_EQ(MemoryOf(*users).Part(136, 6), point.Part(2, 6)) << "never converted";
    EXPECT_EQ(Written(info), file.Image());
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

TEST(FileObject, LoadingTakesFewHeapCallsForLongLists) {
  const Bytes image = Sample("movie_recorder");  // with some 2,000 records
  CVMGInfo info;
  const std::size_t calls = heap::Calls();
  ASSERT_TRUE(Load(info, image));
  EXPECT_LE(heap::Calls() - calls, 60U);
}

}  // namespace
}  // namespace VESKA
