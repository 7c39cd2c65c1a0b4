// Export to JSON and building from it.
#include <gtest/gtest.h>
#include <veska/CVMGInfo.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <random>

#include "json_tree.h"
#include "tool_io.h"
#include "tool_run.h"

namespace {

using veska_tool::Bytes;
using veska_tool::ExitStatus;
using veska_tool::Failure;
using veska_tool::Json;

const std::vector<std::string> kSamples = {"empty", "mixed_full", "movie_recorder", "odd_layout",
                                           "still_camera"};

Bytes ImageOf(VESKA::CVMGInfo& info) {
  Bytes image(info.GetDataSize());
  info.GetData(image.data());
  return image;
}

/// What a text that was printed makes again: the image of it, completed.
Bytes Rebuilt(const std::string& text) {
  VESKA::CVMGInfo info;
  veska_tool::Build(veska_tool::ParseJson(text, "test"), "test", info);
  return ImageOf(info);
}

Json Exported(const std::string& sample) {
  return veska_tool::Export(*veska_tool::LoadInfo(Sample(sample + ".ifo")));
}

TEST(Json, ExportAndBuildGiveTheCanonicalFile) {
  for (const std::string& sample : kSamples) {
    const std::string file = Sample(sample + ".ifo");
    Bytes image = veska_tool::ReadInput(file);
    const auto info = veska_tool::LoadInfo(file, image);
    const Json document = veska_tool::Export(*info, "name");
    const Bytes from_line = Rebuilt(veska_tool::LineOf(document));
    EXPECT_EQ(from_line, Rebuilt(veska_tool::TextOf(document))) << sample;
    if (sample == "odd_layout") {
      EXPECT_NE(from_line, image);
      info->AutoComplete();
      image = ImageOf(*info);
    }
    EXPECT_EQ(from_line, image) << sample;
  }
}

// Whatever a file holds that loads, its JSON makes the file that completing it makes.
TEST(Json, BuildsWhatCompletingMakesOfDamagedFiles) {
  std::mt19937 random(20061);
  int built = 0;
  for (const std::string& sample : kSamples) {
    const Bytes image = veska_tool::ReadInput(Sample(sample + ".ifo"));
    for (int i = 0; i < 60; ++i) {
      Bytes damaged = image;
      for (int flips = 0; flips < 3; ++flips) {
        damaged[12 + random() % (damaged.size() - 12)] ^=
            static_cast<unsigned char>(1U << random() % 8);
      }
      VESKA::CVMGInfo info;
      if (!info.LoadFromMemory(damaged.data(), damaged.size(), VESKA::CVMGInfo::kLoadAll)) continue;
      const std::string text = veska_tool::LineOf(veska_tool::Export(info));
      info.AutoComplete();
      try {
        EXPECT_EQ(Rebuilt(text), ImageOf(info)) << sample << " " << i;
        ++built;
      } catch (const Failure& failure) {
        // What takes no bytes in a file cannot be built.
        EXPECT_NE(std::string(failure.what()).find("at least one"), std::string::npos)
            << failure.what();
      }
    }
  }
  EXPECT_GT(built, 100);
}

/// A change of the document of a sample that has everything, and the message that names it.
struct Mistake {
  const char* operation;  // of a JSON patch
  const char* message;
};
const Mistake kMistakes[] = {
    {R"({"op":"remove","path":"/version"})",
     "the document: expected the key \"version\", found none"},
    {R"({"op":"replace","path":"/version","value":2})", "/version: expected 1, found 2"},
    {R"({"op":"replace","path":"/version","value":"1"})", "/version: expected 1, found \"1\""},
    {R"({"op":"replace","path":"/$schema","value":1})", "/$schema: expected a string, found 1"},
    {R"({"op":"add","path":"/x~1y~0","value":1})", "/x~1y~0: expected none but "},
    {R"({"op":"replace","path":"","value":[]})",
     "the document: expected an object, found an array"},
    {R"({"op":"remove","path":"/texts"})", "the document: expected the key \"texts\", found none"},
    {R"({"op":"replace","path":"/texts","value":null})", "/texts: expected an object, found null"},
    {R"({"op":"replace","path":"/texts/CHRS","value":256})",
     "/texts/CHRS: expected a whole number from 0 to 255, found 256"},
    {R"({"op":"replace","path":"/texts/CHRS","value":-1})", "found -1"},
    {R"({"op":"replace","path":"/texts/CHRS","value":1.0})", "found 1.0"},
    {R"({"op":"replace","path":"/texts/sets","value":{}})",
     "/texts/sets: expected an array, found an object"},
    {R"({"op":"replace","path":"/texts/sets/0/texts/1/text/hex","value":"616"})",
     "/texts/sets/0/texts/1/text/hex: expected an even number, up to 510, of hex digits"},
    {R"({"op":"replace","path":"/texts/sets/0/texts/0/text/text","value":"Ending"})",
     "/texts/sets/0/texts/0/text/text: expected \"Opening\", as \"hex\" says"},
    {R"({"op":"replace","path":"/texts/sets/0/texts/0","value":[]})",
     "/texts/sets/0/texts/0: expected an object, found an array"},
    {R"({"op":"replace","path":"/texts/sets","value":[]})",
     "/texts/sets: expected at least one item, or zeros"},
    {R"({"op":"add","path":"/movie/vobs/1/length","value":1})",
     "/movie/vobs/1/length: expected none but VOB_TY, bytes_2"},
    {R"({"op":"replace","path":"/movie/vobs/0/VOB_TY","value":"zz00"})",
     "/movie/vobs/0/VOB_TY: expected 4 hex digits, found \"zz00\""},
    {R"({"op":"replace","path":"/movie/vobs/0/VOB_TY","value":"0080"})",
     "/movie/vobs/0: expected the key \"seamless_block\", found none"},
    {R"({"op":"replace","path":"/movie/vobs/2/VOB_TY","value":"0000"})",
     "/movie/vobs/2/seamless_block: expected none but"},
    {R"({"op":"replace","path":"/movie/vobs/0/time_map","value":
         {"TM_OSF":0,"VOBU_ADR_OSF":0,"times":[],"vobus":[]}})",
     "/movie/vobs/0/time_map/vobus: expected at least one entry"},
    {R"({"op":"replace","path":"/still/groups/0/entries/0/S_VOB_ENT_TY","value":255})",
     "/still/groups/0/entries/0: expected the key \"EXT1_PCKs\""},
    {R"({"op":"replace","path":"/original_chain/cells/0/type","value":"audio"})",
     "/original_chain/cells/0/type: expected \"movie\" or \"still\", found \"audio\""},
    {R"({"op":"replace","path":"/original_chain/cells/0/C_TY","value":32})",
     "/original_chain/cells/0/C_TY: expected bits 7 to 5 that are 000 for a movie cell"},
    {R"({"op":"replace","path":"/original_chain/cells/6/entries/0/EP_TY","value":0})",
     "/original_chain/cells/6/entries/0/block: expected none but EP_TY, time_1"},
    {R"({"op":"remove","path":"/original_chain/cells/6/entries/0/block"})",
     "/original_chain/cells/6/entries/0: expected the key \"block\""},
    {R"({"op":"remove","path":"/header/cell_point_70/ext"})",
     "/header/cell_point_70: expected the key \"ext\""},
    {R"({"op":"add","path":"/header/cell_point_70/position","value":"000000000000"})",
     "/header/cell_point_70/position: expected none but base, cell, ext"},
};

