// What `veska show` prints, held against what is known of the sample files.
#include <gtest/gtest.h>
#include <veska/CVMGInfo.h>

#include <filesystem>
#include <fstream>
#include <regex>

#include "tool_run.h"

namespace {

using veska_tool::ExitStatus;

std::vector<std::string> Lines(std::istream& in) {
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

std::size_t Depth(const std::string& line) { return line.find_first_not_of(' '); }

/// The lines of the part of `lines` that is headed by each of `path` in turn; none when there is no
/// such part.
std::vector<std::string> Part(std::vector<std::string> lines,
                              const std::vector<std::string>& path) {
  for (const std::string& heading : path) {
    std::vector<std::string> part;
    const std::regex heads(" *" + heading + "[ :]");
    for (const std::string& line : lines) {
      if (!part.empty() && Depth(line) <= Depth(part.front())) break;
      if (!part.empty() || std::regex_search(line, heads, std::regex_constants::match_continuous))
        part.push_back(line);
    }
    lines = part;
  }
  return lines;
}

/// How a subject of the facts is headed; # stands for its number, which counts from 0 there.
struct Heading {
  const char* subject;
  std::vector<std::string> path;
};
const std::string kChain = "original program chain";
const std::string kUserChains = "user-defined program chains";
const Heading kHeadings[] = {
    {"file size|laid out as the library writes it", {".*\\.ifo"}},
    {"play lists", {"play lists"}},
    {"play list #", {"play list #"}},
    {"movie table", {"movie table"}},
    {"movie VOBs", {"movie VOBs"}},
    {"movie VOB #(?: time map)?", {"movie VOBs", "VOB #"}},
    {"still table", {"still picture table"}},
    {"still group #", {"still picture table", "still group #"}},
    {"audio group #", {"still picture table", "audio group #"}},
    {"original chain", {kChain}},
    {"original chain (program|cell) #", {kChain, "$ #"}},
    {"user chains", {kUserChains}},
    {"user chain #", {kUserChains, "user-defined chain #"}},
    {"user chain # (program|cell) #", {kUserChains, "user-defined chain #", "$ #"}},
    {"texts", {"texts"}},
    {"text set #", {"texts", "text set #"}},
    {"text set # record #", {"texts", "text set #", "text #"}},
    {"makers", {"manufacturers"}},
    {"maker #", {"manufacturer #"}},
    {".*", {"header"}},
};

std::vector<std::string> PathOf(const std::string& subject) {
  for (const Heading& heading : kHeadings) {
    const std::regex pattern(
        std::regex_replace(std::string(heading.subject), std::regex("#"), "(\\d+)"));
    std::smatch match;
    if (!std::regex_match(subject, match, pattern)) continue;
    std::vector<std::string> path = heading.path;
    std::size_t group = 1;
    for (std::string& step : path) {
      for (std::size_t at = 0; (at = step.find_first_of("#$", at)) != std::string::npos; ++at) {
        const std::string text = match[group++];
        step.replace(at, 1, step[at] == '$' ? text : std::to_string(std::stoi(text) + 1));
      }
    }
    return path;
  }
  return {};
}

/// How a fact is worded in the tool's output.
const struct {
  const char* fact;
  const char* shown;
} kWordings[] = {
    {"^laid out as the library writes it: yes", "laid out as this tool writes it"},
    {"^laid out as the library writes it: no", "laid out otherwise"},
    {"^file size: (\\d+)", "$1 bytes"},
    {"^identifier: (.*)", "VMG_ID \"$1\""},
    {"^header \\d+-bit number at (\\d+): ", "number_$1 "},
    {"^header first cell point: ", "cell_point_70: "},
    {"^header second cell point: ", "cell_point_85: "},
    {"^header bytes 93 to 220: ", "text_93 "},
    {"^([A-Z_]+_[SE]A): ", "$1 "},
    {"^number at (\\d+): ", "number_$1 "},
    {"^text (?:at \\d+ )?", ""},
    {"^cell point: ", "cell_point: "},
    {"^cell number 65535", "no cell"},
    {"^cell number (\\d+)", "cell $1 ("},
    {"^size (\\d+)", "$1 bytes"},
    {"^(seamless|audio gap) block yes", "$1 block: time_0 "},
    {"^(seamless|audio gap) block no", "$1 block: no"},
    {"^recorded bytes at 2 ", "bytes_2 "},
    {"^1 records", "1 text"},
    {"^(\\d+) records", "$1 texts"},
};

std::string Worded(std::string fact) {
  std::smatch index;
  if (std::regex_match(fact, index, std::regex("first cell index (\\d+)"))) {
    return std::to_string(std::stoi(index[1]) + 1);  // "cell N" or "cells N to M"
  }
  for (const auto& wording : kWordings) {
    fact = std::regex_replace(fact, std::regex(wording.fact), wording.shown);
  }
  return fact;
}

/// The facts of a line: what commas part, outside of quotes.
std::vector<std::string> Facts(const std::string& text) {
  std::vector<std::string> facts(1);
  bool quoted = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '"') quoted = !quoted;
    if (!quoted && text.compare(i, 2, ", ") == 0) {
      facts.emplace_back();
      ++i;
    } else {
      facts.back().push_back(text[i]);
    }
  }
  return facts;
}

bool Mentions(const std::vector<std::string>& lines, const std::string& text) {
  // A number is found as a whole one only.
  const auto is_digit = [](const std::string& line, std::size_t at) {
    return at < line.size() && line[at] >= '0' && line[at] <= '9';
  };
  for (const std::string& line : lines) {
    for (std::size_t at = 0; (at = line.find(text, at)) != std::string::npos; ++at) {
      const std::size_t end = at + text.size();
      const bool cut = (is_digit(text, text.size() - 1) && is_digit(line, end)) ||
                       (is_digit(text, 0) && at > 0 && is_digit(line, at - 1));
      if (!cut) return true;
    }
  }
  return false;
}

class ShowSample : public testing::TestWithParam<std::string> {
 protected:
  void ExpectShown(const std::string& line, const std::vector<std::string>& shown) {
    // A quoted text may hold a colon; a subject holds none.
    const std::size_t colon = line.find(": ");
    const std::string subject = line.substr(0, colon);
    const std::vector<std::string> path = PathOf(subject);
    const bool header = path.front() == "header" || path.front() == ".*\\.ifo";
    const auto part = Part(shown, path);
    ASSERT_FALSE(part.empty()) << line;
    const bool no_cells = line.find(": C_Ns 0,") != std::string::npos;
    for (const std::string& fact : Facts(header ? line : line.substr(colon + 2))) {
      if (no_cells && fact.starts_with("first cell index")) continue;
      const std::string worded = Worded(fact);
      EXPECT_TRUE(Mentions(part, worded)) << line << "\n  is not shown: " << worded;
    }
  }
};

TEST_P(ShowSample, ShowsEveryFact) {
  const ToolRun run = RunTool({"show", Sample(GetParam() + ".ifo")});
  ASSERT_EQ(run.status, ExitStatus::kDone) << run.err;
  std::istringstream text(run.out);
  const auto shown = Lines(text);
  std::ifstream facts(Sample(GetParam() + ".facts.txt"));
  const auto lines = Lines(facts);
  ASSERT_FALSE(lines.empty());
  for (const std::string& line : lines) {
    // What follows from the tables and is not shown is the library's.
    if (!line.starts_with("presence") && !line.starts_with("after completion")) {
      ExpectShown(line, shown);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Samples, ShowSample,
                         testing::Values("empty", "mixed_full", "movie_recorder", "odd_layout",
                                         "still_camera"));

}  // namespace
