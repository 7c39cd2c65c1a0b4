// What an examination finds: kinds of damage, each with the code and the offset that tell its
// cause.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>

#include "basis/text.h"
#include "check/examined.h"
#include "support/image_builder.h"

namespace {

using namespace VESKA::workshop;
using enum Code;
using VESKA::Byte;
using VESKA::Bytes;
using VESKA::Hex;
using VESKA::Long;
using VESKA::Sample;
using VESKA::Word;
using VESKA::Zeros;

constexpr std::size_t kLimit = 50;

constexpr const char* kFull = "mixed_full";
constexpr const char* kOdd = "odd_layout";
constexpr const char* kEmpty = "empty";
constexpr const char* kStill = "still_camera";
constexpr const char* kMovie = "movie_recorder";

constexpr const char* kNumbers = "1 to 18, or 65535 for none";

struct Damage {
  const char* name;
  const char* sample;
  Code code;  // what is found, and where
  std::uint64_t offset;
  std::size_t at;  // what was done
  Bytes bytes;
  const char* right = "";
  std::ptrdiff_t growth = 0;  // bytes cut off the end, or zeros appended
};

Bytes Damaged(const Damage& damage) {
  Bytes image = Sample(damage.sample);
  image.resize(image.size() + static_cast<std::size_t>(damage.growth));
  return image.With(damage.at, damage.bytes);
}

// In mixed_full: play lists at 520, movie table at 1104 (VOB 1 at 1258, its time map at 1281),
// still table at 1814 (groups at 1940 and 1980, audio streams at 2020, audio index at 2024),
// original chain at 2091 (programs at 2095, cell index at 2805, cell 1 at 2877), user chains at
// 5178 (chain 1 at 5192, chain 2 at 5902), texts at 6482 (sets from 6518), manufacturers at 6886,
// end at 8141.
const Damage kDamages[] = {
    // The file as a whole.
    {"cut within the header", kEmpty, kShortFile, 0, 0, {}, "at least 512", -500},
    {"another identifier", kFull, kIdentifier, 0, 11, Byte('1'), "DVD_RTR_VMG0"},
    {"cut within the last table", kFull, kFileCutOff, 12, 0, {}, "", -1},
    {"cut within a chain", kMovie, kDoesNotLoad, 7977, 0, {}, "", -4000},
    {"end of file too high", kFull, kFileEnd, 12, 12, Long(9000), "8140"},
    {"end of file too low", kFull, kFileEnd, 12, 12, Long(100), "8140"},
    {"padded to sectors", kStill, kPadding, 2635, 0, {}, "", 1461},
    {"the rest of another file", kStill, kBytesBehind, 2635, 2700, Byte(1), "", 100},
    // Addresses.
    {"movie table's address", kFull, kTableElsewhere, 256, 256, Long(1105), "1104"},
    {"still table's address", kFull, kTableElsewhere, 260, 260, Long(0), "1814"},
    {"original chain's address", kFull, kTableElsewhere, 304, 304, Long(0xFFFFFFFF), "2091"},
    {"all addresses zeroed", kFull, kTableElsewhere, 352, 256, Zeros(104), "6482"},
    {"texts' address past the end", kEmpty, kAddressOutside, 352, 352, Long(541)},
    {"VOB address in the index", kOdd, kAddressOutside, 6060, 6060, Long(130)},
    {"VOB address past the end", kOdd, kAddressOutside, 6060, 6060, Long(1 << 20)},
    {"a table's address in another", kOdd, kOverlap, 830, 356, Long(830)},
    {"two VOBs share an address", kOdd, kOverlap, 6056, 6064, Long(143)},
    {"VOB address", kFull, kElsewhere, 1242, 1242, Long(9), "310"},
    {"all VOB addresses zeroed", kFull, kElsewhere, 1254, 1234, Zeros(24), "623"},
    {"still group address", kFull, kElsewhere, 1936, 1936, Long(1), "166"},
    {"audio group address", kFull, kElsewhere, 2030, 2030, Long(70000), "245"},
    {"cell address", kFull, kElsewhere, 2809, 2809, Long(0), "804"},
    {"user chain address", kFull, kElsewhere, 5188, 5188, Long(15), "724"},
    {"text set address", kFull, kElsewhere, 6498, 6498, Word(3), "87"},
    {"tables in another order", kOdd, kOrder, 6064, 0, {}},
    {"bytes between structures", kOdd, kUnusedBytes, 1416, 0, {}},
    {"end address too low", kFull, kEndTooLow, 1108, 1108, Long(700), "709"},
    {"end address too high", kFull, kEndTooHigh, 5180, 5180, Long(1 << 30), "1303"},
    {"header's end address", kFull, kEndTooLow, 28, 28, Long(0), "1103"},
    {"play lists' end address", kFull, kEndTooLow, 516, 516, Long(7), "591"},
    {"end address behind all", kOdd, kEndBehind, 5930, 0, {}, "442"},
    {"no movie table", kOdd, kTableMissing, 256, 256, Long(0)},
    {"no original chain", kOdd, kChainMissing, 304, 304, Long(0)},
    {"empty table kept", kOdd, kEmptyTable, 3119, 3114, Byte(0)},
    // Counts.
    {"streams past the end", kOdd, kPastFile, 5929, 5929, Byte(255)},
    {"play list count", kFull, kCountAndRoom, 515, 515, Byte(200), "4"},
    {"movie stream count", kFull, kCountAndRoom, 1107, 1107, Byte(9), "2"},
    {"VOB count", kFull, kCountAndRoom, 1232, 1232, Word(60000), "6"},
    {"time entry count", kFull, kCountAndRoom, 1281, 1281, Word(60000), "2"},
    {"VOBU count too high", kFull, kCountAndRoom, 1283, 1283, Word(7), "6"},
    {"VOBU count too low", kFull, kCountAndRoom, 1283, 1283, Word(5), "6"},
    {"still stream count", kFull, kCountAndRoom, 1816, 1816, Byte(0), "2"},
    {"still entry count", kFull, kCountAndRoom, 1940, 1940, Byte(5), "4"},
    {"audio stream count", kFull, kCountAndRoom, 1817, 1817, Byte(3), "2"},
    {"audio entry count", kFull, kCountAndRoom, 2059, 2059, Byte(77), "2"},
    {"program count", kFull, kCountAndRoom, 2092, 2092, Byte(7), "5"},
    {"cell count", kFull, kCountAndRoom, 2093, 2093, Word(1), "18"},
    {"entry point count", kFull, kCountAndRoom, 2933, 2933, Word(900), "2"},
    {"user chain count", kFull, kCountAndRoom, 5179, 5179, Byte(0), "2"},
    {"text set count", kFull, kCountAndRoom, 6484, 6484, Word(6), "7"},
    {"text set size", kFull, kCountAndRoom, 6492, 6492, Word(17), "16"},
    {"manufacturer count", kFull, kCountAndRoom, 6886, 6886, Word(4), "3"},
    {"presence of 2", kFull, kPresenceValue, 1106, 1106, Byte(2), "1"},
    {"presence of 7 without index", kEmpty, kPresenceValue, 522, 522, Byte(7), "0"},
    {"index of nothing", kOdd, kPresentButEmpty, 6054, 6054, Word(0)},
    {"presence of 0", kFull, kPresentUncounted, 1815, 1815, Byte(0), "1"},
    {"program with too many cells", kFull, kTooManyCells, 2239, 2239, Word(300), "1"},
    {"program with too few cells", kFull, kCellsOfNoProgram, 2095, 2523, Word(0)},
    // References.
    {"header's cell point", kFull, kPointToNoCell, 70, 70, Word(19), kNumbers},
    {"play list's cell point", kFull, kPointToNoCell, 658, 658, Word(0), kNumbers},
    {"program's cell point", kFull, kPointToNoCell, 2229, 2229, Word(65534), kNumbers},
    {"user program's cell point", kFull, kUserPointToNoCell, 5330, 5330, Word(6),
     "1 to 3, or 65535 for none"},
    {"cell point zeroed", kFull, kPointNotSet, 85, 85, Zeros(8)},
    // Contents.
    {"entry point of kind 10", kFull, kEntryKind, 2939, 2939, Byte(0x9B), "00 or 01"},
    {"cell of kind 111", kFull, kCellKind, 2896, 2896, Byte(0xE0), "001"},
    {"still cell as movie cell", kFull, kWrongCellKind, 2896, 2896, Byte(0), "still"},
    {"movie cell as still cell", kFull, kWrongCellKind, 2878, 2878, Byte(0x20), "movie"},
    {"empty VOB", kOdd, kEmptyVob, 6104, 6104, Zeros(4)},
    {"empty still group", kOdd, kEmptyStillGroup, 5760, 5760, Byte(0)},
    {"empty audio group", kOdd, kEmptyAudioGroup, 5832, 5832, Byte(0)},
    {"time map without VOBUs", kOdd, kNoVobus, 6104, 6106, Word(0)},
    {"VOBU entries zeroed", kFull, kZeroRecords, 1308, 1308, Zeros(9)},
    {"stream zeroed", kFull, kZeroRecords, 1172, 1172, Zeros(60)},
    // Texts, manufacturers, completing.
    {"text past its set", kFull, kTextPastSet, 6518, 6519, Byte(200)},
    {"information address", kFull, kNegativeLength, 6926, 6926, Word(20)},
    {"end before an information", kFull, kEndTooLow, 6888, 6888, Long(60), "1254"},
    {"not completed", kOdd, kCompletingChanges, 256, 0, {}, "812"},
};

TEST(CheckTest, NamesCauseAndOffsetOfDamage) {
  std::set<Code> reached{kTooMuchShared};  // below
  for (const Damage& damage : kDamages) {
    SCOPED_TRACE(damage.name);
    reached.insert(damage.code);
    const Examined result = Examine(Damaged(damage), kLimit);
    const auto found = result.findings.Kept();
    const auto at = std::find_if(found.begin(), found.end(), [&](const Finding& finding) {
      return finding.code == damage.code && finding.offset == damage.offset;
    });
    std::string all;
    for (const Finding& finding : found) {
      all += NameOf(finding.code) + " " + std::to_string(finding.offset) + " " + finding.pointer +
             ": " + finding.stands + " -> " + finding.right + "\n";
    }
    EXPECT_NE(at, found.end()) << all;
    if (at == found.end()) continue;
    EXPECT_EQ(at->right, damage.right) << all;
    EXPECT_TRUE(IsWithin(at->pointer, PointerOf(at->table))) << at->pointer;
  }
  for (const CatalogueEntry& entry : Catalogue()) {
    EXPECT_TRUE(reached.contains(entry.code)) << NameOf(entry.code);
  }
}

TEST(CheckTest, FindsNothingInCanonicalSamplesAndNoErrorInTheOther) {
  for (const std::string sample : VESKA::kSamples) {
    SCOPED_TRACE(sample);
    const Examined result = Examine(Sample(sample), kLimit);
    EXPECT_TRUE(result.loads);
    // In mixed_full a program of a user-defined chain names a cell that this chain has not.
    EXPECT_EQ(result.findings.Count(kUserPointToNoCell), sample == kFull  ? 1U
                                                         : sample == kOdd ? 3U
                                                                          : 0U);
    EXPECT_EQ(result.findings.Kept().size() > 1, sample == kOdd);
    EXPECT_EQ(result.findings.Count(Severity::kError), 0U);
  }
}

/// What must hold for a file of any bytes.
void ExpectSense(const Bytes& image) {
  const Examined result = Examine(image, kLimit);
  const auto info = std::make_unique<VESKA::CVMGInfo>();
  ASSERT_EQ(result.loads, VESKA::Load(*info, image));
  if (result.findings.Count(Severity::kError) != 0) return;
  ASSERT_TRUE(result.loads) << "a file without an error does not load";
  info->AutoComplete();
  const Bytes saved = VESKA::Written(*info);
  const auto read = std::make_unique<VESKA::CVMGInfo>();
  ASSERT_TRUE(VESKA::Load(*read, saved) && *read == *info)
      << "a file without an error cannot be saved";
  ASSERT_FALSE(result.findings.Kept().empty() && saved != image)
      << "nothing was found, and completing changes the file";
}

TEST(CheckTest, AgreesWithTheLibraryOnAnyDamage) {
  VESKA::ForEachDamaged(400, [](const Bytes& damaged, const Bytes&) { ExpectSense(damaged); });
}

TEST(CheckTest, StopsWhereStructuresShareTheirBytes) {
  constexpr std::size_t kCells = 60000;
  constexpr std::size_t kEntryPoints = 30000;
  const Bytes empty = Sample("empty");
  const auto cell = static_cast<std::uint32_t>(4 + 4 * kCells);
  Bytes image = empty.Part(0, 536) + Hex("00 00") + Word(kCells);
  for (std::size_t i = 0; i < kCells; ++i) image += Long(cell);
  image += Hex("00 00 00 00") + Word(kEntryPoints) + Zeros(12 + 7 * kEntryPoints);
  const Examined result = Examine(image, kLimit);
  EXPECT_EQ(result.findings.Count(Code::kTooMuchShared), 1U);
  EXPECT_LT(result.map.structures.size(), image.size());
}

TEST(CheckTest, KeepsTheFirstFindingsOfEachCode) {
  Bytes image = Sample("mixed_full");
  for (std::size_t i = 0; i < 4; ++i) image = image.With(658 + 146 * i, Word(999));
  const Findings findings = Examine(image, 3).findings;
  EXPECT_EQ(findings.Kept().size(), 4U);  // and one of a user-defined chain, which the sample has
  EXPECT_EQ(findings.Count(Code::kPointToNoCell), 4U);
  EXPECT_EQ(findings.Omitted(Code::kPointToNoCell), 1U);

  // Of two counts that are too high only the first is kept, and yet the other is a known cause.
  const Bytes counts = VESKA::Sample("mixed_full").With(1283, Word(7)).With(2093, Word(60000));
  const Examined result = Examine(counts, 1);
  const auto kept = result.findings.Kept();
  const auto found = std::find_if(kept.begin(), kept.end(), [](const Finding& finding) {
    return finding.code == Code::kDoesNotLoad;
  });
  ASSERT_NE(found, kept.end());
  EXPECT_EQ(found->stands.find("memory"), std::string::npos) << found->stands;
}

TEST(CheckTest, NamesEachTableThatDoesNotLoad) {
  const Bytes image = Sample(kFull);
  const struct {
    Bytes bytes;
    std::vector<Table> tables;
  } cases[] = {{image.With(4, Byte('x')), {}},  // the tables do
               {image.Part(0, 512),
                {Table::kPlayLists, Table::kMovie, Table::kStill, Table::kOriginalChain,
                 Table::kUserChains, Table::kTexts, Table::kManufacturers}},
               {image.With(2093, Word(60000)).With(1232, Word(60000)),
                {Table::kMovie, Table::kOriginalChain}},
               {image.Part(0, 6500), {Table::kTexts, Table::kManufacturers}}};
  for (const auto& test : cases) {
    std::vector<Table> tables;
    const Examined examined = Examine(test.bytes, kLimit);
    for (const Finding& finding : examined.findings.Kept()) {
      if (finding.code == kDoesNotLoad) tables.push_back(finding.table);
    }
    std::sort(tables.begin(), tables.end());
    EXPECT_EQ(tables, test.tables);
  }
}

TEST(CheckTest, PrintsALineForEachFinding) {
  EXPECT_EQ(ToText(Check(Sample("mixed_full").With(1108, Long(700))), "disc"),
            "disc:0x000454: error V207: movie: the end address lies before the end of the "
            "last structure: M_AVFIT_EA is 700; right: 709\n"
            "disc:0x001826: warning V402: user_chains / chain 2 / program 2: a cell point of a "
            "user-defined chain names none of its cells: the cell number is 8; right: 1 to 1, or "
            "65535 for none\n"
            "disc: 1 error, 1 warning, 0 notes\n");

  const std::string out = ToText(Check(Sample("mixed_full").Part(0, 1500)), "disc");
  for (const char* line :
       {": error V104: header: the file ends before its end address: VMG_EA is 8140, and the file "
        "has 1500 bytes\n",
        "\n  movie: damaged, 2 of 6 items\n", "\n  still: lost\n"}) {
    EXPECT_NE(out.find(line), std::string::npos) << out;
  }
}

TEST(CheckTest, PrintsJson) {
  const NamedExamination bad[] = {{"disc", Check(Sample("mixed_full").With(1232, Word(9)))}};
  const auto json = nlohmann::json::parse(ToJson(bad));
  EXPECT_EQ(json.at("version"), 2);
  const auto& file = json.at("files").at(0);
  EXPECT_EQ(file.at("loads"), false);
  EXPECT_EQ(file.at("tables").size(), kTables.size() - 1);
  const auto& finding = file.at("findings").at(0);
  EXPECT_EQ(finding.at("code"), "V302");
  EXPECT_EQ(finding.at("pointer"), "/movie");
  EXPECT_EQ(finding.at("path"), "movie");
  EXPECT_EQ(finding.at("offset"), 1232);
  EXPECT_EQ(finding.at("right"), "6");
}

TEST(CheckTest, TheDocumentListsTheCatalogue) {
  std::ifstream file(VESKA_SAMPLES "/../docs/check.md");
  std::vector<std::string> listed;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("| V")) listed.push_back(line);
  }
  std::vector<std::string> catalogue;
  for (const CatalogueEntry& entry : Catalogue()) {
    catalogue.push_back("| " + NameOf(entry.code) + " | " + NameOf(entry.severity) + " | " +
                        entry.table + " | " + entry.title + " |");
  }
  EXPECT_EQ(listed, catalogue);
}

}  // namespace
