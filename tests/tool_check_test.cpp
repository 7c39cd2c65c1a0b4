// What `veska check` finds: kinds of damage, each with the code and the offset that tell its cause.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <random>
#include <set>

#include "image_builder.h"
#include "image_check.h"
#include "tool_run.h"

namespace {

using namespace veska_tool;
using VESKA::Byte;
using VESKA::Bytes;
using VESKA::Hex;
using VESKA::Long;
using VESKA::Word;
using VESKA::Zeros;

constexpr std::size_t kLimit = 50;

struct Patch {
  std::size_t offset;
  Bytes bytes;
};

struct Damage {
  const char* name;
  const char* sample;
  std::vector<Patch> patches;
  std::ptrdiff_t growth;  // bytes cut off the end, or zeros appended
  Code code;
  std::uint64_t offset;
  const char* right = "";
};

Bytes Damaged(const Damage& damage) {
  Bytes image = VESKA::Sample(damage.sample);
  image.resize(image.size() + static_cast<std::size_t>(damage.growth));
  for (const Patch& patch : damage.patches) image = image.With(patch.offset, patch.bytes);
  return image;
}

// In mixed_full: play lists at 520, movie table at 1104 (VOB 1 at 1258, its time map at 1281),
// still table at 1814 (groups at 1940 and 1980, audio streams at 2020, audio index at 2024),
// original chain at 2091 (programs at 2095, cell index at 2805, cell 1 at 2877), user chains at
// 5178 (chain 1 at 5192, chain 2 at 5902), texts at 6482 (sets from 6518), manufacturers at 6886,
// end at 8141.
const Damage kDamages[] = {
    // The file as a whole.
    {"cut within the header", "empty", {}, -500, Code::kShortFile, 0, "at least 512"},
    {"another identifier",
     "mixed_full",
     {{11, Byte('1')}},
     0,
     Code::kIdentifier,
     0,
     "DVD_RTR_VMG0"},
    {"cut within the last table", "mixed_full", {}, -1, Code::kFileCutOff, 12},
    {"cut within a chain", "movie_recorder", {}, -4000, Code::kDoesNotLoad, 7977},
    {"end of file too high", "mixed_full", {{12, Long(9000)}}, 0, Code::kFileEnd, 12, "8140"},
    {"end of file too low", "mixed_full", {{12, Long(100)}}, 0, Code::kFileEnd, 12, "8140"},
    {"padded to sectors", "still_camera", {}, 1461, Code::kPadding, 2635},
    {"the rest of another file", "still_camera", {{2700, Byte(1)}}, 100, Code::kBytesBehind, 2635},
    // Addresses.
    {"movie table's address",
     "mixed_full",
     {{256, Long(1105)}},
     0,
     Code::kTableElsewhere,
     256,
     "1104"},
    {"still table's address",
     "mixed_full",
     {{260, Long(0)}},
     0,
     Code::kTableElsewhere,
     260,
     "1814"},
    {"original chain's address",
     "mixed_full",
     {{304, Long(0xFFFFFFFF)}},
     0,
     Code::kTableElsewhere,
     304,
     "2091"},
    {"all addresses zeroed",
     "mixed_full",
     {{256, Zeros(104)}},
     0,
     Code::kTableElsewhere,
     352,
     "6482"},
    {"texts' address past the end", "empty", {{352, Long(541)}}, 0, Code::kAddressOutside, 352},
    {"VOB address in the index", "odd_layout", {{6060, Long(130)}}, 0, Code::kAddressOutside, 6060},
    {"VOB address past the end",
     "odd_layout",
     {{6060, Long(1 << 20)}},
     0,
     Code::kAddressOutside,
     6060},
    {"a table's address in another", "odd_layout", {{356, Long(830)}}, 0, Code::kOverlap, 830},
    {"two VOBs share an address", "odd_layout", {{6064, Long(143)}}, 0, Code::kOverlap, 6056},
    {"VOB address", "mixed_full", {{1242, Long(9)}}, 0, Code::kElsewhere, 1242, "310"},
    {"all VOB addresses zeroed",
     "mixed_full",
     {{1234, Zeros(24)}},
     0,
     Code::kElsewhere,
     1254,
     "623"},
    {"still group address", "mixed_full", {{1936, Long(1)}}, 0, Code::kElsewhere, 1936, "166"},
    {"audio group address", "mixed_full", {{2030, Long(70000)}}, 0, Code::kElsewhere, 2030, "245"},
    {"cell address", "mixed_full", {{2809, Long(0)}}, 0, Code::kElsewhere, 2809, "804"},
    {"user chain address", "mixed_full", {{5188, Long(15)}}, 0, Code::kElsewhere, 5188, "724"},
    {"text set address", "mixed_full", {{6498, Word(3)}}, 0, Code::kElsewhere, 6498, "87"},
    {"tables in another order", "odd_layout", {}, 0, Code::kOrder, 6064},
    {"bytes between structures", "odd_layout", {}, 0, Code::kUnusedBytes, 1416},
    {"end address too low", "mixed_full", {{1108, Long(700)}}, 0, Code::kEndTooLow, 1108, "709"},
    {"end address too high",
     "mixed_full",
     {{5180, Long(1 << 30)}},
     0,
     Code::kEndTooHigh,
     5180,
     "1303"},
    {"header's end address", "mixed_full", {{28, Long(0)}}, 0, Code::kEndTooLow, 28, "1103"},
    {"play lists' end address", "mixed_full", {{516, Long(7)}}, 0, Code::kEndTooLow, 516, "591"},
    {"end address behind all", "odd_layout", {}, 0, Code::kEndBehind, 5930, "442"},
    {"no movie table", "odd_layout", {{256, Long(0)}}, 0, Code::kTableMissing, 256},
    {"no original chain", "odd_layout", {{304, Long(0)}}, 0, Code::kChainMissing, 304},
    {"empty table kept", "odd_layout", {{3114, Byte(0)}}, 0, Code::kEmptyTable, 3119},
    // Counts.
    {"streams past the end", "odd_layout", {{5929, Byte(255)}}, 0, Code::kPastFile, 5929},
    {"play list count", "mixed_full", {{515, Byte(200)}}, 0, Code::kCountAndRoom, 515, "4"},
    {"movie stream count", "mixed_full", {{1107, Byte(9)}}, 0, Code::kCountAndRoom, 1107, "2"},
    {"VOB count", "mixed_full", {{1232, Word(60000)}}, 0, Code::kCountAndRoom, 1232, "6"},
    {"time entry count", "mixed_full", {{1281, Word(60000)}}, 0, Code::kCountAndRoom, 1281, "2"},
    {"VOBU count too high", "mixed_full", {{1283, Word(7)}}, 0, Code::kCountAndRoom, 1283, "6"},
    {"VOBU count too low", "mixed_full", {{1283, Word(5)}}, 0, Code::kCountAndRoom, 1283, "6"},
    {"still stream count", "mixed_full", {{1816, Byte(0)}}, 0, Code::kCountAndRoom, 1816, "2"},
    {"still entry count", "mixed_full", {{1940, Byte(5)}}, 0, Code::kCountAndRoom, 1940, "4"},
    {"audio stream count", "mixed_full", {{1817, Byte(3)}}, 0, Code::kCountAndRoom, 1817, "2"},
    {"audio entry count", "mixed_full", {{2059, Byte(77)}}, 0, Code::kCountAndRoom, 2059, "2"},
    {"program count", "mixed_full", {{2092, Byte(7)}}, 0, Code::kCountAndRoom, 2092, "5"},
    {"cell count", "mixed_full", {{2093, Word(1)}}, 0, Code::kCountAndRoom, 2093, "18"},
    {"entry point count", "mixed_full", {{2933, Word(900)}}, 0, Code::kCountAndRoom, 2933, "2"},
    {"user chain count", "mixed_full", {{5179, Byte(0)}}, 0, Code::kCountAndRoom, 5179, "2"},
    {"text set count", "mixed_full", {{6484, Word(6)}}, 0, Code::kCountAndRoom, 6484, "7"},
    {"text set size", "mixed_full", {{6492, Word(17)}}, 0, Code::kCountAndRoom, 6492, "16"},
    {"manufacturer count", "mixed_full", {{6886, Word(4)}}, 0, Code::kCountAndRoom, 6886, "3"},
    {"presence of 2", "mixed_full", {{1106, Byte(2)}}, 0, Code::kPresenceValue, 1106, "1"},
    {"presence of 7 without index", "empty", {{522, Byte(7)}}, 0, Code::kPresenceValue, 522, "0"},
    {"index of nothing", "odd_layout", {{6054, Word(0)}}, 0, Code::kPresentButEmpty, 6054},
    {"presence of 0", "mixed_full", {{1815, Byte(0)}}, 0, Code::kPresentUncounted, 1815, "1"},
    {"program with too many cells",
     "mixed_full",
     {{2239, Word(300)}},
     0,
     Code::kTooManyCells,
     2239,
     "1"},
    {"program with too few cells",
     "mixed_full",
     {{2523, Word(0)}},
     0,
     Code::kCellsOfNoProgram,
     2095},
    // References.
    {"header's cell point",
     "mixed_full",
     {{70, Word(19)}},
     0,
     Code::kPointToNoCell,
     70,
     "1 to 18, or 65535 for none"},
    {"play list's cell point",
     "mixed_full",
     {{658, Word(0)}},
     0,
     Code::kPointToNoCell,
     658,
     "1 to 18, or 65535 for none"},
    {"program's cell point",
     "mixed_full",
     {{2229, Word(65534)}},
     0,
     Code::kPointToNoCell,
     2229,
     "1 to 18, or 65535 for none"},
    {"user program's cell point",
     "mixed_full",
     {{5330, Word(99)}},
     0,
     Code::kUserPointToNoCell,
     5330,
     "1 to 18, or 65535 for none"},
    {"cell point zeroed", "mixed_full", {{85, Zeros(8)}}, 0, Code::kPointNotSet, 85},
    // Contents.
    {"entry point of kind 10",
     "mixed_full",
     {{2939, Byte(0x9B)}},
     0,
     Code::kEntryKind,
     2939,
     "00 or 01"},
    {"cell of kind 111", "mixed_full", {{2896, Byte(0xE0)}}, 0, Code::kCellKind, 2896, "001"},
    {"still cell as movie cell",
     "mixed_full",
     {{2896, Byte(0)}},
     0,
     Code::kWrongCellKind,
     2896,
     "still"},
    {"movie cell as still cell",
     "mixed_full",
     {{2878, Byte(0x20)}},
     0,
     Code::kWrongCellKind,
     2878,
     "movie"},
    {"empty VOB", "odd_layout", {{6104, Zeros(4)}}, 0, Code::kEmptyVob, 6104},
    {"empty still group", "odd_layout", {{5760, Byte(0)}}, 0, Code::kEmptyStillGroup, 5760},
    {"empty audio group", "odd_layout", {{5832, Byte(0)}}, 0, Code::kEmptyAudioGroup, 5832},
    {"time map without VOBUs", "odd_layout", {{6106, Word(0)}}, 0, Code::kNoVobus, 6104},
    {"VOBU entries zeroed", "mixed_full", {{1308, Zeros(9)}}, 0, Code::kZeroRecords, 1308},
    {"stream zeroed", "mixed_full", {{1172, Zeros(60)}}, 0, Code::kZeroRecords, 1172},
    // Texts, manufacturers, completing.
    {"text past its set", "mixed_full", {{6519, Byte(200)}}, 0, Code::kTextPastSet, 6518},
    {"information address", "mixed_full", {{6926, Word(20)}}, 0, Code::kNegativeLength, 6926},
    {"end before an information",
     "mixed_full",
     {{6888, Long(60)}},
     0,
     Code::kEndTooLow,
     6888,
     "1254"},
    {"not completed", "odd_layout", {}, 0, Code::kCompletingChanges, 256, "812"}};

TEST(CheckTest, NamesCauseAndOffsetOfDamage) {
  for (const Damage& damage : kDamages) {
    SCOPED_TRACE(damage.name);
    const CheckResult result = CheckImage(Damaged(damage), kLimit);
    const auto found = result.findings.Kept();
    const auto at = std::find_if(found.begin(), found.end(), [&](const Finding& finding) {
      return finding.code == damage.code && finding.offset == damage.offset;
    });
    std::string all;
    for (const Finding& finding : found) {
      all += NameOf(finding.code) + " " + std::to_string(finding.offset) + " " + finding.path +
             ": " + finding.stands + " -> " + finding.right + "\n";
    }
    EXPECT_NE(at, found.end()) << all;
    if (at == found.end()) continue;
    EXPECT_EQ(at->right, damage.right) << all;
    EXPECT_FALSE(at->path.empty());
  }
}

TEST(CheckTest, ReachesEveryCodeOfTheCatalogue) {
  std::set<Code> reached{Code::kTooMuchShared};  // below
  for (const Damage& damage : kDamages) reached.insert(damage.code);
  for (const CatalogueEntry& entry : Catalogue()) {
    EXPECT_TRUE(reached.contains(entry.code)) << NameOf(entry.code);
  }
}

TEST(CheckTest, FindsNothingInCanonicalSamples) {
  for (const char* sample : {"movie_recorder", "still_camera", "mixed_full", "empty"}) {
    SCOPED_TRACE(sample);
    const CheckResult result = CheckImage(VESKA::Sample(sample), kLimit);
    EXPECT_TRUE(result.loads);
    EXPECT_TRUE(result.findings.Kept().empty());
  }
  const CheckResult odd = CheckImage(VESKA::Sample("odd_layout"), kLimit);
  EXPECT_TRUE(odd.loads);
  EXPECT_EQ(odd.findings.Count(Severity::kError), 0U);
}

/// What must hold for a file of any bytes.
void ExpectSense(const Bytes& image) {
  const CheckResult result = CheckImage(image, kLimit);
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
  std::mt19937 random(20);
  for (const char* sample : {"empty", "still_camera", "odd_layout", "mixed_full"}) {
    const Bytes image = VESKA::Sample(sample);
    for (unsigned i = 0; i < 400 && !HasFatalFailure(); ++i) {
      SCOPED_TRACE(std::string(sample) + " " + std::to_string(i));
      ExpectSense(VESKA::RandomlyDamaged(image, random, i));
    }
  }
}

TEST(CheckTest, StopsWhereStructuresShareTheirBytes) {
  constexpr std::size_t kCells = 60000;
  constexpr std::size_t kEntryPoints = 30000;
  const Bytes empty = VESKA::Sample("empty");
  const auto cell = static_cast<std::uint32_t>(4 + 4 * kCells);
  Bytes image = empty.Part(0, 536) + Hex("00 00") + Word(kCells);
  for (std::size_t i = 0; i < kCells; ++i) image += Long(cell);
  image += Hex("00 00 00 00") + Word(kEntryPoints) + Zeros(12 + 7 * kEntryPoints);
  const CheckResult result = CheckImage(image, kLimit);
  EXPECT_EQ(result.findings.Count(Code::kTooMuchShared), 1U);
  EXPECT_LT(result.map.structures.size(), image.size());
}

TEST(CheckTest, KeepsTheFirstFindingsOfEachCode) {
  Bytes image = VESKA::Sample("mixed_full");
  for (std::size_t i = 0; i < 4; ++i) image = image.With(658 + 146 * i, Word(999));
  const Findings findings = CheckImage(image, 3).findings;
  EXPECT_EQ(findings.Kept().size(), 3U);
  EXPECT_EQ(findings.Count(Code::kPointToNoCell), 4U);
  EXPECT_EQ(findings.Omitted(Code::kPointToNoCell), 1U);
}

class TemporaryFile {
 public:
  explicit TemporaryFile(const Bytes& bytes)
      : path_(std::filesystem::temp_directory_path() /
              ("veska_check_" + std::to_string(std::random_device()()))) {
    std::ofstream(path_, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
  }
  ~TemporaryFile() { std::filesystem::remove(path_); }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  std::string Name() const { return path_.string(); }

 private:
  std::filesystem::path path_;
};

TEST(CheckTest, ExitStatusFollowsTheWorstFinding) {
  const TemporaryFile bad(VESKA::Sample("mixed_full").With(1232, Word(9)));
  const TemporaryFile padded(VESKA::Sample("empty") + Zeros(3));
  const std::string good = Sample("empty.ifo");
  const std::string odd = Sample("odd_layout.ifo");
  const struct {
    std::vector<std::string> arguments;
    ExitStatus status;
  } cases[] = {{{good}, ExitStatus::kDone},
               {{bad.Name(), good}, ExitStatus::kFound},
               {{odd}, ExitStatus::kDone},
               {{"--warnings-as-errors", odd}, ExitStatus::kFound},
               {{"--warnings-as-errors", padded.Name()}, ExitStatus::kDone},
               {{good, "no/such/file"}, ExitStatus::kFile},
               {{}, ExitStatus::kUsage}};
  for (const auto& c : cases) {
    std::vector<std::string> arguments{"check"};
    arguments.insert(arguments.end(), c.arguments.begin(), c.arguments.end());
    EXPECT_EQ(::RunTool(arguments).status, c.status) << testing::PrintToString(arguments);
  }
}

TEST(CheckTest, PrintsALineForEachFinding) {
  const TemporaryFile loads(VESKA::Sample("mixed_full").With(1108, Long(700)));
  EXPECT_EQ(::RunTool({"check", loads.Name()}).out,
            loads.Name() +
                ":0x000454: error V207: movie table: the end address lies before the end of the "
                "last structure: M_AVFIT_EA is 700; right: 709\n" +
                loads.Name() + ": 1 error, 0 warnings, 0 notes\n");

  const TemporaryFile cut(VESKA::Sample("mixed_full").Part(0, 1500));
  const std::string out = ::RunTool({"check", cut.Name()}).out;
  for (const char* line :
       {": error V104: header: the file ends before its end address: VMG_EA is 8140, and the file "
        "has 1500 bytes\n",
        "\n  movie table: damaged, 2 of 6 items\n", "\n  still table: lost\n"}) {
    EXPECT_NE(out.find(line), std::string::npos) << out;
  }
}

TEST(CheckTest, PrintsJson) {
  const TemporaryFile bad(VESKA::Sample("mixed_full").With(1232, Word(9)));
  const auto json = nlohmann::json::parse(::RunTool({"check", "--json", bad.Name()}).out);
  EXPECT_EQ(json.at("version"), 1);
  const auto& file = json.at("files").at(0);
  EXPECT_EQ(file.at("loads"), false);
  EXPECT_EQ(file.at("tables").size(), kTables - 1);
  const auto& finding = file.at("findings").at(0);
  EXPECT_EQ(finding.at("code"), "V302");
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
