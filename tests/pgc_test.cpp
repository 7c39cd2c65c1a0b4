// Program chains: the two kinds of cell, the chain and the table of user-defined chains.
#include <limits>

#include "image_builder.h"

namespace VESKA {
namespace {

/// What the tests need to know of a kind of cell: 18 or 8 bytes, entry points of 7 or 2 bytes.
struct Movie {
  using Cell = CMovieCell;
  static constexpr tag_CELL_TYPE kType = CELL_MOVIE;
  static constexpr std::size_t kHeader = 18, kEntry = 7;
  static constexpr unsigned kKind = 0x00;
};
struct Still {
  using Cell = CStillCell;
  static constexpr tag_CELL_TYPE kType = CELL_STILL;
  static constexpr std::size_t kHeader = 8, kEntry = 2;
  static constexpr unsigned kKind = 0x20;
};

template <class Kind>
class CellTest : public testing::Test {
 public:
  /// A cell with an entry point for each type, every byte of them another one.
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

TYPED_TEST(CellTest, ReadsAndWritesEntryPointsByTheirType) {
  const Bytes types = Hex("00 40 3F 80 C0 7F 05");
  typename TypeParam::Cell cell;
  Parse(cell, this->Image(0xFF, types));
  EXPECT_EQ(cell.GetHeader().reserved_0, 0);
  EXPECT_EQ(cell.GetHeader().C_TY, 0xFF);
  EXPECT_EQ(+cell.GetHeader().number_2, 0x0203);
  EXPECT_EQ(+cell.GetHeader().C_EPI_Ns, 7);
  ASSERT_EQ(cell.GetCount(), 7);
  for (int i = 0; i < 7; ++i) {
    const auto* entry = cell[i];
    ASSERT_EQ(entry->EP_TY, types[static_cast<std::size_t>(i)]);
    ASSERT_EQ(entry->block != nullptr, entry->EP_TY >= 0x40);
    if (entry->block != nullptr) {
      EXPECT_EQ(Bytes(entry->block, entry->block + 128), Ramp(128, entry->EP_TY));
    }
  }
  EXPECT_EQ(cell.GetDataSize(), TypeParam::kHeader + 7 * TypeParam::kEntry + 4 * 128);
  EXPECT_EQ(Written(cell), this->Image(0xFF, types));
}

TYPED_TEST(CellTest, AutoCompleteMarksItsKindAndKeepsTheOtherBits) {
  for (const unsigned C_TY : {0x00U, 0x3FU, 0xC5U, 0xFFU, 0x20U}) {
    typename TypeParam::Cell cell;
    EXPECT_EQ(cell.GetType(), TypeParam::kType);
    cell.GetHeader().C_TY = static_cast<std::uint8_t>(C_TY);
    cell.AutoComplete();
    EXPECT_EQ(cell.GetHeader().C_TY, (C_TY & 0x1FU) | TypeParam::kKind);
    EXPECT_EQ(cell.GetDataSize(), TypeParam::kHeader);
  }
}

TYPED_TEST(CellTest, SizeCountsTheFirstEntryPointsThatTheHeaderCounts) {
  typename TypeParam::Cell cell;
  cell.AddNode(CELL_ENTRY_SHORT);
  auto* entry = cell.AddNode(CELL_ENTRY_LONG);
  ASSERT_NE(+entry->block, nullptr);
  EXPECT_EQ(Bytes(entry->block, entry->block + 128), Zeros(128));
  EXPECT_EQ(entry->EP_TY, 0);
  EXPECT_EQ(+cell.AddNode(static_cast<tag_CELL_ENTRY_TYPE>(2))->block, nullptr);
  EXPECT_EQ(cell.InsertNode(3, CELL_ENTRY_LONG), nullptr);
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
  const Bytes kind = Byte(0) + Byte(TypeParam::kKind) + Hex("0000 0002");
  EXPECT_EQ(Completed(cell), kind + Zeros(TypeParam::kHeader - 6) + Byte(0x80) +
                                 Zeros(TypeParam::kEntry - 1 + 128) + Byte(0x3F) +
                                 Zeros(TypeParam::kEntry - 1));
}

TYPED_TEST(CellTest, CopiesOwnTheirBlocks) {
  typename TypeParam::Cell copy;
  copy.AddNode(CELL_ENTRY_LONG);
  {
    typename TypeParam::Cell cell;
    Parse(cell, this->Image(TypeParam::kKind, Hex("40 00 41")));
    copy = cell;
    EXPECT_TRUE(copy == cell);
    cell[0]->block[0] ^= 1;
    cell.DeleteNode(2);
  }
  copy = *&copy;
  EXPECT_EQ(Written(copy), this->Image(TypeParam::kKind, Hex("40 00 41")));
}

TEST(Cells, HeadersAndEntryPointsFieldByField) {
  CMovieCell movie;
  Parse(movie, Ramp(18).With(4, Word(1)) + Ramp(7, 0x31));
  EXPECT_EQ(+movie.GetHeader().time_6.base, 0x06070809U);
  EXPECT_EQ(+movie.GetHeader().time_6.ext, 0x0A0B);
  EXPECT_EQ(+movie.GetHeader().time_12.base, 0x0C0D0E0FU);
  EXPECT_EQ(+movie.GetHeader().time_12.ext, 0x1011);
  EXPECT_EQ(+movie[0]->time_1.base, 0x32333435U);
  EXPECT_EQ(+movie[0]->time_1.ext, 0x3637);
  CStillCell still;
  Parse(still, Ramp(8).With(4, Word(1)) + Hex("3F 77"));
  EXPECT_EQ(still.GetHeader().reserved_6[1], 7);
  EXPECT_EQ(still[0]->reserved_1, 0x77);
}

TEST(ProgramChain, IsReadAndWrittenFieldByField) {
  const Bytes program = Ramp(142, 0x50);
  Bytes image = Byte(0xAB) + Byte(2) + Word(3) + Zeros(142) + program +
                Pointed(4 + 284, {MovieCell().With(1, Byte(0x1F)), StillCell(), MovieCell()});
  CPGCInfo chain;
  Parse(chain, image);
  EXPECT_EQ(chain.GetHeader().reserved_0, 0xAB);
  EXPECT_EQ(chain.GetHeader().PG_Ns, 2);
  EXPECT_EQ(+chain.GetHeader().CI_SRP_Ns, 3);
  const tag_PGI* pg = chain.GetPGNode(1);
  EXPECT_EQ(pg->reserved_0, 0x50);
  EXPECT_EQ(pg->reserved_1, 0x51);
  EXPECT_EQ(+pg->C_Ns, 0x5253);
  EXPECT_EQ(pg->text_4[127], 0x50 + 131);
  EXPECT_EQ(+pg->number_132, 0xD4D5);
  EXPECT_EQ(+pg->cell_point.cell, 0xD6D7);
  EXPECT_EQ(MemoryOf(*pg).Part(136, 6), Ramp(6, 0xD8));
  ASSERT_EQ(chain.GetCellCount(), 3);
  EXPECT_EQ(chain.GetCellNode(1)->CI_SA, 4U + 284 + 12 + 18);
  EXPECT_EQ(chain.GetCellNode(0)->CI->GetType(), CELL_MOVIE);
  EXPECT_EQ(chain.GetCellNode(1)->CI->GetType(), CELL_STILL);
  EXPECT_EQ(Written(chain), image);
}

TEST(ProgramChain, ReadsCellsWhereTheirPointersSayAndLaysThemOutAnew) {
  const Bytes first = MovieCell().With(2, Word(1)), second = StillCell().With(2, Word(2));
  CPGCInfo chain;
  Parse(chain,
        Hex("00 00 0003") + Long(30) + Long(20) + Long(30) + Zeros(4) + second + Zeros(2) + first);
  EXPECT_EQ(Completed(chain), Chain({}, {first, second, first}));
}

TEST(ProgramChain, SizeFollowsTheLists) {
  CPGCInfo chain;
  EXPECT_EQ(Completed(chain), Zeros(4));
  chain.AddPGNode();
  EXPECT_TRUE(chain.IsEmpty());
  chain.AddCellNode(CELL_MOVIE);
  EXPECT_EQ(chain.AddCellNode(static_cast<tag_CELL_TYPE>(7))->CI->GetType(), CELL_STILL);
  EXPECT_EQ(chain.GetDataSize(), 4U + 142 + 8 + 18 + 8);
  EXPECT_EQ(Completed(chain), Chain({Zeros(142)}, {MovieCell(), StillCell()}));
  EXPECT_EQ(chain.GetCellNode(1)->CI_SA, 172U);
  EXPECT_EQ(chain.InsertCellNode(2, CELL_STILL), nullptr);
  EXPECT_EQ(chain.InsertCellNode(0, CELL_STILL)->CI->GetType(), CELL_STILL);
  EXPECT_EQ(+chain.GetHeader().CI_SRP_Ns, 2);
}

TEST(ProgramChain, TellsAProgramsCellsAndTheirKinds) {
  CPGCInfo chain;
  EXPECT_EQ(chain.GetPGStartCellID(0), 0);
  for (const char type : std::string("mmssmms")) {
    chain.AddCellNode(type == 'm' ? CELL_MOVIE : CELL_STILL);
  }
  const struct {
    unsigned short cells;
    int start;
    CPGCInfo::PG_VOB_TYPE type;
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

TEST(ProgramChain, ACopysCellAddressesAreZeroUntilItIsCompleted) {
  CPGCInfo chain;
  Parse(chain, Chain({Program(2, Zeros(8))}, {MovieCell(), StillCell()}));
  CPGCInfo copy = chain;
  EXPECT_EQ(copy.GetCellNode(0)->CI_SA + copy.GetCellNode(1)->CI_SA, 0U);
  EXPECT_EQ(Completed(copy), Written(chain));
  EXPECT_TRUE(copy == chain);
  chain = *&chain;
  EXPECT_TRUE(copy == chain);
}

TEST(ProgramChain, TakesOverACellOfTheHosts) {
  CPGCInfo chain;
  auto* cell = new CStillCell;
  cell->AddNode(CELL_ENTRY_LONG)->EP_TY = 0x40;
  chain.AddCellNode(CELL_MOVIE)->CI = cell;
  CPGCInfo copy = chain;
  EXPECT_EQ(Completed(copy), Completed(chain));
  EXPECT_EQ(copy.GetDataSize(), 4U + 4 + 8 + 130);
  EXPECT_TRUE(chain.DeleteCellNode(0));
}

/// What moving a block of positions has to give; false where it is refused.
bool Moved(std::vector<int>& order, int first, int last, int shift) {
  const int n = static_cast<int>(order.size());
  if (first < 0 || last < 0 || first >= n || last >= n || first + shift < 0 || last + shift >= n ||
      first > last + 1) {
    return false;
  }
  const std::vector<int> block(order.begin() + first, order.begin() + last + 1);
  order.erase(order.begin() + first, order.begin() + last + 1);
  order.insert(order.begin() + first + shift, block.begin(), block.end());
  return true;
}

TEST(ProgramChain, MovesBlocksOfProgramsAndCells) {
  CPGCInfo chain;
  std::vector<int> order;
  std::vector<const void*> programs, cells;
  for (int i = 0; i < 5; ++i) {
    order.push_back(i);
    programs.push_back(chain.AddPGNode());
    cells.push_back(chain.AddCellNode(CELL_MOVIE));
  }
  for (int first = -1; first <= 5; ++first) {
    for (int last = -1; last <= 5; ++last) {
      for (int shift = -6; shift <= 6; ++shift) {
        const bool moved = Moved(order, first, last, shift);
        ASSERT_EQ(chain.MovePGNodes(first, last, shift), moved);
        ASSERT_EQ(chain.MoveCellNodes(first, last, shift), moved);
        for (int i = 0; i < 5; ++i) {
          const auto from = static_cast<std::size_t>(order[static_cast<std::size_t>(i)]);
          ASSERT_EQ(chain.GetPGNode(i), programs[from]) << first << ' ' << last << ' ' << shift;
          ASSERT_EQ(chain.GetCellNode(i), cells[from]) << first << ' ' << last << ' ' << shift;
        }
      }
    }
  }
  constexpr int kMost = std::numeric_limits<int>::max();
  EXPECT_FALSE(chain.MovePGNodes(1, 2, kMost));
  EXPECT_FALSE(chain.MovePGNodes(1, kMost, 0));
  EXPECT_FALSE(chain.MovePGNodes(1, 2, -kMost - 1));
}

TEST(UserChains, AreReadAndWrittenWithTheirAddresses) {
  const Bytes first = Chain({Program(1, Ramp(8, 1))}, {MovieCell()});
  const Bytes image = UserChains({first, Chain({}, {})}).With(0, Byte(0x77));
  CUserPGCTable table;
  Parse(table, image);
  EXPECT_EQ(table.GetHeader().reserved_0, 0x77);
  EXPECT_EQ(table.GetHeader().UD_PGCI_Ns, 2);
  EXPECT_EQ(+table.GetHeader().UD_PGCIT_EA, 185U);
  EXPECT_EQ(table[0]->UD_PGCI_SA, 14U);
  EXPECT_EQ(table[1]->UD_PGCI_SA, 182U);
  EXPECT_EQ(MemoryOf(*table[0]->UD_PGCI.GetPGNode(0)).Part(136, 6), Ramp(6, 3));
  EXPECT_EQ(Written(table), image);

  CUserPGCTable copy = table;
  EXPECT_EQ(copy[1]->UD_PGCI_SA, 182U);
  EXPECT_EQ(copy[0]->UD_PGCI.GetCellNode(0)->CI_SA, 0U);
  EXPECT_EQ(Completed(copy), image);

  CUserPGCTable elsewhere;
  Parse(elsewhere, Hex("00 02 FFFFFFFF") + Long(18) + Long(14) + Chain({}, {}) + first);
  EXPECT_EQ(Completed(elsewhere), UserChains({first, Chain({}, {})}));
}

TEST(UserChains, SizeFollowsTheEndAddressUnlessEmpty) {
  CUserPGCTable table;
  EXPECT_EQ(Completed(table), Bytes());
  EXPECT_EQ(+table.GetHeader().UD_PGCIT_EA, 5U);
  table.AddNode();
  EXPECT_EQ(table.GetDataSize(), 6U);
  EXPECT_EQ(Completed(table), UserChains({Chain({}, {})}));
  EXPECT_EQ(table.GetDataSize(), 14U);
  table.AddNode();
  EXPECT_EQ(table.GetDataSize(), 14U);
  table.DeleteNode(1);
  table.DeleteNode(0);
  EXPECT_EQ(table.GetDataSize(), 0U);
}

}  // namespace
}  // namespace VESKA
