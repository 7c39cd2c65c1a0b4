// Where `veska edit` writes, what it keeps and what it says.
#include <gtest/gtest.h>
#include <veska/veska.h>
#include <veska/workshop/load.h>

#include <filesystem>
#include <memory>

#include "support/temporary_folder.h"
#include "support/tool_run.h"
#include "tool_io.h"

namespace {

namespace fs = std::filesystem;
using namespace VESKA;
using namespace veska_tool;

std::unique_ptr<CVMGInfo> LoadInfo(const std::string& file) {
  return workshop::Load(ReadInput(file));
}

class EditTest : public testing::Test {
 protected:
  std::string File(const char* name) { return NameOf(folder_ / name); }
  std::string CopyOf(const char* sample) {
    std::string copy = File("disc.ifo");
    fs::copy_file(SamplePath(sample), copy, fs::copy_options::overwrite_existing);
    return copy;
  }

  ExitStatus Run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "edit");
    const ToolRun run = ::RunTool(arguments);
    output_ = run.out;
    messages_ = run.err;
    return run.status;
  }

  TemporaryFolder folder_;
  std::string output_;
  std::string messages_;
};

TEST_F(EditTest, WritesInPlaceAndKeepsWhatWas) {
  const std::string disc = CopyOf("movie_recorder");
  const Bytes before = ReadInput(disc);
  ASSERT_EQ(Run({disc, "--in-place", "delete-program", "3"}), ExitStatus::kDone);
  EXPECT_EQ(messages_,
            "veska: " + disc + ": play list 1 named cell 8, which is deleted: it names none now\n");
  EXPECT_EQ(ReadInput(disc + ".bak"), before);
  EXPECT_EQ(LoadInfo(disc)->GetOriginalPGC().GetPGCount(), 11);

  const Bytes edited = ReadInput(disc);
  EXPECT_EQ(Run({disc, "--in-place", "delete-program", "3"}), ExitStatus::kFile);
  EXPECT_EQ(ReadInput(disc), edited);
  EXPECT_EQ(ReadInput(disc + ".bak"), before);
  EXPECT_EQ(Run({disc, "--in-place", "--force", "delete-program", "3"}), ExitStatus::kDone);
  EXPECT_EQ(ReadInput(disc + ".bak"), edited);
}

TEST_F(EditTest, WritesOnlyWhereItIsTold) {
  const std::string disc = CopyOf("movie_recorder");
  const Bytes before = ReadInput(disc);
  const std::vector<std::string> operation = {"delete-cell", "1"};
  const auto run = [&](std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), disc);
    arguments.insert(arguments.end(), operation.begin(), operation.end());
    return Run(arguments);
  };
  EXPECT_EQ(run({}), ExitStatus::kUsage);
  EXPECT_EQ(Run({disc, "-o", File("out.ifo"), "delete-cell", "41"}), ExitStatus::kUsage);
  EXPECT_FALSE(fs::exists(File("out.ifo")));
  EXPECT_EQ(run({"--in-place", "-o", File("out.ifo")}), ExitStatus::kUsage);
  EXPECT_EQ(run({"--dry-run", "--in-place"}), ExitStatus::kDone);
  EXPECT_NE(output_.find("C_Ns"), std::string::npos) << output_;
  EXPECT_EQ(run({"-o", disc}), ExitStatus::kFile);
  EXPECT_EQ(ReadInput(disc), before);
  EXPECT_EQ(std::distance(fs::directory_iterator(folder_), {}), 1);
  EXPECT_EQ(run({"-o", File("out.ifo")}), ExitStatus::kDone);
  EXPECT_EQ(LoadInfo(File("out.ifo"))->GetOriginalPGC().GetCellCount(), 39);
}

TEST_F(EditTest, KeepsTheFileWhenTheResultCannotBeWritten) {
  const std::string disc = File("disc.ifo");
  const auto info = workshop::Load(ReadInput(SamplePath("movie_recorder")));
  CTextDataMgr& texts = info->GetTextDataMgr();
  texts.Clear();
  std::vector<unsigned char> text(255, 'x');
  for (int i = 0; i < 253; ++i) {
    CTextSet& set = texts.AddNode()->IT_TXT;
    set.AddNode();
    if (i < 251) set.SetNode(0, {1, 255, text.data()});  // 8 + 251 * (4 + 2 + 255) of 65,536 bytes
  }
  info->AutoComplete();
  SaveInfo(disc, *info, false);
  const Bytes before = ReadInput(disc);
  EXPECT_EQ(Run({disc, "--in-place", "set-text", "252", "1", std::string(255, 'x')}),
            ExitStatus::kFound);
  EXPECT_EQ(ReadInput(disc), before);
  EXPECT_FALSE(fs::exists(disc + ".bak"));
}

}  // namespace
