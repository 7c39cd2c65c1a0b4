// Still picture AV file information: the groups of still VOBs and of additional audio, and the
// table. The two indexes are tested with their sister in index_test.cpp.
#include "image_builder.h"

namespace VESKA {
namespace {

// One entry of each form, with values from the place where each field stands.
const Bytes kForm0 = Hex("15 0A");
const Bytes kForm1 = Hex("55 0C 012C 3456");
const Bytes kForm2 = Hex("AA 05 1234 56");
const Bytes kForm3 = Hex("FF 07 0028 789A BCDE F1");

Bytes Group(std::size_t count, const Bytes& entries) { return Byte(count) + Ramp(17, 1) + entries; }

TEST(StillGroup, IsReadAndWrittenFieldByFieldInEachForm) {
  const Bytes image = Group(4, kForm0 + kForm1 + kForm2 + kForm3);
  CStillVOG group;
  Parse(group, image);
  EXPECT_EQ(group.GetHeader().S_VOB_Ns, 4);
  EXPECT_EQ(group.GetHeader().VOG_GI_BYTES[10], 11);
  EXPECT_EQ(+group.GetHeader().VOG_GI_DWORD, 0x0C0D0E0FU);
  EXPECT_EQ(+group.GetHeader().VOG_GI_WORD, 0x1011);
  ASSERT_EQ(group.GetCount(), 4);
  EXPECT_EQ(group[0]->S_VOB_ENT_TY, 0x15);
  EXPECT_EQ(+group[0]->PCKs, 10);
  EXPECT_EQ(+group[1]->form1.EXT1_PCKs, 300);
  EXPECT_EQ(+group[1]->form1.EXT1_WORD, 0x3456);
  EXPECT_EQ(+group[2]->form2.EXT2_WORD, 0x1234);
  EXPECT_EQ(group[2]->form2.EXT2_BYTE, 0x56);
  EXPECT_EQ(+group[3]->form3.EXT1_PCKs, 40);
  EXPECT_EQ(+group[3]->form3.EXT1_WORD, 0x789A);
  EXPECT_EQ(+group[3]->form3.EXT2_WORD, 0xBCDE);
  EXPECT_EQ(group[3]->form3.EXT2_BYTE, 0xF1);
  EXPECT_EQ(MemoryOf(*group[0]).Part(2, 7), Zeros(7)) << "beyond the form";
  EXPECT_EQ(MemoryOf(*group[2]).Part(5, 4), Zeros(4)) << "beyond the form";
  EXPECT_EQ(group.GetPackCount(), 10U + 12 + 300 + 5 + 7 + 40);
  EXPECT_EQ(Written(group), image);
}

TEST(StillGroup, SizeCountsTheFirstEntriesThatTheHeaderCounts) {
  CStillVOG group;
  EXPECT_EQ(Completed(group), Bytes());
  EXPECT_EQ(group.GetPackCount(), 0U);
  EXPECT_EQ(MemoryOf(*group.AddNode()), Zeros(9));
  EXPECT_EQ(group.GetDataSize(), 18U);
  EXPECT_EQ(Completed(group), Byte(1) + Zeros(17) + Zeros(2));
  group[0]->S_VOB_ENT_TY = 0xC0;  // another form takes effect at once
  group[0]->form3 = {1, 2, 3, 4};
  EXPECT_EQ(Written(group), Byte(1) + Zeros(17) + Hex("C0 00 0001 0002 0003 04"));

  Parse(group, Group(4, kForm0 + kForm1 + kForm2 + kForm3));
  group.DeleteNode(3);
  group.DeleteNode(0);
  EXPECT_EQ(group.GetDataSize(), 18U + 6 + 5);
  group.AutoComplete();
  group.AddNode();
  EXPECT_EQ(group.GetDataSize(), 18U + 6 + 5);
  group.Clear();
  EXPECT_EQ(MemoryOf(group.GetHeader()), Zeros(18));
}

TEST(StillGroup, EqualityIgnoresWhatLiesBeyondTheForm) {
  CStillVOG group;
  Parse(group, Group(1, kForm1));
  CStillVOG other = group;
  other[0]->form3.EXT2_BYTE = 9;
  EXPECT_TRUE(group == other);
  other[0]->form1.EXT1_WORD = 9;
  EXPECT_FALSE(group == other);
}

TEST(AudioGroup, IsReadAndWrittenFieldByField) {
  const Bytes image = Hex("03 01 02030405  07 0102 0304  00 0010 FFFF  00 FFFF 0000");
  CStillAAG group;
  Parse(group, image);
  EXPECT_EQ(group.GetHeader().AA_ENT_Ns, 3);
  EXPECT_EQ(group.GetHeader().AAG_GI_BYTE, 1);
  EXPECT_EQ(+group.GetHeader().AAG_GI_DWORD, 0x02030405U);
  EXPECT_EQ(group[0]->AA_ENT_BYTE, 7);
  EXPECT_EQ(+group[0]->PCKs, 0x0102);
  EXPECT_EQ(+group[0]->AA_ENT_WORD, 0x0304);
  EXPECT_EQ(group.GetPackCount(), 65809U);
  EXPECT_EQ(group.GetDataSize(), 21U);
  EXPECT_EQ(Written(group), image);
}

TEST(AudioGroup, SizeFollowsTheHeaderUnlessEmpty) {
  CStillAAG group;
  EXPECT_EQ(Completed(group), Bytes());
  EXPECT_EQ(group.GetPackCount(), 0U);
  group.AddNode();
  group.AddNode();
  EXPECT_EQ(group.GetDataSize(), 6U);
  EXPECT_EQ(Completed(group), Byte(2) + Zeros(15));
  group.DeleteNode(0);
  EXPECT_EQ(group.GetDataSize(), 16U);
  group.Clear();
  EXPECT_EQ(MemoryOf(group.GetHeader()), Zeros(6));
}

const Bytes kStillFile = Word(1) + Pointed(64, {Group(1, kForm0)});                     // at 62
const Bytes kAudioFile = Word(1) + Pointed(94, {Hex("01 AA BBCCDDEE  01 0203 0405")});  // at 92

TEST(StillTable, LaysOutItsFourPartsBehindEachOther) {
  const Bytes image =
      Hex("01 01 01 02 0000006C") + Ramp(54) + kStillFile + Hex("A1A2 B1B2") + kAudioFile;
  CStillAVFileTable table;
  Parse(table, image);
  EXPECT_TRUE(table.HasStillAVFile() && table.HasAdditionalAFile());
  EXPECT_EQ(table.GetHeader().S_VOB_STI_Ns, 1);
  EXPECT_EQ(table.GetHeader().S_A_ATR_Ns, 2);
  EXPECT_EQ(+table.GetHeader().S_AVFIT_EA, 108U);
  EXPECT_EQ(MemoryOf(*table.GetVOBStreamNode(0)), Ramp(54));
  EXPECT_EQ(MemoryOf(*table.GetAAStreamNode(1)), Hex("B1B2"));
  EXPECT_EQ(table.GetStillAVFile()[0]->S_VOGI_SA, 68U);
  EXPECT_EQ(table.GetAdditionalAFile()[0]->S_AAGI_SA, 98U);
  EXPECT_EQ(table.GetDataSize(), 109U);
  EXPECT_EQ(Written(table), image);
  table.GetStillAVFile()[0]->S_VOGI_SA = table.GetAdditionalAFile()[0]->S_AAGI_SA = 0;
  EXPECT_EQ(Completed(table), image);

  const CStillAVFileTable copy = table;
  table.Clear();
  EXPECT_EQ(MemoryOf(table.GetHeader()), Zeros(8));
  EXPECT_TRUE(table.IsEmpty() && table.GetAAStreamCount() == 0);
  EXPECT_TRUE(table.GetStillAVFile().IsEmpty() && table.GetAdditionalAFile().IsEmpty());
  table = copy;
  EXPECT_EQ(Written(table), image);
}

TEST(StillTable, ReadsTheFilesOnlyWhereTheHeaderCountsOne) {
  for (const unsigned count : {0U, 2U, 255U}) {
    CStillAVFileTable table;
    Parse(table, Byte(count) + Byte(count) + Hex("01 02 00000000") + Ramp(54) + Hex("A1A2 B1B2"));
    EXPECT_FALSE(table.HasStillAVFile() || table.HasAdditionalAFile());
    EXPECT_TRUE(table.GetStillAVFile().IsEmpty() && table.GetAdditionalAFile().IsEmpty());
    EXPECT_EQ(Completed(table), Hex("00 00 01 02 00000041") + Ramp(54) + Hex("A1A2 B1B2"));
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
  EXPECT_TRUE(table.IsEmpty());
  EXPECT_TRUE(table.HasStillAVFile());
}

}  // namespace
}  // namespace VESKA
