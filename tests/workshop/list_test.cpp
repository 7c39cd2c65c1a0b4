// What is on a disc, in its three forms.
#include <gtest/gtest.h>
#include <veska/workshop/list.h>
#include <veska/workshop/load.h>
#include <veska/workshop/locate.h>

#include <nlohmann/json.hpp>

#include "support/image_builder.h"

namespace {

using namespace VESKA::workshop;
using Json = nlohmann::json;

std::string Shown(const std::string& bytes) {
  return ShownText({reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()});
}

TEST(ShownText, IsUtf8WhereItIsThatAndBytesElsewhere) {
  using std::string_literals::operator""s;
  const struct {
    std::string bytes;
    const char* shown;
  } cases[] = {
      {"Evening news\0\0"s, "Evening news"},
      {"\xE9\x8C\xB2\xE7\x94\xBB"s, "\xE9\x8C\xB2\xE7\x94\xBB"},
      {"\xF0\x90\x80\x80"s, "\xF0\x90\x80\x80"},      // U+10000
      {"\xF4\x8F\xBF\xBF"s, "\xF4\x8F\xBF\xBF"},      // U+10FFFF
      {"\xF4\x90\x80\x80"s, "\\xf4\\x90\\x80\\x80"},  // behind it
      {"\xC0\xAF"s, "\\xc0\\xaf"},                    // a slash in two bytes
      {"\xE0\x9F\xBF"s, "\\xe0\\x9f\\xbf"},
      {"\xED\xA0\x80"s, "\\xed\\xa0\\x80"},  // a surrogate
      {"\x98^\x89\xE6"s, "\\x98^\\x89\\xe6"},
      {"\xE9\x8C"s, "\\xe9\\x8c"},
      {"a\x1B[31m\n"s, "a\\x1b[31m\\x0a"},
      {""s, ""},
  };
  for (const auto& test : cases) EXPECT_EQ(Shown(test.bytes), test.shown);
}

TEST(List, CountsWhatTheSamplesHold) {
  const Listing disc = ListingOf(VESKA::Sample("movie_recorder"));
  EXPECT_EQ(disc.status, DiscStatus::kSound);
  EXPECT_EQ(disc.problem, "");
  EXPECT_EQ(disc.text, "FAMILY RECORDINGS VOL 3");
  ASSERT_EQ(disc.programs.size(), 12U);
  EXPECT_EQ(disc.programs[2].text, "Garden in spring");
  EXPECT_EQ(disc.programs[2].first_cell, 8);
  EXPECT_EQ(disc.programs[2].cells, 2);
  EXPECT_EQ(disc.programs[2].kind, "movie");
  EXPECT_EQ(disc.play_lists.at(1).cell, 34);
  EXPECT_EQ(disc.play_lists.at(2).cell, 0);
  EXPECT_EQ(disc.recorded_first, "2006-03-04T19:30:00");
  EXPECT_EQ(disc.recorded_last, "2006-07-15T12:34:56");
  EXPECT_EQ(disc.bytes % 2048, 0U);
  EXPECT_EQ(ListingOf(VESKA::Sample("still_camera")).still_groups, 5);
}

TEST(List, CountsNoTimeOfACellThatEndsBeforeItsStart) {
  const VESKA::Bytes image = VESKA::Sample("movie_recorder");
  const auto info = Load(image);
  auto& cell =
      static_cast<VESKA::CMovieCell&>(*info->GetOriginalPGC().GetCellNode(0)->CI).GetHeader();
  const double length = (cell.time_12.base - cell.time_6.base) / 90000.0;
  cell.time_12.base = cell.time_6.base - 1;
  EXPECT_NEAR(ListingOf(ImageOf(*info)).programs.at(0).seconds,
              ListingOf(image).programs.at(0).seconds - length, 0.001);
}

TEST(List, SaysWhatIsDamagedAndListsTheRest) {
  VESKA::Bytes cut = VESKA::Sample("movie_recorder");
  cut.resize(9000);
  const Listing disc = ListingOf(cut);
  EXPECT_EQ(disc.status, DiscStatus::kDamaged);
  EXPECT_NE(disc.problem.find("can be salvaged"), std::string::npos) << disc.problem;
  EXPECT_EQ(disc.problem.find('\n'), std::string::npos);
  EXPECT_EQ(disc.play_lists.size(), 3U);
  EXPECT_GT(disc.vobs, 0);
  for (const VESKA::Bytes& bytes : {VESKA::Bytes(), VESKA::Text("not a management file", 40)}) {
    EXPECT_EQ(ListingOf(bytes).status, DiscStatus::kBad);
    EXPECT_NE(ListingOf(bytes).problem, "");
  }
}

/// The values of a row of CSV, by the rules of RFC 4180.
std::vector<std::string> ValuesOf(const std::string& line) {
  std::vector<std::string> values(1);
  bool is_quoted = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '"' && is_quoted && line[i + 1] == '"') {
      values.back() += line[++i];
    } else if (line[i] == '"') {
      is_quoted = !is_quoted;
    } else if (line[i] == ',' && !is_quoted) {
      values.emplace_back();
    } else if (line[i] != '\n' || is_quoted) {
      values.back() += line[i];
    }
  }
  return values;
}

