// An object that is loaded again: it becomes what a new one would be, and uses its memory again.
#include "support/heap.h"
#include "support/image_builder.h"
#include "support/round_trip.h"

namespace VESKA {
namespace {

/// Puts lists of every kind out of order.
void Edit(CVMGInfo& info) {
  info.GetOriginalPGC().AddCellNode(CELL_STILL);
  info.GetOriginalPGC().MoveCellNodes(0, 0, 1);
  info.GetOriginalPGC().DeletePGNode(0);
  CMovieAVFile& vobs = info.GetMovieAVFileTable().GetMovieAVFile();
  if (!vobs.IsEmpty()) vobs[0]->M_VOBI.GetTimeMapTable().DeleteVobuENNode(0);
  vobs.InsertNode(0);
  unsigned char text[] = "a text of another length";
  CTextDataMgr& texts = info.GetTextDataMgr();
  if (texts.IsEmpty() || texts[0]->IT_TXT.IsEmpty()) return;
  texts[0]->IT_TXT.SetNode(0, {1, sizeof text, text});
}

TEST(Reload, OverAnythingIsLikeANewLoad) {
  for (const char* before : kSamples) {
    for (const char* sample : kSamples) {
      for (const bool edited : {false, true}) {
        SCOPED_TRACE(std::string(before) + ", then " + sample);
        const Bytes image = Sample(sample);
        CVMGInfo info, fresh;
        ASSERT_TRUE(Load(info, Sample(before)) && Load(fresh, image));
        if (edited) Edit(info);
        ASSERT_TRUE(Load(info, image));
        EXPECT_TRUE(info == fresh);
        EXPECT_EQ(round_trip::ImageOf(info), round_trip::ImageOf(fresh));
        ASSERT_TRUE(Load(info, image, 0) && Load(fresh, image, 0));
        EXPECT_TRUE(info == fresh) << "tables that the flags leave out";
      }
    }
  }
}

TEST(Reload, ThatFailsKeepsNothingOfBefore) {
  const Bytes before = Sample("odd_layout");
  const Bytes image = Sample("mixed_full");
  CVMGInfo info;
  for (std::size_t size = 1; size < image.size(); size += 3) {
    CVMGInfo fresh;
    ASSERT_TRUE(Load(info, before));
    ASSERT_EQ(Load(info, image.Part(0, size)), Load(fresh, image.Part(0, size)));
    ASSERT_TRUE(info == fresh) << size;
  }
}

TEST(Reload, LeavesNoOptionalBlockBehind) {
  const Bytes map = Hex("0000 0001 0000 00000000  01 0203");
  CMovieVOB vob;
  Parse(vob, Hex("00 F8") + Ramp(21) + Ramp(12, 1) + Ramp(16, 1) + map);
  Parse(vob, Hex("00 00") + Ramp(21) + map);
  EXPECT_EQ(MemoryOf(vob.GetSeamlessInfo()), Zeros(12));
  EXPECT_EQ(MemoryOf(vob.GetAudioGaps()), Zeros(16));
}

TEST(Reload, TakesItsMemoryAgainAndNoMoreThanANewObject) {
  for (const char* sample : kSamples) {
    SCOPED_TRACE(sample);
    const Bytes image = Sample(sample);
    const std::size_t before = heap::InUse();
    CVMGInfo fresh;
    ASSERT_TRUE(Load(fresh, image));
    const std::size_t held = heap::InUse() - before;

    const std::size_t calls = heap::Calls();
    ASSERT_TRUE(Load(fresh, image));
    EXPECT_LE(heap::Calls() - calls, 2U) << "the caller's own, and the manufacturers'";

    for (const char* other : kSamples) {
      const std::size_t start = heap::InUse();
      CVMGInfo info;
      ASSERT_TRUE(Load(info, Sample(other)) && Load(info, image));
      EXPECT_LE(heap::InUse() - start, held + held / 16) << other;
    }
  }
}

}  // namespace
}  // namespace VESKA
