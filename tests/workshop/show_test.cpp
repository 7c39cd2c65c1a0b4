// What a file is shown as, held against what is known of the sample files.
#include <gtest/gtest.h>
#include <veska/workshop/show.h>

#include <fstream>
#include <regex>

#include "support/image_builder.h"
#include "support/samples.h"

namespace {

/// What becomes of a line of the facts, step by step, until it is a pattern of what the tool
/// prints. `~` is anything else in the line.
const std::pair<const char*, const char*> kSteps[] = {
    {R"([.()])", R"(\$&)"},
    {"block yes", "block: time_0~"},
    {"block no", "block: no"},
    {"cell number 65535", "cell point: no cell"},
    {"cell number (\\d+)", "cell point: cell $1 ~"},
    {"^(?:presence|after completion).*", ""},  // not shown: what follows from the tables
    {"^file size: (.*)", "ifo: $1 bytes, laid"},
    {"^laid out .*: yes", "laid out as this tool writes it\n"},
    {"^laid out .*: no", "laid out otherwise"},
    {"^identifier: (.*)", "VMG_ID \"$1\"\n"},
    {"^(\\w+_[SE]A): (.*)", "\n    $1 $2[ \n]"},
    {"^header .* number at (.*): (.*)", "number_$1 $2\n"},
    {"^header first cell point: (.*)", "cell_point_70: $1\n"},
    {"^header second cell point: (.*)", "cell_point_85: $1\n"},
    {"^header bytes 93 to 220: (.*)", "text_93 $1\n"},
    {"^(play list .*): text at 8 (.*), number at 136: (.*), cell point: (.*)",
     "$1~ $2[:,]~number_136 $3, cell_point: $4\n"},
    {"^movie table: (.*), size (.*)", "movie table: $2 bytes~ $1\n"},
    {"^movie (VOB .*) time map: (.*), (pack count .*), (field count .*)",
     "$1:~\n~\n~\n~\n *time map: $2\n *$4 ~\n *$3 "},
    {"^movie (VOB .*): (.*), size (.*), (VOB_TY .*), (.*), (.*), recorded bytes at 2 (.*)",
     "$1: $3 bytes at $2[,\n]~\n? *$4, bytes_2 $7,~\n *$5\n *$6\n"},
    {"^still table: (.*), size (.*)", "still picture table: $2 bytes~ $1\n"},
    {"^(still group .*): (.*), size (.*), (.*), (forms .*), (.*)",
     "$1: $3 bytes at $2, $5[,\n]~\n? *$4,~\n *$6 "},
    {"^(audio group .*): (.*), size (.*), (.*), (.*)", "$1: $3 bytes at $2\n *$4,~\n *$5 "},
    {"^.* (program .*): (C_Ns .*), first cell (index .*), (.*), text (.*), number at 132: (.*), "
     "cell point: (.*)",
     "\n *$1 $5: (?:no cells|cells? $3[ ,])~$4,~$2, number_132 $6, cell_point: $7\n"},
    {"^.* (cell .*): (.*), (C_TY .*), (.*), (.* bytes), (.*), number at 2: (.*)",
     "\n *$1: $2: ~$3, number_2 $7,~ $5 at $4, $6\n"},
    {"^original chain: (.*)", "original program chain: ~$1, at"},
    {"^user (chain .*): (UD_PGCI_SA .*)", "user-defined $1: ~$2\n"},
    {"^user (chain .*): (.*)", "user-defined $1: ~$2 at"},
    {"^user chains: (.*)", "user-defined program chains: ~$1\n"},
    {"^(text set .*) record (.*)", "$1:~\n(?: *text ~\n)* *text $2\n"},
    {"^(text set .*) records", "$1 texts?\n"},
    {"^maker(.* .*: MNFI_SA .*), (data length .*)", "manufacturer$1,~ $2\n"},
    {"^makers: (.*)", "manufacturers: ~$1\n"},
    {"^texts: (CHRS .*), (.*, .*)", "texts: ~$1,~ $2\n"},
    {"^(play lists|movie VOBs): (.*)", "$1: ~$2\n"},
    {"~", ".*"},
};

/// The pattern for a line of the facts.
std::string PatternOf(std::string fact) {
  for (const auto& [what, by] : kSteps) fact = std::regex_replace(fact, std::regex(what), by);
  // The items count from 0 in the facts.
  const std::regex item(
      "(play list|VOB|group|defined chain|text set|manufacturer|index|[*](?:program|cell|text)) "
      "(\\d+)");
  std::string pattern;
  for (std::smatch match; std::regex_search(fact, match, item); fact = match.suffix()) {
    const std::string name = match[1] == "index" ? "" : match.str(1) + " ";
    pattern += match.prefix().str() + name + std::to_string(std::stoi(match[2]) + 1);
  }
  return pattern + fact;
}

class ShowSample : public testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(Samples, ShowSample, testing::ValuesIn(VESKA::kSamples));

TEST_P(ShowSample, ShowsEveryFact) {
  const std::string shown = VESKA::workshop::Show(VESKA::Sample(GetParam()), {.name = "disc.ifo"});
  std::ifstream facts(SamplePath(GetParam(), ".facts.txt"));
  int count = 0;
  for (std::string fact; std::getline(facts, fact); ++count) {
    const std::string pattern = PatternOf(fact);
    EXPECT_TRUE(std::regex_search(shown, std::regex(pattern))) << fact << "\n" << pattern;
  }
  EXPECT_GE(count, 25);
}

}  // namespace
