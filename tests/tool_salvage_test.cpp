// What `veska salvage` reads of damaged files: all that is sure, and nothing that did not stand
// there.
#include <gtest/gtest.h>
#include <image_check.h>
#include <salvage.h>

#include <string_view>

#include "image_builder.h"

namespace {

using namespace VESKA;
using namespace veska_tool;

std::string_view ViewOf(const Bytes& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// The bytes of a structure that a salvaged file must have from the damaged one, piece by piece:
/// not what is derived, nor what refers to cells by their number.
std::vector<Bytes> TakenOver(const Structure& structure, const Bytes& image) {
  const Bytes bytes = image.Part(structure.offset, structure.size);
  const Part part = structure.part;
  if (part == Part::kFileHeader) return {bytes.Part(93, 128)};
  if (part == Part::kMovieCellInfo) return {bytes.Part(6, 12)};
  const bool is_list = part == Part::kPlayLists;
  if (is_list || part == Part::kPrograms) {
    std::vector<Bytes> texts;
    for (std::size_t i = is_list ? 8 : 4; i < bytes.size(); i += is_list ? 146 : 142) {
      texts.push_back(bytes.Part(i, 128));
    }
    return texts;
  }
  const bool is_run = InfoOf(part).one[0] != '\0' || part == Part::kTextSet;
  return std::vector<Bytes>(is_run && ImageMap::IsLeaf(part) ? 1 : 0, bytes);
}

/// What must hold for a file of any bytes.
void ExpectSense(const Bytes& damaged, const Bytes& original) {
  const SalvageResult result = SalvageImage(damaged);
  ASSERT_TRUE(result.info != nullptr || !result.is_whole);
  if (result.info == nullptr) return;
  const Bytes saved = Written(*result.info);
  const CheckResult check = CheckImage(saved, 1);
  ASSERT_TRUE(check.loads) << result.report;
  for (const Finding& finding : check.findings.Kept()) {
    ASSERT_NE(EntryOf(finding.code).severity, Severity::kError)
        << NameOf(finding.code) << " " << finding.path << finding.stands << "\n"
        << result.report;
  }
  for (const Structure& structure : check.map.structures) {
    for (const Bytes& bytes : TakenOver(structure, saved)) {
      ASSERT_NE(ViewOf(damaged).find(ViewOf(bytes)), std::string_view::npos)
          << "invented: " << InfoOf(structure.part).name << "\n"
          << result.report;
    }
  }
  ASSERT_TRUE(result.is_whole || damaged != original);
}

TEST(Salvage, InventsNothingWhateverTheDamage) {
  for (const char* sample : kSamples) ExpectSense(Sample(sample), Sample(sample));
  ForEachDamaged(200, ExpectSense);
}

TEST(Salvage, KeepsAllThatIsSure) {
  const struct {
    const char* sample;
    std::size_t at;
    Bytes patch;
    std::size_t size;            // of the file; 0 for all of it
    bool is_whole, is_complete;  // nothing was changed; the result is the undamaged sample
    const char* line;
  } cases[] = {
      {"mixed_full", 0, {}, 0, true, true, "movie table: 2 of 2 streams, 6 of 6 VOBs\n"},
      {"mixed_full", 4, Byte('x'), 0, false, true, "identifier is damaged"},
      {"mixed_full", 256, Long(1105), 0, false, true, "1105, taken as 1104"},
      {"mixed_full", 256, Zeros(104), 0, false, false, "0, taken as 6482"},
      {"mixed_full", 1232, Word(60000), 0, false, true, "60000, taken as 6"},
      {"mixed_full", 1242, Long(9), 0, false, true, "9, taken as 310"},
      {"mixed_full", 658, Word(77), 0, false, false, "named cell 77, which does not exist"},
      {"odd_layout", 1388, Long(1 << 20), 0, false, false, "7 of 8 cells"},
      {"odd_layout", 308, Long(1 << 30), 0, false, false, "user chain table: lost\n"},
      {"odd_layout", 1388, Long(1 << 20), 0, false, false, "user chain 3, program 2: named cell 2"},
      {"movie_recorder", 0, {}, 8500, false, false, "original chain: 3 of 12 programs, 0 of 40"},
      {"movie_recorder", 0, {}, 1600, false, false, "kept with"},
      {"movie_recorder", 0, {}, 300, false, false, "shorter than its header"},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.line);
    const Bytes image = Sample(test.sample);
    Bytes damaged = image.With(test.at, test.patch);
    if (test.size != 0) damaged.resize(test.size);
    const SalvageResult result = SalvageImage(damaged);
    EXPECT_EQ(result.is_whole, test.is_whole) << result.report;
    EXPECT_EQ(result.info != nullptr && Written(*result.info) == image, test.is_complete);
    EXPECT_NE(result.report.find(test.line), std::string::npos) << result.report;
  }
}

}  // namespace
