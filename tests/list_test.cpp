// What holds for every record list of the library, stated once for all of them.
#include <algorithm>
#include <limits>

#include "heap.h"
#include "image_builder.h"
#include "lists.h"

namespace VESKA {
namespace {

template <class List>
class ListTest : public testing::Test {
 public:
  using Table = typename List::Table;
  using Record = std::remove_pointer_t<decltype(List::Get(std::declval<Table&>(), 0))>;

  static void Mark(Record* record, unsigned char mark) {
    std::ranges::fill(FreeBytes(record), mark);
  }
  static bool HasMark(Record* record, unsigned char mark) {
    const auto is_mark = [mark](unsigned char byte) { return byte == mark; };
    return record != nullptr && std::ranges::all_of(FreeBytes(record), is_mark);
  }
  static void ExpectMarks(Table& table, const std::vector<unsigned char>& marks) {
    ASSERT_EQ(List::Count(table), static_cast<int>(marks.size()));
    for (std::size_t i = 0; i < marks.size(); ++i) {
      EXPECT_TRUE(HasMark(List::Get(table, static_cast<int>(i)), marks[i])) << i;
    }
  }
  static void Fill(Table& table, int count) {
    for (int i = 1; i <= count; ++i) Mark(List::Add(table), static_cast<unsigned char>(i));
  }
};
TYPED_TEST_SUITE(ListTest, lists::All);

TYPED_TEST(ListTest, RefusesPositionsOutOfRange) {
  typename TypeParam::Table table;
  for (const int count : {0, 1, 3}) {
    while (TypeParam::Count(table) < count) ASSERT_NE(TypeParam::Add(table), nullptr);
    for (const int i :
         {-1, count, count + 1, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
      EXPECT_EQ(TypeParam::Get(table, i), nullptr);
      EXPECT_EQ(TypeParam::Insert(table, i), nullptr);
      EXPECT_FALSE(TypeParam::Delete(table, i));
    }
    EXPECT_EQ(TypeParam::Count(table), count);
  }
  if constexpr (requires { table.GetNode(0); }) {
    EXPECT_EQ(table[2], table.GetNode(2));
    EXPECT_EQ(table[3], nullptr);
  }
}

TYPED_TEST(ListTest, KeepsOrderContentAndAddressesThroughAnyEdits) {
  struct Known {
    typename TestFixture::Record* record;
    unsigned char mark;
  };
  typename TypeParam::Table table;
  std::vector<Known> known;
  Random random(1);
  for (unsigned step = 0; step < 1500; ++step) {
    const auto at = static_cast<std::ptrdiff_t>(random.Below(known.size() + 1));
    const int i = static_cast<int>(at);
    const bool in_range = known.begin() + at != known.end();
    const unsigned what = known.size() > 40 ? 2 : random.Below(3);
    if (what == 2) {
      ASSERT_EQ(TypeParam::Delete(table, i), in_range);
      if (in_range) known.erase(known.begin() + at);
    } else if (auto* record = what == 0 ? TypeParam::Add(table) : TypeParam::Insert(table, i)) {
      ASSERT_TRUE(this->HasMark(record, 0)) << "a new record is zero, in a used slot as well";
      const auto mark = static_cast<unsigned char>(random.Below(256));
      this->Mark(record, mark);
      known.insert(what == 0 ? known.end() : known.begin() + at, {record, mark});
    } else {
      ASSERT_FALSE(in_range);
    }
    ASSERT_EQ(TypeParam::Count(table), static_cast<int>(known.size()));
    for (std::size_t k = 0; k < known.size(); ++k) {
      ASSERT_EQ(TypeParam::Get(table, static_cast<int>(k)), known[k].record) << step;
      ASSERT_TRUE(this->HasMark(known[k].record, known[k].mark)) << step;
    }
  }
  if constexpr (requires { table.GetHeader(); }) {
    const Bytes header = MemoryOf(table.GetHeader());
    EXPECT_EQ(header, Zeros(header.size())) << "no list operation touches the header";
  }
}

TYPED_TEST(ListTest, HoldsAsManyRecordsAsTheFileCanCount) {
  typename TypeParam::Table table;
  while (TypeParam::Count(table) < TypeParam::kLimit) ASSERT_NE(TypeParam::Add(table), nullptr);
  EXPECT_EQ(TypeParam::Add(table), nullptr);
  EXPECT_EQ(TypeParam::Insert(table, 0), nullptr);
  EXPECT_EQ(TypeParam::Count(table), TypeParam::kLimit);
  EXPECT_TRUE(TypeParam::Delete(table, 7));
  EXPECT_NE(TypeParam::Insert(table, 0), nullptr);
  EXPECT_EQ(TypeParam::Add(table), nullptr);
}

TYPED_TEST(ListTest, CopiesAreDeepAndIndependent) {
  typename TypeParam::Table table;
  this->Fill(table, 6);
  TypeParam::Delete(table, 1);  // so that the order is no longer that of the memory
  this->Mark(TypeParam::Insert(table, 0), 9);
  const std::vector<unsigned char> marks = {9, 1, 3, 4, 5, 6};
  this->ExpectMarks(table, marks);

  typename TypeParam::Table copy(table), assigned;
  this->Fill(assigned, 2);
  assigned = copy;
  this->ExpectMarks(copy, marks);
  this->Mark(TypeParam::Get(copy, 2), 0x77);
  TypeParam::Delete(assigned, 0);
  this->ExpectMarks(table, marks);
  this->ExpectMarks(copy, {9, 1, 0x77, 4, 5, 6});
  this->ExpectMarks(assigned, {1, 3, 4, 5, 6});

  auto* first = TypeParam::Get(table, 0);
  table = *&table;
  EXPECT_EQ(TypeParam::Get(table, 0), first);
  this->ExpectMarks(table, marks);
  table.Clear();
  EXPECT_EQ(TypeParam::Count(table), 0);
  this->ExpectMarks(copy, {9, 1, 0x77, 4, 5, 6});
}

TYPED_TEST(ListTest, UsesTheSlotsOfDeletedRecordsAgain) {
  typename TypeParam::Table table;
  this->Fill(table, 9);
  const auto cycle = [&table] {
    TypeParam::Delete(table, 3);
    TypeParam::Delete(table, 0);
    TypeParam::Insert(table, 2);
    TypeParam::Add(table);
  };
  for (int i = 0; i < 10; ++i) cycle();
  const std::size_t calls = heap::Calls();
  for (int i = 0; i < 100; ++i) cycle();
  std::size_t expected = 0;
  if constexpr (requires { TypeParam::Get(table, 0)->block; }) {
    if (TypeParam::Get(table, 0)->block != nullptr) expected = 200;  // those of the new ones
  }
  EXPECT_EQ(heap::Calls() - calls, expected);
}

}  // namespace
}  // namespace VESKA
