// Program chains: the two kinds of cell, the chain and the table of user-defined chains.
#include <limits>

#include "frame/image.h"
#include "support/heap.h"
#include "support/image_builder.h"

namespace VESKA {
namespace {

/// What the tests need to know of a kind of cell.
struct Movie {
  using Cell = CMovieCell;
  static constexpr std::size_t kHeader = 18, kEntry = 7;
  static constexpr unsigned kKind = 0x00;
};
struct Still {
  using Cell = CStillCell;
  static constexpr std::size_t kHeader = 8, kEntry = 2;
  static constexpr unsigned kKind = 0x20;
};

template <class Kind>
class CellTest : public testing::Test {
 public:
  /// A cell with an entry point for each type.
  static Bytes Image(unsigned C_TY, const Bytes& types) {
    Bytes image = Ramp(Kind::kHeader).With(1, Byte(C_TY)).With(4, Word(types.size()));
    for (const unsigned char type : types) {
      image += Byte(type) + Ramp(Kind::kEntry - 1, 0x41) + Ramp(type < 0x40 ? 0 : 128, type);
    }
    return image;
  }
};
using Kinds = testing::Types<Movie, Still>;
TYPED_TEST_SUITE(CellTest, Kinds);

TYPED_TEST(CellTest, ReadsEntryPointsByTheirType) {
  const Bytes types = Hex("00 40 3F 80 C0 7F 05");
  ExpectRoundTrip<typename TypeParam::Cell>(this->Image(TypeParam::kKind + 3, types));
  typename TypeParam::Cell cell;
  EXPECT_EQ(cell.GetType(), TypeParam::kKind == 0 ? CELL_MOVIE : CELL_STILL);
  Parse(cell, this->Image(0xFF, types));
  EXPECT_EQ(cell.GetDataSize(), TypeParam::kHeader + 7 * TypeParam::kEntry + 4 * 128);
  for (int i = 0; i < 7; ++i) {
    ASSERT_EQ(cell[i]->EP_TY, types[static_cast<std::size_t>(i)]);
    ASSERT_EQ(cell[i]->block != nullptr, cell[i]->EP_TY >= 0x40);
  }
  EXPECT_EQ(cell[1]->block[127], 0xBF);
  EXPECT_EQ(Written(cell), this->Image(0xFF, types));  // its kind is marked by AutoComplete
  EXPECT_EQ(Completed(cell), this->Image(0x1F | TypeParam::kKind, types));
}

TYPED_TEST(CellTest, SizeCountsTheFirstEntryPointsThatTheHeaderCounts) {
  typename TypeParam::Cell cell;
  cell.AddNode(CELL_ENTRY_SHORT);
  auto* entry = cell.AddNode(CELL_ENTRY_LONG);
  EXPECT_EQ(Bytes(entry->block, entry->block + 128), Zeros(128));
  EXPECT_EQ(+cell.AddNode(static_cast<tag_CELL_ENTRY_TYPE>(2))->block, nullptr);
  EXPECT_NE(+cell.InsertNode(0, CELL_ENTRY_LONG)->block, nullptr);
  EXPECT_EQ(cell.GetDataSize(), TypeParam::kHeader);
  cell.AutoComplete();
  const std::size_t all_short = TypeParam::kHeader + 4 * TypeParam::kEntry;
  EXPECT_EQ(cell.GetDataSize(), all_short);
  entry->EP_TY = 0x40;
  EXPECT_EQ(cell.GetDataSize(), all_short + 128);
  cell.DeleteNode(3);
  EXPECT_EQ(cell.GetDataSize(), all_short + 128 - TypeParam::kEntry);
  cell.AutoComplete();
  cell.AddNode(CELL_ENTRY_SHORT);
  EXPECT_EQ(cell.GetDataSize(), all_short + 128 - TypeParam::kEntry);
}

TYPED_TEST(CellTest, BytesOfAnEntryPointFollowItsTypeWhateverItsBlock) {
  typename TypeParam::Cell cell;
  cell.AddNode(CELL_ENTRY_SHORT)->EP_TY = 0x80;  // called long, without block
  cell.AddNode(CELL_ENTRY_LONG)->EP_TY = 0x3F;   // called short, with one
  cell[1]->block[5] = 9;
  EXPECT_EQ(Completed(cell), Byte(0) + Byte(TypeParam::kKind) + Hex("0000 0002") +
                                 Zeros(TypeParam::kHeader - 6) + Byte(0x80) +
                                 Zeros(TypeParam::kEntry - 1 + 128) + Byte(0x3F) +
                                 Zeros(TypeParam::kEntry - 1));
}

TEST(ProgramChain, HoldsProgramsAndCellsOfBothKinds) {
  const Bytes image = Byte(0xAB) + Byte(2) + Word(3) + Zeros(142) + Ramp(142, 0x50) +
                      Pointed(4 + 284, {MovieCell().With(1, Byte(0x1F)), StillCell(), MovieCell()});
  ExpectRoundTrip<CPGCInfo>(image);
  CPGCInfo chain;
  Parse(chain, image);
  EXPECT_EQ(+chain.GetPGNode(1)->number_132, 0xD4D5);
  EXPECT_EQ(+chain.GetPGNode(1)->cell_point.cell, 0xD6D7);
  EXPECT_EQ(MemoryOf(*chain.GetPGNode(1)).Part(136, 6), Ramp(6, 0xD8));
  EXPECT_EQ(chain.GetCellNode(1)->CI_SA, 4U + 284 + 12 + 18);
  EXPECT_EQ(chain.GetCellNode(0)->CI->GetType(), CELL_MOVIE);
  EXPECT_EQ(chain.GetCellNode(1)->CI->GetType(), CELL_STILL);
  const CPGCInfo copy = chain;
  chain = *&chain;
  EXPECT_EQ(chain.GetCellNode(1)->CI_SA, 4U + 284 + 12 + 18);
  chain = copy;
  EXPECT_EQ(chain.GetCellNode(1)->CI_SA, 0U);

  const Bytes first = MovieCell().With(2, Word(1)), second = StillCell().With(2, Word(2));
  Parse(chain, Hex("00 00 0003") + Long(30) + Long(20) + Long(30) + Zeros(4) + second + Zeros(2) +
                   first);  // the cells where the pointers say
  EXPECT_EQ(Completed(chain), Chain({}, {first, second, first}));
}

TEST(ProgramChain, SizeFollowsTheLists) {
  CPGCInfo chain;
  EXPECT_EQ(Completed(chain), Zeros(4));
  chain.AddPGNode();
  EXPECT_TRUE(chain.IsEmpty());
  chain.AddCellNode(CELL_MOVIE);
  EXPECT_EQ(chain.AddCellNode(static_cast<tag_CELL_TYPE>(7))->CI->GetType(), CELL_STILL);
  EXPECT_TRUE(chain.GetCellNode(1)->CI->IsEmpty());
  EXPECT_EQ(chain.GetDataSize(), 4U + 142 + 8 + 18 + 8);
  EXPECT_EQ(Completed(chain), Chain({Zeros(142)}, {MovieCell(), StillCell()}));

  auto* cell = new CStillCell;  // one of the host's own
  cell->AddNode(CELL_ENTRY_LONG)->EP_TY = 0x40;
  EXPECT_FALSE(cell->IsEmpty());
  chain.InsertCellNode(0, CELL_MOVIE)->CI = cell;
  CPGCInfo copy = chain;
  EXPECT_EQ(Completed(copy), Completed(chain));
  EXPECT_TRUE(copy == chain);
  copy.GetCellNode(1)->CI_SA = 0;
  EXPECT_FALSE(copy == chain);
  CPGCInfo movie, still;
  movie.AddCellNode(CELL_MOVIE);
  still.AddCellNode(CELL_STILL);
  EXPECT_FALSE(movie == still);
  EXPECT_EQ(chain.GetDataSize(), 4U + 142 + 12 + 138 + 18 + 8);
  EXPECT_TRUE(chain.DeleteCellNode(0));
}

/// A cell of a host's: what it holds is the bytes of its entry points, 2 each.
class OwnCell : public CBaseCell {
 public:
  tag_CELL_TYPE GetType() override { return CELL_STILL; }
  bool Parse(unsigned char* const data) override {
    bytes = Bytes(data, data + 8 + 2 * (data[4] << 8U | data[5]));
    return parses;
  }
  void Clear() override { bytes = StillCell(); }
  bool IsEmpty() const override { return GetCount() == 0; }
  int GetCount() const override { return static_cast<int>(bytes.size() - 8) / 2; }
  void AutoComplete() override { bytes = bytes.With(4, Word((bytes.size() - 8) / 2)); }
  unsigned long GetDataSize() const override { return 8 + 2UL * bytes[5]; }
  void GetData(unsigned char* out) override { std::copy(bytes.begin(), bytes.end(), out); }

