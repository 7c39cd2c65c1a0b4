// What holds for any object, over random edits. The seeds are fixed.
#include <random>

#include "edit_script.h"
#include "support/image_builder.h"
#include "support/round_trip.h"

namespace VESKA {
namespace {

class Property : public testing::TestWithParam<unsigned> {
 public:
  /// Some dozens of edits. What a file cannot hold, an item without entries, gets one.
  void Edit(CVMGInfo& info) {
    Bytes script(600);
    for (unsigned char& byte : script) byte = static_cast<unsigned char>(random_());
    fuzz::EditScript(script.data(), script.size()).Apply(info);
    std::memcpy(info.GetMAT().GetHeader().VMG_ID, "DVD_RTR_VMG0", 12);
    CMovieAVFile& vobs = info.GetMovieAVFileTable().GetMovieAVFile();
    for (int i = 0; i < vobs.GetCount(); ++i) {
      if (vobs[i]->M_VOBI.IsEmpty()) vobs[i]->M_VOBI.GetTimeMapTable().AddVobuENNode();
    }
    CStillAVFile& groups = info.GetStillAVFileTable().GetStillAVFile();
    for (int i = 0; i < groups.GetCount(); ++i) {
      if (groups[i]->S_VOGI.IsEmpty()) groups[i]->S_VOGI.AddNode();
    }
    CAdditionalAFile& audio = info.GetStillAVFileTable().GetAdditionalAFile();
    for (int i = 0; i < audio.GetCount(); ++i) {
      if (audio[i]->S_AAGI.IsEmpty()) audio[i]->S_AAGI.AddNode();
    }
  }

 private:
  std::mt19937 random_{GetParam()};
};
INSTANTIATE_TEST_SUITE_P(Seeds, Property, testing::Range(1U, 9U));

TEST_P(Property, AnyEditsCompletedAndWrittenReadBackEqual) {
  CVMGInfo info;
  for (int round = 0; round < 20; ++round) {
    Edit(info);
    Written(info);  // stale as it is, within its size and without a change
    ASSERT_TRUE(round_trip::Survives(info));
    ASSERT_TRUE(round_trip::FitsFile(info)) << "or it need not have survived";
    if (round % 4 != 0) continue;
    ASSERT_TRUE(Load(info, Completed(info)));  // on with one that was loaded
  }
  EXPECT_GT(info.GetDataSize(), 4000U) << "there is something in it";
}

TEST_P(Property, CopiesShareNothing) {
  CVMGInfo info, copy;
  for (int round = 0; round < 5; ++round) {
    Edit(info);
    copy = info;
    const Bytes image = Completed(info);
    ASSERT_EQ(Completed(copy), image);
    ASSERT_TRUE(copy == info);
    Edit(info);
    ASSERT_EQ(Completed(copy), image);
    const Bytes edited = Completed(info);
    CVMGInfo other(copy);
    Edit(copy);
    ASSERT_EQ(Completed(info), edited);
    ASSERT_EQ(Completed(other), image);
  }
}

}  // namespace
}  // namespace VESKA
