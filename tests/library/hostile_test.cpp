// Images that lie: no byte outside them is read, no more memory is used than their size justifies,
// and whatever loads is an object like any other.

#include <gtest/gtest.h>
#include <veska/veska.h>

#include <cstdint>
#include <vector>

#include "support/forced_form.h"
#include "support/guarded_image.h"
#include "support/heap.h"
#include "support/image_builder.h"
#include "support/round_trip.h"

namespace VESKA {
namespace {

constexpr std::size_t kLargestSample = 16384;
constexpr std::size_t kMemorySlack = 1 << 20;

/// Loads images that end at an unreadable page and checks what has to hold of every load.
class Attack {
 public:
  /// False when something does not hold.
  bool Withstands(const Bytes& bytes) {
    const std::size_t size = bytes.size();
    CVMGInfo info;
    heap::StartPeak();
    const bool loaded = info.LoadFromMemory(page_.Place(bytes.data(), size),
                                            static_cast<unsigned long>(size), CVMGInfo::kLoadAll);
    if (heap::Peak() > 15 * size + kMemorySlack) return false;
    ++(loaded ? loads_ : refusals_);
    if (!loaded) return true;
    // Into a buffer of just the size that the image claims for the file: a sanitizer looks on.
    if (info.GetDataSize() <= kLargestSample) round_trip::ImageOf(info);
    return round_trip::Survives(info);
  }

  int Loads() const { return loads_; }
  int Refusals() const { return refusals_; }

 private:
  GuardedImage page_{kLargestSample};
  int loads_ = 0;
  int refusals_ = 0;
};

/// In each form of conversion.
class Hostile : public testing::TestWithParam<CopyForm> {
  const ForcedForm forced_{GetParam()};
};
INSTANTIATE_TEST_SUITE_P(Forms, Hostile, testing::ValuesIn(FormsOfTheMachine()));

TEST_P(Hostile, WithstandsEveryTruncation) {
  Attack attack;
  for (const char* sample : kSamples) {
    const Bytes image = Sample(sample);
    for (std::size_t size = 0; size <= image.size(); ++size) {
      if (!attack.Withstands(image.Part(0, size))) FAIL() << sample << " cut to " << size;
    }
  }
  EXPECT_GT(attack.Refusals(), 100);
}

// Whatever stands at an offset, a count, an address or something else, becomes each of these.
TEST_P(Hostile, WithstandsLiesAtEveryOffset) {
  Attack attack;
  for (const char* sample : {"empty", "still_camera", "odd_layout"}) {
    const Bytes image = Sample(sample);
    const std::size_t size = image.size();
    const Bytes lies[] = {Hex("00"),      Hex("7F"),      Hex("80"),      Hex("FF"),
                          Hex("0000"),    Hex("0001"),    Hex("FFFF"),    Word(size - 1),
                          Word(size),     Word(size + 1), Long(0),        Long(1),
                          Long(size - 1), Long(size),     Long(size + 1), Hex("FFFFFFFF")};
    for (const Bytes& lie : lies) {
      for (std::size_t at = 0; at + lie.size() <= size; ++at) {
        if (!attack.Withstands(image.With(at, lie))) {
          FAIL() << sample << " with " << testing::PrintToString(lie) << " at " << at;
        }
      }
    }
  }
  EXPECT_GT(attack.Loads(), 100);
  EXPECT_GT(attack.Refusals(), 100);
}

}  // namespace
}  // namespace VESKA
