// The three indexes: movie VOBs, still VOB groups, additional audio groups. They are one thing over
// three kinds of item.
#include "image_builder.h"

namespace VESKA {
namespace {

/// What tells them apart: their classes, and the image of an item's table with `n` entries.
struct MovieVOBs {
  using Index = CMovieAVFile;
  static auto& Address(tag_M_VOBI_ITEM& item) { return item.M_VOBI_SA; }
  static auto& Table(tag_M_VOBI_ITEM& item) { return item.M_VOBI; }
  static void AddEntry(tag_M_VOBI_ITEM& item) { Table(item).GetTimeMapTable().AddVobuENNode(); }
  static int Entries(tag_M_VOBI_ITEM& item) {
    return Table(item).GetTimeMapTable().GetVobuENCount();
  }
  static Bytes Image(std::size_t n) { return Zeros(23 + 2) + Word(n) + Zeros(6) + Zeros(3 * n); }
};
struct StillGroups {
  using Index = CStillAVFile;
  static auto& Address(tag_S_VOGI_ITEM& item) { return item.S_VOGI_SA; }
  static auto& Table(tag_S_VOGI_ITEM& item) { return item.S_VOGI; }
  static void AddEntry(tag_S_VOGI_ITEM& item) { Table(item).AddNode(); }
  static int Entries(tag_S_VOGI_ITEM& item) { return Table(item).GetCount(); }
  static Bytes Image(std::size_t n) { return Byte(n) + Zeros(17) + Zeros(2 * n); }
};
struct AudioGroups {
  using Index = CAdditionalAFile;
  static auto& Address(tag_S_AAGI_ITEM& item) { return item.S_AAGI_SA; }
  static auto& Table(tag_S_AAGI_ITEM& item) { return item.S_AAGI; }
  static void AddEntry(tag_S_AAGI_ITEM& item) { Table(item).AddNode(); }
  static int Entries(tag_S_AAGI_ITEM& item) { return Table(item).GetCount(); }
  static Bytes Image(std::size_t n) { return Byte(n) + Zeros(5) + Zeros(5 * n); }
};

template <class Kind>
class IndexTest : public testing::Test {};
using Kinds = testing::Types<MovieVOBs, StillGroups, AudioGroups>;
TYPED_TEST_SUITE(IndexTest, Kinds);

TYPED_TEST(IndexTest, ReadsItemsWhereTheirAddressesSayAndWritesThemBackToBack) {
  constexpr std::size_t kBase = 62;
  const Bytes three = TypeParam::Image(3), one = TypeParam::Image(1);
  const std::size_t behind = kBase + 2 + 8 + 5;  // a gap of 5 bytes
  typename TypeParam::Index index;
  Parse(index,
        Ramp(kBase) + Word(2) + Long(behind + one.size()) + Long(behind) + Ramp(5) + one + three,
        static_cast<unsigned long>(kBase));
  EXPECT_EQ(MemoryOf(index.GetHeader()), MemoryOf(std::uint16_t{2}));
  ASSERT_EQ(index.GetCount(), 2);
  EXPECT_EQ(TypeParam::Address(*index[0]), behind + one.size());
  EXPECT_EQ(TypeParam::Entries(*index[0]), 3);
  EXPECT_EQ(TypeParam::Entries(*index[1]), 1);
  EXPECT_EQ(index.GetDataSize(), 10 + three.size() + one.size());
  EXPECT_EQ(Written(index),
            Word(2) + Long(behind + one.size()) + Long(behind) + three + one);  // as stored
  EXPECT_EQ(Completed(index, static_cast<unsigned long>(kBase)),
            Word(2) + Pointed(kBase + 2, {three, one}));

  index.DeleteNode(0);
  EXPECT_EQ(index.GetDataSize(), 6 + one.size());
  EXPECT_EQ(Completed(index, 100UL), Word(1) + Pointed(102, {one}));
}

TYPED_TEST(IndexTest, SizeCountsTheFirstItemsThatTheHeaderCounts) {
  typename TypeParam::Index index;
  EXPECT_EQ(Completed(index, 8UL), Bytes());
  EXPECT_EQ(MemoryOf(index.GetHeader()), Zeros(2));
  TypeParam::AddEntry(*index.AddNode());
  EXPECT_EQ(index.GetDataSize(), 2U);
  index.AutoComplete(8);
  const std::size_t size = 2 + 4 + TypeParam::Image(1).size();
  EXPECT_EQ(index.GetDataSize(), size);
  EXPECT_EQ(TypeParam::Address(*index[0]), 14U);
  TypeParam::AddEntry(*index.AddNode());
  EXPECT_EQ(index.GetDataSize(), size);
  index.Clear();
  EXPECT_TRUE(index.IsEmpty());
  EXPECT_EQ(MemoryOf(index.GetHeader()), Zeros(2));
}

TYPED_TEST(IndexTest, AnItemWithoutEntriesSharesItsNeighboursAddress) {
  typename TypeParam::Index index;
  index.AddNode();
  TypeParam::AddEntry(*index.AddNode());
  index.AddNode();
  EXPECT_EQ(Completed(index, 0UL), Word(3) + Long(14) + Long(14) +
                                       Long(14 + TypeParam::Image(1).size()) + TypeParam::Image(1));
}

}  // namespace
}  // namespace VESKA
