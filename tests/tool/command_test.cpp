// Whole commands as they are called: arguments, exit status, what is printed and what is written.
#include <gtest/gtest.h>

#include "support/image_builder.h"
#include "support/temporary_folder.h"
#include "support/tool_run.h"
#include "tool_io.h"

namespace {

using VESKA::Bytes;
using VESKA::ReadFile;
using VESKA::Sample;
using veska_tool::ExitStatus;
using veska_tool::NameOf;

constexpr ExitStatus kDone = ExitStatus::kDone;
constexpr ExitStatus kFound = ExitStatus::kFound;
constexpr ExitStatus kFile = ExitStatus::kFile;

const Bytes kOld = VESKA::Text("what was there", 14);

// In the arguments, @ stands for a new folder with the files that the test makes.
TEST(Command, SaysWhatItDidAndWritesNothingOtherwise) {
  const Bytes full = Sample("mixed_full");
  const struct {
    std::vector<std::string> arguments;
    ExitStatus status;
    const char* text;  // some of what is printed
    Bytes out;         // what stands in the file "out" then
  } cases[] = {
      {{"complete", "@/full", "-o", "@/new"}, kDone, "", kOld},
      {{"complete", "@/full", "-o", "@/out"}, kFile, "exists already", kOld},
      {{"complete", "@/full", "-o", "@/out", "--force"}, kDone, "", full},
      {{"complete", "@/cut", "-o", "@/out", "--force"},
       kFound,
       "reaches past the end of the file at",
       kOld},
      {{"complete", "@/full", "-o", "@/none/out"}, kFile, "out: cannot be written", kOld},
      {{"complete", "@/full", "-o", "@"}, kFile, "it is a folder", kOld},
      {{"salvage", "@/full", "-o", "@/out", "--force"}, kDone, "6 of 6 vobs", full},
      {{"salvage", "@/out", "-o", "@/new"}, kFound, "nothing can be read of it", kOld},
      {{"build", "@/large.json", "-o", "@/out", "--force"}, kFound, "large.json: not JSON", kOld},
      {{"build", "@/key.json", "-o", "@/out", "--force"}, kFound, "x\\x0ay\" stands twice", kOld},
      {{"export", "--lines", "@/cut", "-o", "@/out", "--force"},
       kFound,
       "reaches past the end",
       kOld},
      {{"edit", "@/full", "-o", "@/new", "[a]\n"}, ExitStatus::kUsage, "'[a]\\x0a'", kOld},
      {{"complete", "@/full", "-o", "@/loop"}, kFile, "cannot be written", kOld},
      {{"edit", "@/linked", "--in-place", "--force", "delete-cell", "1"}, kFile, "same file", kOld},
      {{"diff", "@/full", "@/full"}, kDone, "", kOld},
      {{"diff", "@/full", "@/other"}, kFound, "program 5: only in the first", kOld},
      {{"show", "@/[full]", "@/[a,b]"},
       kFile,
       "[a,b]: cannot be read: there is no such file",
       kOld},
      {{"report", "@/full", "-o", "@/out"}, kFile, "exists already", kOld},
      {{"complete", "--help"}, kDone, "Overwrite an existing OUT", kOld},
      {{"help"}, kDone, "Find what is inconsistent", kOld},
      {{"help", "complete"}, kDone, "Overwrite an existing OUT", kOld},
      {{"help", "nothing"}, ExitStatus::kUsage, "COMMAND: nothing not in", kOld},
  };
  for (const auto& test : cases) {
    const TemporaryFolder folder;
    VESKA::CVMGInfo other;
    ASSERT_TRUE(Load(other, full));
    other.GetOriginalPGC().DeletePGNode(4);
    folder.Write("full", full);
    folder.Write("[full]", full);
    folder.Write("other", Completed(other));
    folder.Write("cut", Bytes(full.begin(), full.begin() + 1200));
    folder.Write("out", kOld);
    folder.Write("large.json", std::string(R"({"version": 1e400})"));
    folder.Write("key.json", std::string(R"({"x\ny": 1, "x\ny": 2})"));
    folder.Write("linked", full);
    std::filesystem::create_hard_link(folder / "linked", folder / "linked.bak");
    std::error_code error;  // where links cannot be made, there is no folder "loop" either
    std::filesystem::create_symlink("loop", folder / "loop", error);
    if (error) std::filesystem::create_directory(folder / "loop");

    std::vector<std::string> arguments = test.arguments;
    for (std::string& argument : arguments) {
      if (argument[0] == '@') argument.replace(0, 1, NameOf(folder));
    }
    SCOPED_TRACE(testing::PrintToString(test.arguments));
    const ToolRun run = RunTool(arguments);
    EXPECT_EQ(run.status, test.status) << run.err;
    EXPECT_NE((run.out + run.err).find(test.text), std::string::npos) << run.out << run.err;
    EXPECT_LE(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
    EXPECT_EQ(ReadFile(folder / "out"), test.out);
    EXPECT_EQ(ReadFile(folder / "linked"), full);
  }
}

TEST(Command, RefusesToExportWithoutTheOneFile) {
  const std::string file = SamplePath("empty");
  const std::vector<std::string> cases[] = {{}, {file, file}, {"--schema", file}};
  for (std::vector<std::string> arguments : cases) {
    arguments.insert(arguments.begin(), "export");
    const ToolRun run = RunTool(arguments);
    EXPECT_EQ(run.status, ExitStatus::kUsage);
    EXPECT_TRUE(run.out.empty());
  }
}

TEST(Command, StatusOfAnExaminationFollowsTheWorstFinding) {
  const TemporaryFolder folder;
  const std::string bad =
      NameOf(folder.Write("bad", Sample("mixed_full").With(1232, VESKA::Word(9))));
  const std::string padded = NameOf(folder.Write("padded", Sample("empty") + VESKA::Zeros(3)));
  const std::string good = SamplePath("empty");
  const std::string odd = SamplePath("odd_layout");
  const struct {
    std::vector<std::string> arguments;
    ExitStatus status;
  } cases[] = {{{good}, ExitStatus::kDone},
               {{bad, good}, ExitStatus::kFound},
               {{odd}, ExitStatus::kDone},
               {{"--warnings-as-errors", odd}, ExitStatus::kFound},
               {{"--warnings-as-errors", padded}, ExitStatus::kDone},
               {{good, "no/such/file"}, ExitStatus::kFile},
               {{}, ExitStatus::kUsage}};
  for (const auto& c : cases) {
    std::vector<std::string> arguments{"check"};
    arguments.insert(arguments.end(), c.arguments.begin(), c.arguments.end());
    EXPECT_EQ(RunTool(arguments).status, c.status) << testing::PrintToString(arguments);
  }
}

}  // namespace
