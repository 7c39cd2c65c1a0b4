// What edits do to a file, and what they refuse.
#include <gtest/gtest.h>
#include <veska/veska.h>
#include <veska/workshop/edit.h>
#include <veska/workshop/load.h>

#include <algorithm>
#include <memory>

#include "basis/text.h"
#include "support/image_builder.h"

namespace {

using namespace VESKA;
using workshop::ImageOf;

std::unique_ptr<CVMGInfo> LoadSample(const std::string& name) {
  return workshop::Load(Sample(name));
}

/// The part of a sample that a case looks at, as one line.
std::string Summary(CVMGInfo& info) {
  CPGCInfo& chain = info.GetOriginalPGC();
  std::string text;
  for (int i = 0; i < chain.GetPGCount(); ++i) {
    const tag_PGI* program = chain.GetPGNode(i);
    text += std::to_string(program->number_132) + "x" + std::to_string(program->C_Ns) + "@" +
            std::to_string(program->cell_point.cell) + " ";
  }
  CPlayListSRPTable& play_lists = info.GetMAT().GetPlayListTable();
  text += "|";
  for (int i = 0; i < play_lists.GetCount(); ++i)
    text += " " + std::to_string(play_lists[i]->number_136) + "@" +
            std::to_string(play_lists[i]->cell_point.cell);
  return text + " | " + std::to_string(info.GetUserPGCTable().GetCount());
}

TEST(EditOperations, ChangeWhatTheySay) {
  // The still camera's disc has the programs 1, 2 and 3 with 4, 3 and 6 cells, each with a point in
  // its first cell, and a play list with one in cell 3. The full one has four play lists and two
  // user-defined chains.
  constexpr const char* kStill = "still_camera";
  const struct {
    const char* sample;
    std::vector<std::string> words;
    const char* summary;
  } cases[] = {
      {kStill, {}, "1x4@1 2x3@5 3x6@8 | 1@3 | 0"},
      {kStill, {"delete-program", "1"}, "2x3@1 3x6@4 | 1@65535 | 0"},
      {kStill, {"move-program", "1", "3"}, "2x3@1 3x6@4 1x4@10 | 1@12 | 0"},
      {kStill, {"move-program", "3", "1"}, "3x6@1 1x4@7 2x3@11 | 1@9 | 0"},
      {kStill, {"delete-cell", "5"}, "1x4@1 2x2@65535 3x6@7 | 1@3 | 0"},
      {kStill, {"move-cell", "1", "5"}, "1x3@5 2x4@4 3x6@8 | 1@2 | 0"},
      {kStill, {"move-cell", "8", "1"}, "1x5@2 2x3@6 3x5@1 | 1@4 | 0"},
      {kStill, {"split-program", "2", "6"}, "1x4@1 2x1@5 2x2@65535 3x6@8 | 1@3 | 0"},
      {kStill, {"join-programs", "2"}, "1x4@1 2x9@5 | 1@3 | 0"},
      {kStill, {"split-program", "1", "3", "join-programs", "1"}, "1x4@1 2x3@5 3x6@8 | 1@3 | 0"},
      {"mixed_full",
       {"delete-playlist", "2", "swap-playlists", "1", "3", "delete-user-chain", "1"},
       "1x1@7 2x1@14 3x1@7 4x9@2 5x6@14 | 61451@17 0@65535 1@3 | 1"},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.summary);
    const auto info = LoadSample(test.sample);
    workshop::Edit(*info, test.words);
    EXPECT_EQ(Summary(*info), test.summary);
  }
}

