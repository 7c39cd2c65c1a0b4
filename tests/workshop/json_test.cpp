// Export to JSON and building from it.
#include <gtest/gtest.h>
#include <veska/CVMGInfo.h>
#include <veska/workshop/json.h>
#include <veska/workshop/load.h>

#include <nlohmann/json.hpp>

#include "support/image_builder.h"

namespace {

using VESKA::workshop::Bytes;
using VESKA::workshop::Error;
using VESKA::workshop::ErrorKind;
using VESKA::workshop::JsonForm;
using VESKA::workshop::ToJson;
using Json = nlohmann::ordered_json;

/// What a text that was printed makes again: the image of it, completed.
Bytes Rebuilt(const std::string& text) { return VESKA::Written(*VESKA::workshop::FromJson(text)); }

Json Exported(const std::string& sample) {
  return Json::parse(VESKA::workshop::ToJson(*VESKA::workshop::Load(VESKA::Sample(sample))));
}

TEST(Json, ExportAndBuildGiveTheCanonicalFile) {
  for (const std::string sample : VESKA::kSamples) {
    Bytes image = VESKA::Sample(sample);
    const auto info = VESKA::workshop::Load(image);
    const Bytes from_line = Rebuilt(ToJson(*info, JsonForm::kLine, "name"));
    EXPECT_EQ(from_line, Rebuilt(ToJson(*info))) << sample;
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
    const std::string text = ToJson(info, JsonForm::kLine);
    try {
      EXPECT_EQ(Rebuilt(text), VESKA::Completed(info));
      ++built;
    } catch (const Error& failure) {
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
    {"/texts/sets/0/texts/0/text", R"({})",
     "/texts/sets/0/texts/0/text: expected the key \"hex\", found none"},
    {"/texts/sets/0/texts/0/text", R"({"text":"\\n"})",
     "/texts/sets/0/texts/0/text/text: expected a text where a backslash"},
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
      VESKA::workshop::FromJson(changed.dump());
      ADD_FAILURE() << operation << " was taken";
    } catch (const Error& failure) {
      EXPECT_EQ(failure.Kind(), ErrorKind::kDocument);
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

// A person who changes a title leaves the hex out.
TEST(Json, TakesTheBytesOfATextWithoutHex) {
  const Json document = Exported("mixed_full");
  const auto built = [&](const char* path, const std::string& text) {
    const Json value = {{"text", text}};
    const Json changed =
        document.patch(Json::array({{{"op", "replace"}, {"path", path}, {"value", value}}}));
    return VESKA::workshop::FromJson(changed.dump());
  };
  const auto padded = [](std::string text) { return text.append(128 - text.size(), '\0'); };
  const auto disc_text = [](VESKA::CVMGInfo& info) {
    const auto& field = info.GetMAT().GetHeader().text_93;
    return std::string(std::begin(field), std::end(field));
  };
  const char* const disc = "/header/text_93";
  EXPECT_EQ(disc_text(*built(disc, "")), padded(""));
  EXPECT_EQ(disc_text(*built(disc, R"(a\\b\"\xe9\x00!)")), padded(std::string("a\\b\"\xe9\0!", 7)));
  EXPECT_EQ(disc_text(*built(disc, std::string(128, 'x'))), std::string(128, 'x'));
  try {
    built(disc, std::string(131, 'x'));
    ADD_FAILURE() << "a text that is too long was taken";
  } catch (const Error& error) {
    EXPECT_STREQ(error.what(),
                 "/header/text_93/text: expected at most 128 bytes, found 131, 3 too many");
  }
  // A text without a width of its own has the length of what stands there.
  const auto info = built("/texts/sets/0/texts/0/text", R"(ab\x00)");
  const VESKA::tag_IT_TXT& text = *info->GetTextDataMgr()[0]->IT_TXT[0];
  EXPECT_EQ(std::string(text.text, text.text + text.length), std::string("ab\0", 3));
}

TEST(Json, RefusesMoreItemsThanACountHolds) {
  Json document = Exported("empty");
  Json& streams = document["movie"]["streams"];
  streams = Json::array();
  for (int i = 0; i < 256; ++i) streams.push_back({{"bytes_0", std::string(120, '0')}});
  EXPECT_THROW(VESKA::workshop::FromJson(document.dump()), Error);
  streams.erase(0);
  EXPECT_EQ(VESKA::workshop::FromJson(document.dump())->GetMovieAVFileTable().GetStreamCount(),
            255);
}

TEST(Json, RefusesTextThatIsNotJson) {
  for (const char* text : {"", "{", "{\"version\": 1,}", "[1 2]", R"({"a": {"b": 1, "b": 2}})",
                           "\xff", "{\"version\": 01}", "1e400"}) {
    EXPECT_THROW(VESKA::workshop::FromJson(text), Error) << text;
  }
}

// An empty table keeps nothing, so two objects that are equal have the same JSON.
TEST(Json, LeavesOutWhatTheFileLeavesOut) {
  VESKA::CVMGInfo info = *VESKA::workshop::Load(VESKA::Sample("empty"));
  const std::string before = ToJson(info);
  info.GetTextDataMgr().SetCharSet(0x11);
  unsigned char id[32] = {'X'};
  info.GetMNFInfoTable().SetLastMNFID(id);
  EXPECT_EQ(ToJson(info), before);
}

TEST(Json, TheSchemaInTheDocumentsIsTheTools) {
  const auto text =
      VESKA::ReadFile<std::string>(std::string(VESKA_SAMPLES "/../docs/") + "veska.schema.json");
  EXPECT_EQ(text, VESKA::workshop::JsonSchema())
      << "veska export --schema -o docs/veska.schema.json --force writes it anew";
}

}  // namespace