TEST(Json, NamesWhereAMistakeIsAndWhatWasExpected) {
  const Json document = Exported("mixed_full");
  for (const Mistake& mistake : kMistakes) {
    const Json changed = document.patch(Json::array({Json::parse(mistake.operation)}));
    try {
      VESKA::CVMGInfo info;
      veska_tool::Build(changed, "test", info);
      ADD_FAILURE() << mistake.operation << " was taken";
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.Status(), ExitStatus::kFound);
      EXPECT_TRUE(std::string(failure.what()).find(mistake.message) != std::string::npos)
          << failure.what() << "\n  instead of " << mistake.message;
    }
  }
}

// Both forms of a position say the same six bytes, whatever the cell.
TEST(Json, TakesAPositionInEitherForm) {
  const Json document = Exported("mixed_full");
  const Json either = document.patch(Json::parse(R"([
    {"op":"replace","path":"/header/cell_point_70","value":{"cell":1,"position":"00015f900007"}},
    {"op":"replace","path":"/header/cell_point_85","value":
        {"cell":2,"base":174779,"ext":52445}}])"));
  EXPECT_EQ(Rebuilt(either.dump()), Rebuilt(document.dump()));
}

TEST(Json, RefusesMoreItemsThanACountHolds) {
  Json document = Exported("empty");
  Json& streams = document["movie"]["streams"];
  streams = Json::array();
  for (int i = 0; i < 256; ++i) streams.push_back({{"bytes_0", std::string(120, '0')}});
  VESKA::CVMGInfo info;
  EXPECT_THROW(veska_tool::Build(document, "test", info), Failure);
  streams.erase(0);
  VESKA::CVMGInfo fits;
  veska_tool::Build(document, "test", fits);
  EXPECT_EQ(fits.GetMovieAVFileTable().GetStreamCount(), 255);
}

TEST(Json, RefusesTextThatIsNotJson) {
  const char* const kTexts[] = {"",
                                "{",
                                "{\"version\": 1,}",
                                "[1 2]",
                                "{\"a\": {\"b\": 1, \"b\": 2}}",
                                "\xff",
                                "{\"version\": 01}"};
  for (const char* text : kTexts) {
    EXPECT_THROW(veska_tool::ParseJson(text, "test"), Failure) << text;
  }
}

// An empty table keeps nothing, so two objects that are equal have the same JSON.
TEST(Json, LeavesOutWhatTheFileLeavesOut) {
  VESKA::CVMGInfo info = *veska_tool::LoadInfo(Sample("empty.ifo"));
  const Json before = veska_tool::TreeOf(info);
  info.GetTextDataMgr().SetCharSet(0x11);
  unsigned char id[32] = {'X'};
  info.GetMNFInfoTable().SetLastMNFID(id);
  EXPECT_EQ(veska_tool::TreeOf(info), before);
}

TEST(Json, TheSchemaInTheDocumentsIsTheTools) {
  std::ifstream file(std::string(VESKA_SAMPLES) + "/../docs/" + veska_tool::kSchemaName);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  EXPECT_EQ(text, veska_tool::TextOf(veska_tool::Schema()))
      << "veska export --schema -o docs/veska.schema.json --force writes it anew";
}

}  // namespace