TEST(EditOperations, SetTexts) {
  const auto info = LoadSample("mixed_full");
  const auto code = (*info->GetTextDataMgr()[0]).IT_TXT[0]->code;
  const std::string words[] = {"set-disc-text",
                               "A",
                               "set-program-text",
                               "2",
                               R"(a\\b\x82\xa0)",
                               "set-playlist-text",
                               "4",
                               "",
                               "set-text",
                               "1",
                               "1",
                               "new",
                               "set-last-manufacturer",
                               "M"};
  workshop::Edit(*info, words);
  const tag_IT_TXT* text = (*info->GetTextDataMgr()[0]).IT_TXT[0];
  const auto bytes = [](const auto& field) { return workshop::Readable(field); };
  EXPECT_EQ(bytes(info->GetMAT().GetHeader().text_93), "A");
  EXPECT_EQ(bytes(info->GetOriginalPGC().GetPGNode(1)->text_4), R"(a\\b\x82\xa0)");
  EXPECT_EQ(bytes(info->GetMAT().GetPlayListTable()[3]->text_8), "");
  EXPECT_EQ(bytes(info->GetMNFInfoTable().GetHeader().LAST_MNF_ID), "M");
  EXPECT_EQ(text->code, code);
  EXPECT_EQ(workshop::Readable({text->text, text->length}), "new");
}

TEST(EditOperations, RefuseWhatIsOutOfRangeAndChangeNothing) {
  const struct {
    const char* sample;
    std::vector<std::string> words;
    const char* message;
  } cases[] = {
      {"still_camera", {"delete-program", "4"}, "the number of a program is 1 to 3, not 4"},
      {"still_camera", {"move-cell", "1", "14"}, "the number of a cell is 1 to 13, not 14"},
      {"still_camera", {"delete-cell", "2x"}, "is 1 to 13, not 2x"},
      {"still_camera", {"split-program", "1", "1"}, "program 1 can be split is 2 to 4, not 1"},
      {"empty", {"delete-playlist", "1"}, "there is no play list"},
      {"still_camera", {"delete-cell", "1", "delete-cell", "13"}, "operation 2 (delete-cell 13)"},
      {"still_camera", {"set-last-manufacturer", "x"}, "no manufacturer table"},
      {"still_camera", {"set-disc-text", std::string(129, 'x')}, "has 129 bytes, and 128 fit"},
      {"still_camera", {"set-disc-text", R"(a\n)"}, "a backslash in a text"},
      {"still_camera", {"frobnicate"}, "no operation 'frobnicate'"},
      {"still_camera", {"move-cell", "1"}, "move-cell takes N TO"},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.message);
    const auto info = LoadSample(test.sample);
    const workshop::Bytes before = ImageOf(*info);
    try {
      workshop::Edit(*info, test.words);
      ADD_FAILURE() << "was done";
    } catch (const workshop::Error& error) {
      EXPECT_EQ(error.Kind(), workshop::ErrorKind::kRequest);
      EXPECT_NE(std::string(error.what()).find(test.message), std::string::npos) << error.what();
    }
    EXPECT_EQ(ImageOf(*info), before);
  }
}

TEST(EditOperations, AreShownBeforeTheyAreDone) {
  const auto info = LoadSample("movie_recorder");
  const workshop::Bytes before = ImageOf(*info);
  const std::string deletes[] = {"delete-program", "3"};
  std::vector<std::string> lines = workshop::PreviewEdit(*info, deletes);
  EXPECT_EQ(ImageOf(*info), before);
  const std::string lost = "play list 1 named cell 8, which is deleted: it names none now";
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines[0], lost);
  const auto about_first_list = [](const std::string& line) {
    return line.starts_with("play_lists / list 1");
  };
  EXPECT_TRUE(std::none_of(lines.begin(), lines.end(), about_first_list));
  EXPECT_EQ(
      std::count(lines.begin(), lines.end(), "play_lists / list 2 / cell_point / cell: 34 -> 32"),
      1);
  EXPECT_EQ(workshop::Edit(*info, deletes), std::vector{lost});

  const std::string splits[] = {"move-cell", "1", "3", "split-program", "1", "2"};
  lines = workshop::PreviewEdit(*LoadSample("still_camera"), splits);
  EXPECT_EQ(lines[0], "program 1 named cell 3, which goes to program 2: it names none now");
}

}  // namespace
