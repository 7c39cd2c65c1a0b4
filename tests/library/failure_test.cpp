// Why a load failed: each kind by a real cause, with where it is. Those of files by path are in
// save_test.cpp, those of what would not read back in whole_file_test.cpp.
#include <set>
#include <utility>

#include "support/heap.h"
#include "support/image_builder.h"

namespace VESKA {
namespace {

using Kind = FailureKind;
using Table = FailureTable;

/// Every table with something in it, and the user-defined chains last: 255 times the same one.
File Crowded() {
  File file;
  file.user_chains = Byte(0) + Byte(255) + Long(0);
  for (int i = 0; i < 255; ++i) file.user_chains += Long(6 + 4 * 255);
  file.user_chains += Chain({}, std::vector<Bytes>(400, StillCell()));
  return file;
}

Bytes Backwards() {
  File file;
  file.manufacturers = Word(2) + Long(115) + Zeros(32) + Word(79) + Word(42) + Zeros(74);
  return file.Image();
}

TEST(Failures, OfALoadSayWhatTheyAreAndWhere) {
  const Bytes image = Sample("mixed_full");
  const auto address = [&image](std::size_t field) {
    std::uint64_t value = 0;
    for (const unsigned char byte : image.Part(field, 4)) value = value << 8U | byte;
    return value;
  };
  const std::uint64_t movie = address(256), still = address(260), chain = address(304),
                      chains = address(308), texts = address(352), makers = address(356);
  const Bytes crowded = Crowded().Image(), backwards = Backwards();
  const struct {
    Bytes image;
    Kind kind;
    Table table;
    std::uint64_t offset;
  } cases[] = {
      {Text("not what it should be", 21), Kind::kNotManagement, Table::kHeader, 0},
      {Text("DVD_RTR_VMG1", 5000), Kind::kNotManagement, Table::kHeader, 0},
      {Bytes(600, 0xFF), Kind::kNotManagement, Table::kHeader, 0},
      {image.Part(0, 511), Kind::kEndsWithinTable, Table::kHeader, 0},
      {image.Part(0, 519), Kind::kEndsWithinTable, Table::kPlayLists, 512},
      {image.Part(0, 530), Kind::kEndsWithinTable, Table::kPlayLists, 520},
      {image.Part(0, movie + 7), Kind::kEndsWithinTable, Table::kMovie, movie},
      {image.Part(0, movie + 9), Kind::kEndsWithinTable, Table::kMovie, movie + 8},
      {image.With(256, Long(0xFFFFFFFF)), Kind::kEndsWithinTable, Table::kMovie, 0xFFFFFFFF},
      {image.Part(0, still + 1), Kind::kEndsWithinTable, Table::kStill, still},
      {image.Part(0, chain + 3), Kind::kEndsWithinTable, Table::kOriginalChain, chain},
      {image.Part(0, chains + 5), Kind::kEndsWithinTable, Table::kUserChains, chains},
      {image.Part(0, texts + 7), Kind::kEndsWithinTable, Table::kTexts, texts},
      {image.Part(0, makers + 37), Kind::kEndsWithinTable, Table::kManufacturers, makers},
      {backwards, Kind::kNegativeLength, Table::kManufacturers, backwards.size() - 116 + 79},
      {crowded, Kind::kOverBudget, Table::kUserChains, crowded.size() - 400 * 12 - 4}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << int(c.kind) << " in " << int(c.table) << " at " << c.offset);
    CVMGInfo info;
    EXPECT_FALSE(Load(info, c.image));
    const Failure expected = {.kind = c.kind, .table = c.table, .offset = c.offset};
    EXPECT_EQ(info.GetFailure(), expected) << Describe(info.GetFailure());
  }
}

TEST(Failures, LastUntilTheNextLoadOrSaveAndAreNoPartOfTheObject) {
  Bytes image = Sample("still_camera"), cut = image.Part(0, image.size() - 1);
  CVMGInfo info, good;
  ASSERT_TRUE(Load(good, image));
  EXPECT_EQ(good.GetFailure(), Failure());
  EXPECT_FALSE(Load(info, cut));
  const Failure failure = info.GetFailure();
  EXPECT_NE(failure, Failure());
  CVMGInfo copy = info, assigned;
  assigned = info;
  const CVMGInfo moved = std::move(copy);
  EXPECT_TRUE(assigned.GetFailure() == failure && moved.GetFailure() == failure);
  info.Clear();
  assigned = CVMGInfo();
  EXPECT_EQ(info.GetFailure(), failure);
  EXPECT_TRUE(info == assigned) << "though one has failed";
  EXPECT_FALSE(info.LoadFromMemory(nullptr, 7, 0));
  EXPECT_EQ(info.GetFailure(), Failure{.kind = Kind::kNoData});
  EXPECT_FALSE(info.LoadFromMemory(nullptr, 0));
  EXPECT_EQ(info.GetFailure(), Failure{.kind = Kind::kNoData});
  EXPECT_FALSE(info.LoadFromMemory(image.data(), 0, 0));
  EXPECT_EQ(info.GetFailure(), Failure{.kind = Kind::kEmpty});
  EXPECT_FALSE(info.SaveToFile(static_cast<const unsigned short*>(nullptr)));
  EXPECT_EQ(info.GetFailure(), Failure{.kind = Kind::kNoName});
  EXPECT_TRUE(info.LoadFromMemory(image.data(), 0x3B));
  EXPECT_EQ(info.GetFailure(), Failure());
}

TEST(Failures, AreToldWithoutMemory) {
  const Bytes image = Sample("mixed_full");
  Bytes cut = image.Part(0, 530), copy = image;
  CVMGInfo info;
  {
    const heap::FailAfter none(0);
    EXPECT_FALSE(info.LoadFromMemory(copy.data(), static_cast<unsigned long>(copy.size()), 0x3B));
    EXPECT_EQ(info.GetFailure().kind, Kind::kNoMemory);
  }
  EXPECT_EQ(info.GetFailure().table, Table::kHeader);
  const std::size_t calls = heap::Calls();
  EXPECT_FALSE(info.LoadFromMemory(cut.data(), 530, 0x3B));
  EXPECT_EQ(info.GetFailure().table, Table::kPlayLists);
  EXPECT_EQ(heap::Calls(), calls);
}

TEST(Failures, AreOneSentenceEach) {
  std::set<std::string> sentences;
  for (int kind = 0; kind <= 18; ++kind) {
    const std::string sentence = Describe({.kind = static_cast<Kind>(kind)});
    EXPECT_TRUE(sentences.insert(sentence).second) << sentence;
  }
  const std::pair<Failure, const char*> cases[] = {
      {{.kind = Kind::kEndsWithinTable, .table = Table::kStill, .offset = 77},
       "damaged: the still picture table reaches past the end of the file at offset 77"},
      {{.kind = Kind::kWouldNotReadBack,
        .table = Table::kMovie,
        .list = FailureList::kMovieVobs,
        .index = 2},
       "is not written: VOB 3 of the movie table would not read back as it is"},
      {{.kind = Kind::kWouldNotReadBack, .table = Table::kHeader},
       "is not written: the header would not read back as it is"}};
  for (const auto& [failure, sentence] : cases) EXPECT_EQ(Describe(failure), sentence);
#ifndef _WIN32
  EXPECT_EQ(Describe({.kind = Kind::kUnwritable, .system_error = ENOSPC}),
            "cannot be written: No space left on device");
#endif
  for (int i = 1; i <= 12; ++i) {
    const Failure failure = {.kind = Kind::kWouldNotReadBack,
                             .table = static_cast<Table>((i - 1) % 8 + 1),
                             .list = static_cast<FailureList>(i)};
    EXPECT_TRUE(sentences.insert(Describe(failure)).second);
  }
}

}  // namespace
}  // namespace VESKA
