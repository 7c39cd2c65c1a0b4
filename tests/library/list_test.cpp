// What holds for every record list of the library, stated once for all of them.
#include <algorithm>
#include <iterator>
#include <limits>
#include <random>
#include <ranges>
#include <type_traits>
#include <utility>

#include "support/heap.h"
#include "support/image_builder.h"

namespace VESKA {
namespace {

// One list of a table. `What` is the infix of the names of its operations and `Range` gives all of
// it; further arguments are those of adding a record.
#define VESKA_LIST(Name, Table_, What, Range, Limit_, ...)                          \
  struct Name {                                                                     \
    using Table = Table_;                                                           \
    static constexpr int kLimit = Limit_;                                           \
    static int Count(const Table& table) { return table.Get##What##Count(); }       \
    static auto* Get(auto& table, int i) { return table.Get##What##Node(i); }       \
    static auto All(auto& table) { return table.Range(); }                          \
    static auto* Add(Table& table) { return table.Add##What##Node(__VA_ARGS__); }   \
    static auto* Insert(Table& table, int i) {                                      \
      return table.Insert##What##Node(i __VA_OPT__(, ) __VA_ARGS__);                \
    }                                                                               \
    static bool Delete(Table& table, int i) { return table.Delete##What##Node(i); } \
  };
VESKA_LIST(AudioEntries, CStillAAG, , Entries, 255)
VESKA_LIST(AudioGroups, CAdditionalAFile, , Items, 65535)
VESKA_LIST(MovieVOBs, CMovieAVFile, , Items, 65535)
VESKA_LIST(StillGroups, CStillAVFile, , Items, 65535)
VESKA_LIST(StillEntries, CStillVOG, , Entries, 255)
VESKA_LIST(PlayListRecords, CPlayListSRPTable, , PlayLists, 255)
VESKA_LIST(ChainItems, CUserPGCTable, , Items, 255)
VESKA_LIST(TextItems, CTextDataMgr, , Items, 65535)
VESKA_LIST(Texts, CTextSet, , Texts, 65535)
VESKA_LIST(Manufacturers, CMNFInfoTable, , Items, 65535)
VESKA_LIST(MovieEntryPoints, CMovieCell, , EntryPoints, 65535, CELL_ENTRY_LONG)
VESKA_LIST(StillEntryPoints, CStillCell, , EntryPoints, 65535, CELL_ENTRY_SHORT)
VESKA_LIST(MovieStreams, CMovieAVFileTable, Stream, Streams, 255)
VESKA_LIST(StillStreams, CStillAVFileTable, VOBStream, VOBStreams, 255)
VESKA_LIST(AudioStreams, CStillAVFileTable, AAStream, AAStreams, 255)
VESKA_LIST(TimeEntries, CTimeMapTable, TimeEN, TimeEntries, 65535)
VESKA_LIST(VobuEntries, CTimeMapTable, VobuEN, VobuEntries, 65535)
VESKA_LIST(Programs, CPGCInfo, PG, Programs, 255)
VESKA_LIST(Cells, CPGCInfo, Cell, Cells, 65535, CELL_STILL)

using Lists = testing::Types<AudioEntries, AudioGroups, MovieVOBs, StillGroups, StillEntries,
                             PlayListRecords, ChainItems, TextItems, Texts, Manufacturers,
                             MovieEntryPoints, StillEntryPoints, MovieStreams, StillStreams,
                             AudioStreams, TimeEntries, VobuEntries, Programs, Cells>;

template <class List>
class ListTest : public testing::Test {
 public:
  using Table = typename List::Table;

  /// A byte of the record at `i` that a test may set at will: its first one; of a cell, that of its
  /// header, since a copy of a chain does not take over the cells' addresses.
  static unsigned char& Mark(Table& table, int i) {
    auto* record = List::Get(table, i);
    if constexpr (std::is_same_v<List, Cells>) {
      return reinterpret_cast<unsigned char&>(static_cast<CStillCell*>(record->CI)->GetHeader());
    } else {
      return reinterpret_cast<unsigned char&>(*record);
    }
  }
  static Bytes Marks(Table& table) {
    Bytes marks;
    for (int i = 0; i < List::Count(table); ++i) marks.push_back(Mark(table, i));
    return marks;
  }
};
TYPED_TEST_SUITE(ListTest, Lists);

TYPED_TEST(ListTest, RefusesPositionsOutOfRange) {
  using Limits = std::numeric_limits<int>;
  typename TypeParam::Table table;
  for (const int count : {0, 1, 3}) {
    while (TypeParam::Count(table) < count) ASSERT_NE(TypeParam::Add(table), nullptr);
    for (const int i : {-1, count, count + 1, Limits::min(), Limits::max()}) {
      EXPECT_EQ(TypeParam::Get(table, i), nullptr);
      EXPECT_EQ(TypeParam::Insert(table, i), nullptr);
      EXPECT_FALSE(TypeParam::Delete(table, i));
    }
    EXPECT_EQ(TypeParam::Count(table), count);
  }
  if constexpr (requires { table.GetNode(0); }) {
    EXPECT_TRUE(table[2] == table.GetNode(2) && table[3] == nullptr);
  }
}

TYPED_TEST(ListTest, KeepsOrderContentAndAddressesThroughAnyEdits) {
  typename TypeParam::Table table;
  std::vector<const void*> records;
  Bytes marks;
  std::mt19937 random(1);
  for (int step = 0; step < 1500; ++step) {
    const auto at = static_cast<std::ptrdiff_t>(random() % (records.size() + 1));
    const int i = static_cast<int>(at);
    const bool in_range = records.begin() + at != records.end();
    if (random() % 3 == 0 || records.size() > 40) {
      ASSERT_EQ(TypeParam::Delete(table, i), in_range);
      if (in_range) records.erase(records.begin() + at);
      if (in_range) marks.erase(marks.begin() + at);
    } else {
      const void* record = in_range ? TypeParam::Insert(table, i) : TypeParam::Add(table);
      records.insert(records.begin() + at, record);
      ASSERT_EQ(this->Mark(table, i), 0) << "a new record is zero, in a used slot as well";
      marks.insert(marks.begin() + at, static_cast<unsigned char>(random()));
      this->Mark(table, i) = marks[static_cast<std::size_t>(i)];
    }
    ASSERT_EQ(this->Marks(table), marks);
    for (const void*& record : records) {
      ASSERT_EQ(TypeParam::Get(table, static_cast<int>(&record - records.data())), record);
    }
  }
  if constexpr (requires { table.GetHeader(); }) {
    EXPECT_EQ(MemoryOf(table.GetHeader()), Zeros(sizeof table.GetHeader())) << "no list touches it";
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
}

template <class Range>
constexpr bool kIsRandomAccess = std::ranges::random_access_range<Range>&&
    std::ranges::view<Range>&& std::ranges::borrowed_range<Range>&& std::ranges::sized_range<Range>;

TYPED_TEST(ListTest, IsARangeConstAndNot) {
  using Owner = typename TypeParam::Table;
  using Range = decltype(TypeParam::All(std::declval<Owner&>()));
  using ConstRange = decltype(TypeParam::All(std::declval<const Owner&>()));
  using Record = std::ranges::range_value_t<Range>;
  static_assert(kIsRandomAccess<Range> && kIsRandomAccess<ConstRange>);
  static_assert(std::is_same_v<std::ranges::range_reference_t<Range>, Record&>);
  static_assert(std::is_same_v<std::ranges::range_reference_t<ConstRange>, const Record&>);
  Owner table;
  for (const bool edited : {false, true}) {
    while (TypeParam::Count(table) < 7) TypeParam::Add(table);
    if (edited) TypeParam::Insert(table, 2);
    const Owner& as_const = table;
    const Range all = TypeParam::All(table);
    const ConstRange const_all = TypeParam::All(as_const);
    ASSERT_EQ(all.size(), static_cast<std::size_t>(TypeParam::Count(table)));
    int i = 0;
    for (const Record& record : all) {
      EXPECT_EQ(TypeParam::Get(table, i), &record);
      EXPECT_EQ(TypeParam::Get(as_const, i), &const_all[i]);
      typename ConstRange::Iterator at = all.begin() + i;
      EXPECT_TRUE(&*at == &record && at - const_all.begin() == i && at-- < const_all.end());
      ++i;
    }
    EXPECT_FALSE(all.empty() || &*std::prev(all.end()) != TypeParam::Get(table, i - 1));
  }
}

TYPED_TEST(ListTest, MovesWithoutCopyingARecord) {
  using Owner = typename TypeParam::Table;
  using Record = std::remove_pointer_t<decltype(TypeParam::Get(std::declval<Owner&>(), 0))>;
  static_assert(std::is_nothrow_move_constructible_v<Owner> && std::is_nothrow_swappable_v<Owner> &&
                std::is_nothrow_move_assignable_v<Owner>);
  for (const int count : {0, 1, 2, 3, 9}) {
    for (const bool edited : {false, true}) {
      SCOPED_TRACE(testing::Message() << count << (edited ? " edited" : ""));
      Owner from, to;
      TypeParam::Add(to);
      while (TypeParam::Count(from) < count) TypeParam::Add(from);
      if (edited && count != 0) TypeParam::Insert(from, 0), TypeParam::Delete(from, 1);
      std::vector<const void*> records;
      for (int i = 0; i < count; ++i) {
        this->Mark(from, i) = static_cast<unsigned char>(i + 1);
        records.push_back(TypeParam::Get(from, i));
      }
      const Bytes marks = this->Marks(from);
      const std::size_t calls = heap::Calls();
      Owner moved = std::move(from);
      to = std::move(moved);
      std::swap(from, to);
      std::swap(from, to);
      EXPECT_EQ(heap::Calls(), calls);
      EXPECT_EQ(this->Marks(to), marks);
      int moved_records = 0;
      for (int i = 0; i < count; ++i) {
        if (TypeParam::Get(to, i) != records[static_cast<std::size_t>(i)]) ++moved_records;
      }
      EXPECT_LE(moved_records, kLiesWithinList<Record> ? 2 : 0)
          << "those within the list go with it";
      // NOLINTNEXTLINE(bugprone-use-after-move): a table that was moved from is empty
      EXPECT_EQ(TypeParam::Count(from) + TypeParam::Count(moved), 0);
      // And all is as it was for what comes next.
      for (Owner* table : {&to, &from}) {
        const Bytes before = this->Marks(*table);
        EXPECT_NE(TypeParam::Add(*table), nullptr);
        EXPECT_NE(TypeParam::Insert(*table, 0), nullptr);
        EXPECT_EQ(this->Marks(*table), Byte(0) + before + Byte(0));
        EXPECT_TRUE(TypeParam::Delete(*table, 0));
      }
    }
  }
}

TYPED_TEST(ListTest, UsesTheSlotsOfDeletedRecordsAgain) {
  typename TypeParam::Table table;
  for (int i = 0; i < 9; ++i) TypeParam::Add(table);
  std::size_t calls = 0;
  for (int i = 0; i < 110; ++i) {
    if (i == 10) calls = heap::Calls();  // from when it has what it needs
    TypeParam::Delete(table, 3);
    TypeParam::Delete(table, 0);
    TypeParam::Insert(table, 2);
    TypeParam::Add(table);
  }
  const bool has_blocks = std::is_same_v<TypeParam, MovieEntryPoints>;
  EXPECT_EQ(heap::Calls() - calls, has_blocks ? 200U : 0U);
}

}  // namespace
}  // namespace VESKA
