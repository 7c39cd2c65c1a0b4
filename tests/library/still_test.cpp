// Still picture AV file information: the groups of still VOBs and of additional audio, and the
// table. The two indexes are tested with their sister in index_test.cpp.
#include <random>

#include "frame/image.h"
#include "support/guarded_image.h"
#include "support/image_builder.h"

namespace VESKA {
namespace {

/// A still VOB in each form.
const Bytes kForms = Hex("15 0A  55 0C 012C 3456  AA 05 1234 56  FF 07 0028 789A BCDE F1");

TEST(StillGroup, HoldsEntriesOfFourForms) {
  const Bytes image = Byte(4) + Ramp(17, 1) + kForms;
  ExpectRoundTrip<CStillVOG>(image);
  CStillVOG group;
  Parse(group, image);
  EXPECT_EQ(+group.GetHeader().VOG_GI_DWORD, 0x0C0D0E0FU);
  EXPECT_EQ(+group[1]->form1.EXT1_WORD, 0x3456);
  EXPECT_EQ(+group[2]->form2.EXT2_WORD, 0x1234);
  EXPECT_EQ(+group[3]->form3.EXT2_WORD, 0xBCDE);
  EXPECT_EQ(group[3]->form3.EXT2_BYTE, 0xF1);
  EXPECT_EQ(MemoryOf(*group[0]), Hex("15 0A") + Zeros(7)) << "zeros beyond the form";
  EXPECT_EQ(MemoryOf(*group[2]).Part(5, 4), Zeros(4));
  EXPECT_EQ(group.GetPackCount(), 10U + 12 + 300 + 5 + 7 + 40);
}

// All but the last entries are copied in the longest form.
TEST(StillGroup, TouchesNothingBeyondItsEntriesWhateverTheirForms) {
  std::mt19937 random(1);
  for (std::size_t count = 0; count < 40; ++count) {
    Bytes image = Byte(count) + Ramp(17);
    std::vector<std::size_t> forms;
    for (std::size_t i = 0; i < count; ++i) {
      forms.push_back(random() % 4);
      const std::size_t starts[] = {0, 2, 8, 13, 22};
      image += kForms.Part(starts[forms[i]], starts[forms[i] + 1] - starts[forms[i]]);
    }
    CStillVOG group, expected;
    Parse(expected, Byte(4) + Ramp(17) + kForms);
    const std::size_t size = image.size();
    GuardedImage page(size);
    ASSERT_TRUE(group.Parse(page.Place(image.data(), size)));
    for (std::size_t i = 0; i < count; ++i) {
      EXPECT_EQ(MemoryOf(*group[static_cast<int>(i)]),
                MemoryOf(*expected[static_cast<int>(forms[i])]));
    }
    EXPECT_EQ(Written(group), count == 0 ? Bytes() : image);

    for (std::size_t end = 0; end < size && count != 0; ++end) {
      std::uint64_t budget = 1000;
      const unsigned char* bytes = page.Place(image.data(), end);
      EXPECT_THROW(CStillVOG().Read(ImageReader(bytes, end, &budget)), ImageError);
      bool refused = false;
      Bytes out(size, 0xEE);
      group.Write(ImageWriter(out.data(), end, &refused));
      EXPECT_TRUE(refused);
      EXPECT_EQ(out.Part(end, size - end), Bytes(size - end, 0xEE));
    }
  }
}

TEST(StillGroup, SizeCountsTheFirstEntriesThatTheHeaderCounts) {
  CStillVOG group;
  EXPECT_EQ(Completed(group), Bytes());
  EXPECT_EQ(MemoryOf(*group.AddNode()), Zeros(9));
  EXPECT_EQ(group.GetDataSize(), 18U);
  EXPECT_EQ(Completed(group), Byte(1) + Zeros(17) + Zeros(2));
  group[0]->S_VOB_ENT_TY = 0xC0;  // another form takes effect at once
  group[0]->form3 = {1, 2, 3, 4};
  EXPECT_EQ(Written(group), Byte(1) + Zeros(17) + Hex("C0 00 0001 0002 0003 04"));
  CStillVOG other = group;
  group[0]->S_VOB_ENT_TY = other[0]->S_VOB_ENT_TY = 0x40;  // and what lies beyond it counts no more
  other[0]->form3.EXT2_BYTE = 9;
  EXPECT_TRUE(group == other);

  Parse(group, Byte(4) + Zeros(17) + kForms);
  group.DeleteNode(3);
  group.DeleteNode(0);
  EXPECT_EQ(group.GetDataSize(), 18U + 6 + 5);
  group.AutoComplete();
  group.AddNode();
  EXPECT_EQ(group.GetDataSize(), 18U + 6 + 5);
}

TEST(AudioGroup, HoldsEntriesAndSizeFollowsTheHeader) {
  const Bytes image = Hex("03 01 02030405  07 0102 0304  00 0010 FFFF  00 FFFF 0000");
  ExpectRoundTrip<CStillAAG>(image);
  CStillAAG group;
  Parse(group, image);
  EXPECT_EQ(+group.GetHeader().AAG_GI_DWORD, 0x02030405U);
  EXPECT_EQ(+group[0]->AA_ENT_WORD, 0x0304);
  EXPECT_EQ(group.GetPackCount(), 65809U);
  group.Clear();
  EXPECT_EQ(Completed(group), Bytes());
  group.AddNode();
  group.AddNode();
  EXPECT_EQ(group.GetDataSize(), 6U);
  EXPECT_EQ(Completed(group), Byte(2) + Zeros(15));
  group.DeleteNode(0);
  EXPECT_EQ(group.GetDataSize(), 16U);
}

TEST(StillTable, LaysOutItsFourPartsBehindEachOther) {
  const Bytes still_file = Word(1) + Pointed(64, {Byte(1) + Zeros(17) + Hex("00 0A")});
  const Bytes audio_file = Word(1) + Pointed(94, {Hex("01 AA BBCCDDEE  01 0203 0405")});
  const Bytes image =
      Hex("01 01 01 02 0000006C") + Ramp(54) + still_file + Hex("A1A2 B1B2") + audio_file;
  ExpectRoundTrip<CStillAVFileTable>(image);
  CStillAVFileTable table;
  Parse(table, image);
  EXPECT_TRUE(table.HasStillAVFile() && table.HasAdditionalAFile());
  EXPECT_EQ(MemoryOf(*table.GetAAStreamNode(1)), Hex("B1B2"));
  EXPECT_EQ(table.GetStillAVFile()[0]->S_VOGI_SA, 68U);
  EXPECT_EQ(table.GetAdditionalAFile()[0]->S_AAGI_SA, 98U);
  table.GetStillAVFile()[0]->S_VOGI_SA = table.GetAdditionalAFile()[0]->S_AAGI_SA = 0;
  EXPECT_EQ(Completed(table), image);
}

TEST(StillTable, ReadsTheFilesOnlyWhereTheHeaderCountsOne) {
  const Bytes rest = Ramp(54) + Hex("A1A2 B1B2");
  for (const unsigned count : {0U, 2U, 255U}) {
    CStillAVFileTable table;
    Parse(table, Byte(count) + Byte(count) + Hex("01 02 00000000") + rest);
    EXPECT_FALSE(table.HasStillAVFile() || table.HasAdditionalAFile());
    EXPECT_TRUE(table.GetStillAVFile().IsEmpty() && table.GetAdditionalAFile().IsEmpty());
    EXPECT_EQ(Completed(table), Hex("00 00 01 02 00000041") + rest);
  }
}

TEST(StillTable, SizeIsThatOfTheEndAddress) {
  CStillAVFileTable table;
  EXPECT_EQ(table.GetDataSize(), 1U);
  EXPECT_EQ(Completed(table), Hex("00 00 00 00 00000007"));
  table.AddVOBStreamNode();
  table.AddVOBStreamNode();
  EXPECT_EQ(table.GetDataSize(), 8U);
  EXPECT_EQ(Completed(table).size(), 116U);
  table.Clear();
  table.GetStillAVFile().AddNode()->S_VOGI.AddNode();
  table.AutoComplete();
  EXPECT_TRUE(table.IsEmpty() && table.HasStillAVFile());
}

}  // namespace
}  // namespace VESKA
