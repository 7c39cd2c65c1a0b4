// The three indexes: movie VOBs, still VOB groups, additional audio groups. They are one thing over
// three kinds of item, which differ in the image of an item's table with `n` entries.
#include "support/image_builder.h"

namespace VESKA {
namespace {

Bytes Vob(std::size_t n) { return Zeros(25) + Word(n) + Zeros(6 + 3 * n); }
Bytes StillGroup(std::size_t n) { return Byte(n) + Zeros(17 + 2 * n); }
Bytes AudioGroup(std::size_t n) { return Byte(n) + Zeros(5 + 5 * n); }

template <class Index_, auto Address_, auto Table_, Bytes (*Image_)(std::size_t)>
struct Kind {
  using Index = Index_;
  static constexpr auto kAddress = Address_;
  static constexpr auto kTable = Table_;
  static constexpr auto kImage = Image_;
};
using Kinds = testing::Types<
    Kind<CMovieAVFile, &tag_M_VOBI_ITEM::M_VOBI_SA, &tag_M_VOBI_ITEM::M_VOBI, Vob>,
    Kind<CStillAVFile, &tag_S_VOGI_ITEM::S_VOGI_SA, &tag_S_VOGI_ITEM::S_VOGI, StillGroup>,
    Kind<CAdditionalAFile, &tag_S_AAGI_ITEM::S_AAGI_SA, &tag_S_AAGI_ITEM::S_AAGI, AudioGroup>>;

template <class Kind>
class IndexTest : public testing::Test {};
TYPED_TEST_SUITE(IndexTest, Kinds);

TYPED_TEST(IndexTest, ReadsItemsByTheirAddressesAndWritesThemBackToBack) {
  const Bytes three = TypeParam::kImage(3), one = TypeParam::kImage(1);
  const Bytes pointers = Long(75 + one.size()) + Long(75);  // backwards, and behind a gap
  typename TypeParam::Index index;
  Parse(index, Ramp(62) + Word(2) + pointers + Ramp(3) + one + three, 62UL);
  ASSERT_EQ(index.GetCount(), 2);
  EXPECT_EQ(index[0]->*TypeParam::kAddress, 75 + one.size());
  EXPECT_EQ(Written(index), Word(2) + pointers + three + one);
  EXPECT_EQ(Completed(index, 62UL), Word(2) + Pointed(64, {three, one}));
  index.DeleteNode(0);
  EXPECT_EQ(index.GetDataSize(), 6 + one.size());
  EXPECT_EQ(Completed(index, 100UL), Word(1) + Pointed(102, {one}));
  index.Clear();
  EXPECT_EQ(MemoryOf(index.GetHeader()), Zeros(2));
}

TYPED_TEST(IndexTest, SizeCountsTheFirstItemsThatTheHeaderCounts) {
  const Bytes one = TypeParam::kImage(1);
  typename TypeParam::Index index;
  EXPECT_EQ(Completed(index, 8UL), Bytes());
  for (const bool completed : {false, true}) {
    Parse(index.AddNode()->*TypeParam::kTable, one);
    EXPECT_EQ(index.GetDataSize(), completed ? 6 + one.size() : 2);
    index.AutoComplete(8);
  }
  EXPECT_EQ(index.GetDataSize(), 2 + 2 * (4 + one.size()));
  index.InsertNode(0);  // without entries: it shares its neighbour's address
  EXPECT_EQ(Completed(index, 0UL),
            Word(3) + Long(14) + Long(14) + Long(14 + one.size()) + one + one);
}

}  // namespace
}  // namespace VESKA
