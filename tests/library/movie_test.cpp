// Movie AV file information: the table, its VOBs and their time maps. The index of the VOBs is
// tested with its sisters in index_test.cpp.
#include "support/image_builder.h"

namespace VESKA {
namespace {

/// A time map of `times` time entries and `vobus` VOBU entries.
Bytes TimeMap(unsigned times, unsigned vobus) {
  return Word(times) + Word(vobus) + Hex("0405 06070809") + Ramp(7 * times, 10) +
         Ramp(3 * vobus, 0x60);
}

TEST(TimeMap, HoldsBothListsAndAddsUpWhatTheVobuEntriesSay) {
  ExpectRoundTrip<CTimeMapTable>(TimeMap(2, 5));
  CTimeMapTable map;
  Parse(map, TimeMap(2, 5));
  EXPECT_EQ(+map.GetTimeENNode(1)->number_3, 0x14151617U);
  EXPECT_EQ(+map.GetVobuENNode(4)->word_1, 0x6D6E);

  Parse(map, Hex("0000 0003 0000 00000000 AA 0C2F BB 0801 CC FFFF"));
  EXPECT_EQ(map.GetVobuENNode(0)->VOBU_PB_TM(), 3U);
  EXPECT_EQ(map.GetVobuENNode(0)->VOBU_SZ(), 0x2FU);
  EXPECT_EQ(map.GetPackCount(), 0x2FU + 1 + 1023);
  EXPECT_EQ(map.GetFieldCount(), 3U + 2 + 63);
  map.ClearVobuEntrys();
  map.AddTimeENNode();
  EXPECT_EQ(map.GetPackCount() + map.GetFieldCount(), 0U);
}

TEST(TimeMap, SizeFollowsTheHeaderAndEmptinessTheLists) {
  CTimeMapTable map;
  map.SetTimeOffset(0x1234);
  map.SetAddrOffset(0x12345678);
  EXPECT_EQ(Completed(map), Bytes());
  for (int i = 0; i < 5; ++i) map.AddVobuENNode();
  map.AddTimeENNode();
  EXPECT_EQ(map.GetDataSize(), 10U);
  EXPECT_EQ(Completed(map).size(), 10U + 7 + 15);
  map.ClearVobuEntrys();
  EXPECT_EQ(map.GetDataSize(), 32U);
  EXPECT_EQ(Completed(map), Hex("0001 0000 1234 12345678 0000 00 00000000"));
  map.ClearTimeEntrys();
  EXPECT_EQ(map.GetDataSize(), 0U);
  EXPECT_EQ(+map.GetHeader().TM_ENT_Ns, 1);
}

TEST(MovieVOB, FlagsSayWhichBlocksStandBeforeTheTimeMap) {
  for (const unsigned flags : {0x00U, 0x07U, 0x80U, 0x08U, 0x10U, 0x20U, 0x40U, 0x88U, 0xFFU}) {
    SCOPED_TRACE(flags);
    const bool seamless = flags >= 0x80, gaps = (flags & 0x78U) != 0;
    const Bytes general = Ramp(23).With(1, Byte(flags));
    const Bytes image = general + (seamless ? Ramp(12, 0x20) : Bytes()) +
                        (gaps ? Ramp(16, 0x40) : Bytes()) + TimeMap(2, 5);
    ExpectRoundTrip<CMovieVOB>(image);
    CMovieVOB vob;
    Parse(vob, image);
    EXPECT_EQ(vob.GetHeader().VOB_TY[1], flags);
    EXPECT_EQ(+vob.GetHeader().time_15.base, 0x0F101112U);
    EXPECT_EQ(+vob.GetSeamlessInfo().time_0.base, seamless ? 0x20212223U : 0U);
    EXPECT_EQ(+vob.GetAudioGaps().number_14, gaps ? 0x4E4F : 0);

    vob.GetHeader().VOB_TY[1] = 0;  // looked at anew; the blocks are kept, but not written
    EXPECT_EQ(Written(vob), general.With(1, Byte(0)) + TimeMap(2, 5));
    vob.GetHeader().VOB_TY[1] = static_cast<unsigned char>(flags);
    EXPECT_EQ(Written(vob), image);
    vob.GetTimeMapTable().Clear();
    EXPECT_EQ(Written(vob), Bytes());
  }
}

TEST(MovieTable, HoldsStreamsAndTheIndexWhereTheHeaderCountsOne) {
  const Bytes streams = Ramp(60) + Ramp(60, 60);
  const Bytes vob = Ramp(23).With(1, Byte(0)) + TimeMap(2, 5);
  const Bytes body = streams + Word(2) + Pointed(8 + 120 + 2, {vob, vob});
  for (const unsigned count : {0U, 1U, 2U}) {
    SCOPED_TRACE(count);
    CMovieAVFileTable table;
    Parse(table, Hex("1122") + Byte(count) + Byte(2) + Long(7 + body.size()) + body);
    EXPECT_EQ(table.HasMovieAVFile(), count == 1);
    EXPECT_EQ(table.GetMovieAVFile().GetCount(), count == 1 ? 2 : 0);
    EXPECT_EQ(table.GetDataSize(), 8 + body.size());
    const Bytes& rest = count == 1 ? body : streams;
    ExpectRoundTrip<CMovieAVFileTable>(Completed(table));
    EXPECT_EQ(Written(table),
              Hex("1122") + Byte(count == 1 ? 1 : 0) + Byte(2) + Long(7 + rest.size()) + rest);
  }
}

TEST(MovieTable, SizeIsThatOfTheEndAddress) {
  CMovieAVFileTable table;
  EXPECT_EQ(table.GetDataSize(), 1U);
  EXPECT_EQ(Completed(table), Hex("0000 00 00 00000007"));
  for (int i = 0; i < 3; ++i) table.AddStreamNode();
  EXPECT_EQ(table.GetDataSize(), 8U);
  EXPECT_EQ(Completed(table), Hex("0000 00 03 000000BB") + Zeros(180));
  table.Clear();
  table.GetMovieAVFile().AddNode()->M_VOBI.GetTimeMapTable().AddVobuENNode();
  table.AutoComplete();
  EXPECT_TRUE(table.IsEmpty() && table.HasMovieAVFile());
}

}  // namespace
}  // namespace VESKA