  Bytes bytes = StillCell();
  bool parses = true;
};

TEST(ProgramChain, TakesCellsOfAClassOfTheHosts) {
  CVMGInfo info;
  CPGCInfo& chain = info.GetOriginalPGC();
  auto* own = new OwnCell;
  own->bytes += Hex("01 02 03 04");
  chain.AddCellNode(CELL_MOVIE);
  chain.AddCellNode(CELL_STILL)->CI = own;
  const Bytes stale = Written(chain);
  EXPECT_EQ(stale, Hex("00 00 0000") + Zeros(8) + Zeros(18) + StillCell());
  const Bytes cell = Hex("00 20 00 00 0002 00 00 01 02 03 04");
  EXPECT_EQ(Completed(chain), Chain({}, {MovieCell(), cell}));

  // It is saved, read back and copied as a cell of the library's with the same content.
  info.AutoComplete();
  unsigned long size = 0;
  unsigned char* image = info.SaveToMemory(&size);
  ASSERT_NE(image, nullptr) << Describe(info.GetFailure());
  info.FreeData(image);
  CPGCInfo copy = chain;
  EXPECT_EQ(Completed(copy), Written(chain));
  EXPECT_TRUE(copy == chain && chain == copy);
  auto& copied = static_cast<CStillCell&>(*copy.GetCellNode(1)->CI);
  EXPECT_EQ(copied.GetCount(), 2);
  copied.GetNode(1)->EP_TY = 9;
  EXPECT_FALSE(copy == chain || chain == copy);
  copied.GetNode(1)->EP_TY = 3;
  own->bytes[5] = 1;  // an entry that its header does not count would be lost
  EXPECT_EQ(info.SaveToMemory(&size), nullptr);
  for (std::size_t calls = 0;; ++calls) {
    const heap::FailAfter none(calls);
    try {
      const CPGCInfo again(chain);  // NOLINT(performance-unnecessary-copy-initialization)
      break;
    } catch (const std::bad_alloc&) {
      EXPECT_LT(calls, 9U);
    }
  }

  // And one reads itself, of an image that has no end and of one that is cut.
  OwnCell read;
  std::uint64_t budget = 1000;
  read.Read(ImageReader(cell.data(), cell.size(), &budget));
  EXPECT_EQ(read.bytes, cell);
  EXPECT_THROW(read.Read(ImageReader(cell.data(), cell.size() - 1, &budget)), ImageError);
  read.parses = false;
  EXPECT_THROW(read.Read(ImageReader(cell.data())), std::bad_alloc);
}

TEST(ProgramChain, TellsAProgramsCellsAndTheirKinds) {
  CPGCInfo chain;
  EXPECT_EQ(chain.GetPGStartCellID(0), 0);
  for (const char type : std::string("mmssmms")) {
    chain.AddCellNode(type == 'm' ? CELL_MOVIE : CELL_STILL);
  }
  const struct {
    unsigned short cells;
    int start, type;
  } kPrograms[] = {{2, 0, CPGCInfo::PG_VOB_MOVIE},  {1, 2, CPGCInfo::PG_VOB_STILL},
                   {2, 3, CPGCInfo::PG_VOB_MIXED},  {0, 5, CPGCInfo::PG_VOB_STILL},
                   {1, 5, CPGCInfo::PG_VOB_MOVIE},  {9, 6, CPGCInfo::PG_VOB_STILL},
                   {4, 15, CPGCInfo::PG_VOB_STILL}, {65535, 19, CPGCInfo::PG_VOB_STILL}};
  for (const auto& program : kPrograms) chain.AddPGNode()->C_Ns = program.cells;
  for (int i = 0; i < chain.GetPGCount(); ++i) {
    EXPECT_EQ(chain.GetPGStartCellID(i), kPrograms[i].start) << i;
    EXPECT_EQ(chain.GetProgramVOBType(i), kPrograms[i].type) << i;
  }
  for (const int out : {-1, 8, 1000}) {
    EXPECT_EQ(chain.GetPGStartCellID(out), 19 + 65535);
    EXPECT_EQ(chain.GetProgramVOBType(out), CPGCInfo::PG_VOB_INVALID);
  }
}

TEST(ProgramChain, MovesBlocksOfProgramsAndCells) {
  constexpr int kMost = std::numeric_limits<int>::max();
  const struct {
    int first, last, shift;
    const char* moved;  // what becomes of "ABCDE"; null where it is refused
  } kCases[] = {{1, 2, 2, "ADEBC"},      {3, 4, -3, "DEABC"},    {0, 0, 4, "BCDEA"},
                {4, 4, -4, "EABCD"},     {0, 3, 1, "EABCD"},     {1, 4, -1, "BCDEA"},
                {2, 2, 0, "ABCDE"},      {0, 4, 0, "ABCDE"},     {1, 0, 1, "ABCDE"},
                {3, 2, -3, "ABCDE"},     {4, 3, 1, "ABCDE"},     {2, 0, 0, nullptr},
                {1, 2, 3, nullptr},      {2, 3, -3, nullptr},    {-1, 0, 1, nullptr},
                {0, 5, 0, nullptr},      {5, 4, 0, nullptr},     {0, -1, 0, nullptr},
                {1, 2, kMost, nullptr},  {1, kMost, 0, nullptr}, {kMost, 1, 0, nullptr},
                {1, 2, -kMost, nullptr}, {4, 3, 2, nullptr}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(testing::Message() << c.first << ' ' << c.last << ' ' << c.shift);
    CPGCInfo chain;
    std::vector<const void*> programs, cells;
    for (int i = 0; i < 5; ++i) {
      programs.push_back(chain.AddPGNode());
      cells.push_back(chain.AddCellNode(CELL_MOVIE));
    }
    EXPECT_EQ(chain.MovePGNodes(c.first, c.last, c.shift), c.moved != nullptr);
    EXPECT_EQ(chain.MoveCellNodes(c.first, c.last, c.shift), c.moved != nullptr);
    for (int i = 0; i < 5; ++i) {
      const auto from = static_cast<std::size_t>((c.moved != nullptr ? c.moved : "ABCDE")[i] - 'A');
      EXPECT_EQ(chain.GetPGNode(i), programs[from]);
      EXPECT_EQ(chain.GetCellNode(i), cells[from]);
    }
  }
}

TEST(UserChains, AreFoundByAddressAndSizeFollowsTheEndAddress) {
  const Bytes first = Chain({Program(1, Ramp(8, 1))}, {MovieCell()}), empty = Chain({}, {});
  ExpectRoundTrip<CUserPGCTable>(UserChains({first, empty}).With(0, Byte(0x77)));
  CUserPGCTable table;
  Parse(table, Hex("00 02 FFFFFFFF") + Long(18) + Long(14) + empty + first);
  const CUserPGCTable copy = table;
  EXPECT_EQ(table[0]->UD_PGCI_SA, 18U);
  EXPECT_EQ(Completed(table), UserChains({first, empty}));
  EXPECT_EQ(table[1]->UD_PGCI_SA, 182U);
  EXPECT_EQ(MemoryOf(*table[0]->UD_PGCI.GetPGNode(0)).Part(136, 6), Ramp(6, 3));
  table = copy;
  EXPECT_EQ(table[0]->UD_PGCI_SA, 18U);
  EXPECT_EQ(table[0]->UD_PGCI.GetCellNode(0)->CI_SA, 0U);

  table.Clear();
  EXPECT_EQ(Completed(table), Bytes());
  table.AddNode();
  EXPECT_EQ(table.GetDataSize(), 6U);
  EXPECT_EQ(Completed(table), UserChains({empty}));
  table.AddNode();
  EXPECT_EQ(table.GetDataSize(), 14U);
}

}  // namespace
}  // namespace VESKA