// Whatever the texts hold, both forms of a row say the same in the same columns.
TEST(List, RowsSayTheSameAsCsvAndAsJson) {
  Listing disc = ListingOf(VESKA::Sample("mixed_full"));
  disc.text = "a, \"quoted\" text";
  disc.programs[0].text = "=1+1";
  for (const Listing& listing : {disc, BadListing("it is\na folder")}) {
    for (const RowOf of : {RowOf::kDisc, RowOf::kProgram}) {
      const std::vector<std::string> heads = ValuesOf(CsvHeads(of));
      const std::string line = ToCsv(listing, "x,y.iso", of);
      const bool is_bad = listing.status == DiscStatus::kBad;
      const auto values = ValuesOf(is_bad ? line : line.substr(0, line.find('\n') + 1));
      const std::string lines = ToJsonLines(listing, "x,y.iso", of);
      const Json row = Json::parse(lines.substr(0, lines.find('\n')));
      ASSERT_EQ(values.size(), heads.size());
      ASSERT_EQ(row.size(), heads.size());
      EXPECT_EQ(values[0], "x,y.iso");
      for (std::size_t i = 0; i < heads.size(); ++i) {
        const Json& value = row.at(heads[i]);
        const std::string text = value.is_null()           ? ""
                                 : value.is_string()       ? value.get<std::string>()
                                 : value.is_number_float() ? values[i]
                                                           : value.dump();
        EXPECT_EQ(values[i], text) << heads[i];
        if (value.is_number_float()) {
          EXPECT_DOUBLE_EQ(std::stod(values[i]), value);
        }
      }
    }
  }
}

// The size of a damaged one is not to be believed, and a reader that gives nothing ends the search.
TEST(Locate, BelievesNoEndAddressBeyondReason) {
  VESKA::Bytes image(3 * 2048);
  const VESKA::Bytes sample = VESKA::Sample("still_camera");
  std::copy_n(sample.begin(), 600, image.begin() + 2048);
  std::fill_n(image.begin() + 2048 + 12, 4, std::uint8_t{0xFF});  // VMG_EA
  std::size_t most = 0;
  const ReadBytes read = [&](std::uint64_t offset, std::span<unsigned char> to) {
    most = std::max(most, to.size());
    const std::size_t left =
        image.size() - static_cast<std::size_t>(std::min<std::uint64_t>(offset, image.size()));
    const std::size_t count = std::min(left, to.size());
    std::copy_n(image.end() - static_cast<std::ptrdiff_t>(left), count, to.begin());
    return count;
  };
  const std::vector<Located> found = Locate(read);
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].offset, 2048U);
  EXPECT_EQ(found[0].size, 4096U);
  EXPECT_FALSE(found[0].is_sound);
  EXPECT_LE(most, std::size_t{1} << 22U);
  image.clear();
  EXPECT_TRUE(Locate(read).empty());
  EXPECT_EQ(LocatedAt(read, 1 << 20U).size, 0U);
}

}  // namespace
