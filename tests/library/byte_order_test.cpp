// Many records at once, in every form that the machine has, against a conversion number by number.
#include <cstring>

#include "support/forced_form.h"
#include "support/guarded_image.h"
#include "support/image_builder.h"

namespace VESKA {
namespace {

constexpr std::size_t kMostRecords = 200;
constexpr std::size_t kAlignments = 32;

template <class Record>
class CopyTest : public testing::Test {};
using Records =
    testing::Types<tag_VOBU_ENT, tag_TM_ENT, tag_AA_ENT, tag_SMLI, tag_TMAP_GI, tag_M_C_EPI>;
TYPED_TEST_SUITE(CopyTest, Records);

TYPED_TEST(CopyTest, ConvertsAnyNumberOfRecordsAnywhere) {
  constexpr std::size_t kSize = kFileSize<TypeParam>;
  const Bytes file = Ramp(kSize * kMostRecords + kAlignments);
  Bytes memory(kSize * kMostRecords);
  for (std::size_t i = 0; i < memory.size(); i += kSize) {
    CopyFields<kFields<TypeParam>>(memory.data() + i, file.data() + i);
  }
  GuardedImage page(file.size());
  const Bytes untouched(2 * kAlignments, 0xEE);
  Bytes to(untouched.size() + file.size());
  for (const CopyForm form : FormsOfTheMachine()) {
    const ForcedForm forced(form);
    for (std::size_t count = 0; count <= kMostRecords; ++count) {
      const std::size_t size = count * kSize;
      for (std::size_t i = 0; i < kAlignments; ++i) {
        const unsigned char* from = page.Place(file.data(), size + i);
        std::memset(to.data(), 0xEE, to.size());
        CopyRecords<TypeParam>(to.data() + i, from, count);
        ASSERT_EQ(std::memcmp(to.data() + i, memory.data(), size), 0);
        ASSERT_EQ(std::memcmp(to.data(), untouched.data(), i), 0);
        ASSERT_EQ(std::memcmp(to.data() + i + size, untouched.data(), kAlignments), 0);
      }
    }
  }
}

}  // namespace
}  // namespace VESKA
