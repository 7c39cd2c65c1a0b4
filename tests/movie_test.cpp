// Movie AV file information: the table, its VOBs and their time maps. The index of the VOBs is
// tested with its two sisters in index_test.cpp.
#include "image_builder.h"

namespace VESKA {
namespace {

/// A time map of `times` time entries and `vobus` VOBU entries, every byte another one.
Bytes TimeMap(unsigned times, unsigned vobus) {
  return Word(times) + Word(vobus) + Hex("0405 06070809") + Ramp(7 * times, 10) +
         Ramp(3 * vobus, 0x60);
}

TEST(TimeMap, IsReadAndWrittenFieldByField) {
  CTimeMapTable map;
  Parse(map, TimeMap(2, 5));
  EXPECT_EQ(+map.GetHeader().TM_ENT_Ns, 2);
  EXPECT_EQ(+map.GetHeader().VOBU_ENT_Ns, 5);
  EXPECT_EQ(+map.GetHeader().TM_OSF, 0x0405);
  EXPECT_EQ(+map.GetHeader().VOBU_ADR_OSF, 0x06070809U);
  ASSERT_EQ(map.GetTimeENCount(), 2);
  EXPECT_EQ(+map.GetTimeENNode(1)->number_0, 0x1112);
  EXPECT_EQ(+map.GetTimeENNode(1)->number_2, 0x13);
  EXPECT_EQ(+map.GetTimeENNode(1)->number_3, 0x14151617U);
  ASSERT_EQ(map.GetVobuENCount(), 5);
  EXPECT_EQ(+map.GetVobuENNode(4)->number_0, 0x6C);
  EXPECT_EQ(+map.GetVobuENNode(4)->word_1, 0x6D6E);
  EXPECT_EQ(map.GetDataSize(), 39U);
  EXPECT_EQ(Written(map), TimeMap(2, 5));
}

TEST(TimeMap, AddsUpWhatTheVobuEntriesSay) {
  CTimeMapTable map;
  Parse(map, Hex("0000 0003 0000 00000000 AA 0C2F BB 0801 CC FFFF"));
  EXPECT_EQ(map.GetVobuENNode(0)->VOBU_PB_TM(), 3U);
  EXPECT_EQ(map.GetVobuENNode(0)->VOBU_SZ(), 0x2FU);
  EXPECT_EQ(map.GetPackCount(), 48U + 1023U);
  EXPECT_EQ(map.GetFieldCount(), 5U + 63U);

  CTimeMapTable times_only;
  times_only.AddTimeENNode();
  EXPECT_EQ(Completed(times_only).size(), 17U);
  EXPECT_FALSE(times_only.IsEmpty());
  EXPECT_EQ(times_only.GetPackCount() + times_only.GetFieldCount(), 0U);
}

TEST(TimeMap, SizeFollowsTheHeaderAndEmptinessTheLists) {
  CTimeMapTable map;
  map.SetTimeOffset(0x1234);
  map.SetAddrOffset(0x12345678);
  map.AutoComplete();
  EXPECT_EQ(map.GetDataSize(), 0U);
  EXPECT_EQ(Written(map), Bytes());

  for (int i = 0; i < 5; ++i) map.AddVobuENNode();
  map.AddTimeENNode();
  EXPECT_EQ(map.GetDataSize(), 10U);
  map.AutoComplete();
  EXPECT_EQ(map.GetDataSize(), 32U);
  map.ClearVobuEntrys();
  EXPECT_EQ(map.GetVobuENCount(), 0);
  EXPECT_EQ(map.GetDataSize(), 32U);
  EXPECT_EQ(Completed(map), Hex("0001 0000 1234 12345678 0000 00 00000000"));
  map.ClearTimeEntrys();
  EXPECT_TRUE(map.IsEmpty());
  EXPECT_EQ(map.GetDataSize(), 0U);
  EXPECT_EQ(+map.GetHeader().TM_ENT_Ns, 1);
  EXPECT_EQ(+map.GetHeader().TM_OSF, 0x1234);
}

TEST(MovieVOB, FlagsSayWhichBlocksStandBeforeTheTimeMap) {
  const struct {
    unsigned flags;
    bool seamless, gaps;
  } kCases[] = {{0x00, false, false}, {0x07, false, false}, {0x80, true, false},
                {0x08, false, true},  {0x10, false, true},  {0x20, false, true},
                {0x40, false, true},  {0x88, true, true},   {0xFF, true, true}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.flags);
    const Bytes image = Ramp(23).With(1, Byte(c.flags)) + (c.seamless ? Ramp(12, 0x20) : Bytes()) +
                        (c.gaps ? Ramp(16, 0x40) : Bytes()) + TimeMap(2, 5);
    CMovieVOB vob;
    Parse(vob, image);
    EXPECT_EQ(vob.GetHeader().VOB_TY[0], 0);
    EXPECT_EQ(vob.GetHeader().VOB_TY[1], c.flags);
    EXPECT_EQ(vob.GetHeader().bytes_2[0], 2);
    EXPECT_EQ(+vob.GetHeader().time_9.base, 0x090A0B0CU);
    EXPECT_EQ(+vob.GetHeader().time_9.ext, 0x0D0E);
    EXPECT_EQ(+vob.GetHeader().time_15.base, 0x0F101112U);
    EXPECT_EQ(+vob.GetHeader().time_15.ext, 0x1314);
    EXPECT_EQ(+vob.GetHeader().number_21, 0x1516);
    EXPECT_EQ(+vob.GetSeamlessInfo().time_0.base, c.seamless ? 0x20212223U : 0U);
    EXPECT_EQ(+vob.GetSeamlessInfo().time_6.ext, c.seamless ? 0x2A2B : 0);
    EXPECT_EQ(+vob.GetAudioGaps().time_6.base, c.gaps ? 0x46474849U : 0U);
    EXPECT_EQ(+vob.GetAudioGaps().number_12, c.gaps ? 0x4C4D : 0);
    EXPECT_EQ(+vob.GetAudioGaps().number_14, c.gaps ? 0x4E4F : 0);
    EXPECT_EQ(vob.GetTimeMapTable().GetVobuENCount(), 5);
    EXPECT_EQ(Written(vob), image);
  }
}

TEST(MovieVOB, FlagsAreLookedAtAnewAndBlocksKept) {
  CMovieVOB vob;
  Parse(vob, Zeros(23).With(1, Byte(0x88)) + Ramp(12) + Ramp(16) + TimeMap(0, 1));
  EXPECT_EQ(vob.GetDataSize(), 23U + 12 + 16 + 13);
  vob.GetHeader().VOB_TY[1] = 0x08;
  EXPECT_EQ(Written(vob), Zeros(23).With(1, Byte(0x08)) + Ramp(16) + TimeMap(0, 1));
  EXPECT_EQ(+vob.GetSeamlessInfo().time_0.base, 0x00010203U);

  vob.GetTimeMapTable().ClearVobuEntrys();
  EXPECT_TRUE(vob.IsEmpty());
  EXPECT_EQ(Written(vob), Bytes());
  vob.Clear();
  EXPECT_EQ(MemoryOf(vob.GetHeader()), Zeros(23));
  EXPECT_EQ(MemoryOf(vob.GetAudioGaps()), Zeros(16));
}

/// The index of the given VOBs, `base` bytes behind the start of its table.
Bytes Index(std::size_t base, const std::vector<Bytes>& vobs) {
  return Word(vobs.size()) + Pointed(base + 2, vobs);
}

TEST(MovieTable, HoldsStreamsAndTheIndexWhereTheHeaderCountsOne) {
  const Bytes streams = Ramp(60) + Ramp(60, 60);
  const Bytes vob = Ramp(23).With(1, Byte(0)) + TimeMap(2, 5);
  const Bytes body = streams + Index(8 + 120, {vob, vob});
  const Bytes head = Hex("1122");
  for (const unsigned count : {0U, 1U, 2U}) {
    SCOPED_TRACE(count);
    CMovieAVFileTable table;
    Parse(table, head + Byte(count) + Byte(2) + Long(7 + body.size()) + body);
    EXPECT_EQ(table.HasMovieAVFile(), count == 1);
    EXPECT_EQ(table.GetMovieAVFile().GetCount(), count == 1 ? 2 : 0);
    ASSERT_EQ(table.GetStreamCount(), 2);
    EXPECT_EQ(MemoryOf(*table.GetStreamNode(1)), Ramp(60, 60));
    EXPECT_EQ(table.GetDataSize(), 8 + body.size());
    const Bytes& rest = count == 1 ? body : streams;
    EXPECT_EQ(Completed(table),
              head + Byte(count == 1 ? 1 : 0) + Byte(2) + Long(7 + rest.size()) + rest);
  }
}

TEST(MovieTable, AnEmptyOneIsItsHeader) {
  CMovieAVFileTable table;
  EXPECT_EQ(table.GetDataSize(), 1U);
  EXPECT_EQ(Completed(table), Hex("0000 00 00 00000007"));
  for (int i = 0; i < 3; ++i) table.AddStreamNode();
  EXPECT_EQ(table.GetDataSize(), 8U);
  EXPECT_EQ(Completed(table), Hex("0000 00 03 000000BB") + Zeros(180));
  table.Clear();
  EXPECT_EQ(MemoryOf(table.GetHeader()), Zeros(8));

  table.GetMovieAVFile().AddNode()->M_VOBI.GetTimeMapTable().AddVobuENNode();
  table.AutoComplete();
  EXPECT_TRUE(table.IsEmpty());
  EXPECT_TRUE(table.HasMovieAVFile());
}

}  // namespace
}  // namespace VESKA
