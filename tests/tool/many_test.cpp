// Many discs at once, and discs from elsewhere: what --jobs, --summary and --encoding print.
#include <gtest/gtest.h>
#include <veska/workshop/check.h>

#include <map>

#include "encoding.h"
#include "support/image_builder.h"
#include "support/temporary_folder.h"
#include "support/tool_run.h"
#include "tool_io.h"

namespace {

using VESKA::Bytes;
using VESKA::Sample;
using veska_tool::ExitStatus;
using veska_tool::NameOf;

/// Sound and damaged files, some much longer than their neighbours, and names that are no files.
std::vector<std::string> Discs(const TemporaryFolder& folder) {
  std::vector<std::string> names;
  std::mt19937 random(9);
  for (unsigned i = 0; i < 60; ++i) {
    const Bytes sample = Sample(VESKA::kSamples[i % std::size(VESKA::kSamples)]);
    const Bytes image = i % 3 == 0 ? VESKA::RandomlyDamaged(sample, random, i) : sample;
    names.push_back(NameOf(folder.Write("disc" + std::to_string(i), image)));
    if (i % 20 == 7) names.push_back(NameOf(folder / ("none" + std::to_string(i))));
  }
  return names;
}

TEST(Jobs, ChangeNothingOfWhatIsPrinted) {
  const TemporaryFolder folder;
  const std::vector<std::string> discs = Discs(folder);
  const std::vector<std::string> commands[] = {
      {"list"},  {"list", "--csv"},   {"list", "--json", "--programs"},
      {"check"}, {"check", "--json"}, {"check", "--summary"}};
  for (std::vector<std::string> arguments : commands) {
    arguments.insert(arguments.end(), discs.begin(), discs.end());
    const ToolRun one = RunTool(arguments);
    arguments.insert(arguments.end(), {"--jobs", "5"});
    const ToolRun five = RunTool(arguments);
    EXPECT_EQ(five.out, one.out);
    EXPECT_EQ(five.err, one.err);
    EXPECT_EQ(five.status, one.status);
    EXPECT_EQ(one.status, ExitStatus::kFile);
    EXPECT_NE(one.err.find("none7: cannot be read"), std::string::npos) << one.err;
  }
}

TEST(Summary, CountsEveryFindingOfEveryFile) {
  const TemporaryFolder folder;
  std::vector<std::string> arguments = {"check", "--summary", "--limit", "1"};
  std::map<std::string, std::pair<std::size_t, std::size_t>> counts;  // findings and files
  std::size_t bad = 0;
  for (const char* sample : {"mixed_full", "odd_layout", "still_camera"}) {
    Bytes image = Sample(sample);
    if (image.size() > 4000) image.resize(4000);
    arguments.push_back(NameOf(folder.Write(sample, image)));
    const auto examination = VESKA::workshop::Check(image, 0);
    bad += examination.errors != 0 ? 1 : 0;
    std::map<std::string, std::size_t> here;
    for (const auto& finding : examination.findings) ++here[NameOf(finding.code)];
    for (const auto& [code, count] : here) {
      counts[code].first += count;
      ++counts[code].second;
    }
  }
  const std::string out = RunTool(arguments).out;
  EXPECT_GE(counts.size(), 5U);
  for (const auto& [code, count] : counts) {
    const auto& [findings, files] = count;
    const std::string text = ": " + std::to_string(findings) + " in " + std::to_string(files) +
                             (files == 1 ? " file: " : " files: ");
    const std::size_t line = out.find("\n" + code) + 1;
    EXPECT_NE(out.substr(line, out.find('\n', line) - line).find(text), std::string::npos)
        << code << text << "\n"
        << out;
  }
  EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), static_cast<int>(counts.size()) + 1);
  EXPECT_TRUE(out.ends_with("3 files, " + std::to_string(bad) + " with errors\n")) << out;
}

// The second byte of the first character is that of a backslash.
TEST(Encoding, OfADiscIsDecodedByWhatShowsAndEncodedByEdit) {
  try {
    veska_tool::Encoding("SHIFT_JIS");
  } catch (const veska_tool::Failure&) {
    GTEST_SKIP() << "this system does not know SHIFT_JIS";
  }
  const TemporaryFolder folder;
  const std::string before = NameOf(folder.Write("before", Sample("movie_recorder")));
  const std::string after = NameOf(folder / "after");
  const std::string page = NameOf(folder / "page");
  const std::string text = "\xE8\xA1\xA8\xE7\xA4\xBA";  // two characters
  const auto run = [](std::vector<std::string> arguments, bool decodes) {
    if (decodes) arguments.insert(arguments.end(), {"--encoding", "SHIFT_JIS"});
    return RunTool(arguments);
  };
  const std::vector<std::string> edit = {"edit", before,          "-o",
                                         after,  "set-disc-text", text + "\\x41\\\\"};
  ASSERT_EQ(run(edit, true).status, ExitStatus::kDone);
  const Bytes bytes = VESKA::Hex("955c 8ea6 41 5c");
  const Bytes image = VESKA::ReadFile(after);
  EXPECT_NE(std::search(image.begin(), image.end(), bytes.begin(), bytes.end()), image.end());

  const struct {
    std::vector<std::string> arguments;
    const char* as_bytes;
  } cases[] = {{{"list", after}, "\\x95\\\\\\x8e\\xa6A"},
               {{"list", "--json", after}, "\\\\x95\\\\\\\\\\\\x8e"},
               {{"show", after}, "text_93 955c8ea6415c"},
               {{"diff", before, after}, "-> 955c8ea6415c"},
               {{"edit", before, "--dry-run", "set-disc-text", "\\x95\\x5c\\x8e\\xa6"}, "955c8ea6"},
               {{"report", after, "-o", "-"}, "\\x95\\\\\\x8e\\xa6A"}};
  for (const auto& [arguments, as_bytes] : cases) {
    EXPECT_NE(run(arguments, false).out.find(as_bytes), std::string::npos) << arguments[0];
    EXPECT_EQ(run(arguments, false).out.find(text), std::string::npos) << arguments[0];
    EXPECT_NE(run(arguments, true).out.find(text), std::string::npos) << arguments[0];
  }
}

TEST(Encoding, RefusesWhatItDoesNotKnowOrCannotHold) {
  const TemporaryFolder folder;
  const std::string out = NameOf(folder / "out");
  const struct {
    const char* encoding;
    const char* text;
    const char* says;
  } cases[] = {{"NO-SUCH-SET", "A", "no character set is named NO-SUCH-SET"},
               {"ISO-8859-1", "\xE8\xA1\xA8", "cannot be written in the character set"},
               {"ISO-8859-1", "\xFF", "cannot be written in the character set"},
               {"ISO-8859-1", "a\\b", "a backslash in a text is written"}};
  for (const auto& test : cases) {
    const ToolRun run = RunTool({"edit", SamplePath("empty"), "-o", out, "--encoding",
                                 test.encoding, "set-disc-text", test.text});
    EXPECT_EQ(run.status, ExitStatus::kUsage);
    EXPECT_NE(run.err.find(test.says), std::string::npos) << run.err;
    EXPECT_FALSE(std::filesystem::exists(out));
  }
}

}  // namespace
