// Export to JSON and building from it.
#include <gtest/gtest.h>
#include <veska/CVMGInfo.h>

#include <nlohmann/json.hpp>

#include "image_builder.h"
#include "json_tree.h"
#include "tool_io.h"
#include "tool_run.h"

namespace {

using veska_tool::Bytes;
using veska_tool::ExitStatus;
using veska_tool::Failure;
using veska_tool::Json;

/// What a text that was printed makes again: the image of it, completed.
Bytes Rebuilt(const std::string& text) {
  VESKA::CVMGInfo info;
  veska_tool::Build(veska_tool::ParseJson(text, "test"), "test", info);
  return VESKA::Written(info);
}

Json Exported(const std::string& sample) {
  return veska_tool::Export(*veska_tool::LoadInfo(SamplePath(sample)));
}

TEST(Json, ExportAndBuildGiveTheCanonicalFile) {
  for (const std::string sample : VESKA::kSamples) {
    const std::string file = SamplePath(sample);
    Bytes image = veska_tool::ReadInput(file);
    const auto info = veska_tool::LoadInfo(file, image);
    const Json document = veska_tool::Export(*info, "name");
    const Bytes from_line = Rebuilt(veska_tool::LineOf(document));
    EXPECT_EQ(from_line, Rebuilt(veska_tool::TextOf(document))) << sample;
    if (sample == "odd_layout") {
      EXPECT_NE(from_line, image);
      image = VESKA::Completed(*info);
    }
    EXPECT_EQ(from_line, image) << sample;
  }
}

// Whatever a file holds that loads, its JSON makes the file that completing it makes.
TEST(Json, BuildsWhatCompletingMakesOfDamagedFiles) {
  int built = 0;
  VESKA::ForEachDamaged(150, [&built](const VESKA::Bytes& damaged, const VESKA::Bytes&) {
    VESKA::CVMGInfo info;
    if (!VESKA::Load(info, damaged)) return;
    const std::string text = veska_tool::LineOf(veska_tool::Export(info));
    try {
      EXPECT_EQ(Rebuilt(text), VESKA::Completed(info));
      ++built;
    } catch (const Failure& failure) {
      // What takes no bytes in a file cannot be built.
      EXPECT_NE(std::string(failure.what()).find("at least one"), std::string::npos)
          << failure.what();
    }
  });
  EXPECT_GT(built, 100);
}

/// A change of the document of a sample that has everything, and the message that names it.
struct Mistake {
  const char* path;
  const char* value;  // null to remove what is there
  const char* message;
};
const Mistake kMistakes[] = {
    {"/version", nullptr, "the document: expected the key \"version\", found none"},
    {"/version", "2", ": expected 1, found 2"},
    {"/$schema", "1", ": expected a string, found 1"},
    {"/x~1y~0", "1", ": expected none but "},
    {"", "[]", "the document: expected an object, found an array"},
    {"/texts", "null", ": expected an object, found null"},
    {"/texts/CHRS", "256", ": expected a whole number from 0 to 255, found 256"},
    {"/texts/sets", "{}", ": expected an array, found an object"},
    {"/texts/sets/0/texts/1/text/hex", R"("616")",
     ": expected an even number, up to 510, of hex digits"},
    {"/texts/sets/0/texts/0/text/text", R"("Ending")", ": expected \"Opening\", as \"hex\" says"},
    {"/texts/sets", "[]", ": expected at least one item, or zeros"},
    {"/movie/vobs/1/length", "1", ": expected none but VOB_TY, bytes_2"},
    {"/movie/vobs/0/VOB_TY", R"("zz00")", ": expected 4 hex digits, found \"zz00\""},
    {"/movie/vobs/0/VOB_TY", R"("0080")",
     "/movie/vobs/0: expected the key \"seamless_block\", found none"},
    {"/movie/vobs/2/VOB_TY", R"("0000")", "/movie/vobs/2/seamless_block: expected none but"},
    {"/movie/vobs/0/time_map", R"({"TM_OSF":0,"VOBU_ADR_OSF":0,"times":[],"vobus":[]})",
     "/movie/vobs/0/time_map/vobus: expected at least one entry"},
    {"/still/groups/0/entries/0/S_VOB_ENT_TY", "255",
     "/still/groups/0/entries/0: expected the key \"EXT1_PCKs\""},
    {"/original_chain/cells/0/type", R"("audio")",
     ": expected \"movie\" or \"still\", found \"audio\""},
    {"/original_chain/cells/0/C_TY", "32", ": expected bits 7 to 5 that are 000 for a movie cell"},
    {"/original_chain/cells/6/entries/0/EP_TY", "0",
     "/original_chain/cells/6/entries/0/block: expected none but EP_TY, time_1"},
    {"/original_chain/cells/6/entries/0/block", nullptr,
     "/original_chain/cells/6/entries/0: expected the key \"block\""},
    {"/header/cell_point_70/position", R"("000000000000")", ": expected none but base, cell, ext"},
};

TEST(Json, NamesWhereAMistakeIsAndWhatWasExpected) {
  const Json document = Exported("mixed_full");
  for (const auto& [path, value, message] : kMistakes) {
    Json operation = {{"op", value == nullptr ? "remove" : "add"}, {"path", path}};
    if (value != nullptr) operation["value"] = Json::parse(value);
    const Json changed = document.patch(Json::array({operation}));
    try {
      VESKA::CVMGInfo info;
      veska_tool::Build(changed, "test", info);
      ADD_FAILURE() << operation << " was taken";
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.Status(), ExitStatus::kFound);
      const std::string expected = std::string(*message == ':' ? path : "") + message;
      EXPECT_NE(std::string(failure.what()).find(expected), std::string::npos)
          << failure.what() << "\n  instead of " << expected;
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
  for (const char* text : {"", "{", "{\"version\": 1,}", "[1 2]", R"({"a": {"b": 1, "b": 2}})",
                           "\xff", "{\"version\": 01}", "1e400"}) {
    EXPECT_THROW(veska_tool::ParseJson(text, "test"), Failure) << text;
  }
}

TEST(Json, RefusesToExportWithoutTheOneFile) {
  const std::string file = SamplePath("empty");
  const std::vector<std::string> cases[] = {{}, {file, file}, {"--schema", file}};
  for (std::vector<std::string> arguments : cases) {
    arguments.insert(arguments.begin(), "export");
    const ToolRun run = RunTool(arguments);
    EXPECT_EQ(run.status, ExitStatus::kUsage);
    EXPECT_TRUE(run.out.empty());
  }
}

// An empty table keeps nothing, so two objects that are equal have the same JSON.
TEST(Json, LeavesOutWhatTheFileLeavesOut) {
  VESKA::CVMGInfo info = *veska_tool::LoadInfo(SamplePath("empty"));
  const Json before = veska_tool::TreeOf(info);
  info.GetTextDataMgr().SetCharSet(0x11);
  unsigned char id[32] = {'X'};
  info.GetMNFInfoTable().SetLastMNFID(id);
  EXPECT_EQ(veska_tool::TreeOf(info), before);
}

TEST(Json, TheSchemaInTheDocumentsIsTheTools) {
  const auto text = VESKA::ReadFile<std::string>(std::string(VESKA_SAMPLES "/../docs/") +
                                                 veska_tool::kSchemaName);
  EXPECT_EQ(text, veska_tool::TextOf(veska_tool::Schema()))
      << "veska export --schema -o docs/veska.schema.json --force writes it anew";
}

}  // namespace
