// The report: its numbers, its axes, and a page that stays small and safe whatever the file holds.
#include <gtest/gtest.h>
#include <veska/veska.h>
#include <veska/workshop/load.h>
#include <veska/workshop/report.h>

#include <cstring>
#include <regex>

#include "report/axis.h"
#include "report/html.h"
#include "report/numbers.h"
#include "report/svg.h"
#include "support/image_builder.h"
#include "support/samples.h"
#include "veska/workshop/bitrate.h"

namespace {

using namespace VESKA;
using namespace VESKA::workshop;

std::span<const unsigned char> BytesOf(std::string_view text) {
  return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

TEST(ReportText, ShowsTextsOfTheDiscSafely) {
  using std::string_literals::operator""s;
  const struct {
    std::string bytes;
    std::size_t limit;
    const char* shown;
  } cases[] = {
      {"<b>\"A\" & 'B'</b>"s, 64, "&lt;b&gt;&quot;A&quot; &amp; &#39;B&#39;&lt;/b&gt;"},
      {"name\0\0\0"s, 64, "name"},
      {"\xE6\x97\xA5\xE6\x9C\xAC"s, 64, "\xE6\x97\xA5\xE6\x9C\xAC"},
      {"\xE6\x97\xA5\xE6\x9C\xAC"s, 1, "\xE6\x97\xA5&hellip;"},
      {"\x82\xA0<"s, 64, "\\x82\\xa0&lt;"},
      {"a\nb"s, 64, "a\\x0ab"},
      {"\xC0\xBC"s, 64, "\\xc0\\xbc"},           // an overlong "<"
      {"\xED\xA0\x80"s, 64, "\\xed\\xa0\\x80"},  // a surrogate
      {"\xF4\x90\x80\x80"s, 64, "\\xf4\\x90\\x80\\x80"},
      {"\xC2\x9B"s, 64, "\\xc2\\x9b"},  // a control character
  };
  for (const auto& test : cases)
    EXPECT_EQ(DiscText(BytesOf(test.bytes), test.limit, DecodeUtf8), test.shown);
}

TEST(ReportText, WritesNumbersForPeople) {
  EXPECT_EQ(Decimal(-0.001, 1), "0");
  EXPECT_EQ(SizeText(9999), "9,999 bytes");
  EXPECT_EQ(SizeText(999900), "1.00 MB");
  EXPECT_EQ(DurationText(59.96), "1:00");
  EXPECT_EQ(DurationText(3599.6), "1:00:00");
}

TEST(ReportText, MarksAxesInStepsThatPeopleCountIn) {
  using Marks = std::vector<double>;
  EXPECT_EQ(AxisMarks(17.6, 4), (Marks{0, 5, 10, 15, 20}));
  EXPECT_EQ(AxisMarks(0, 4), Marks{0});
  EXPECT_EQ(CountMarks(3, 10), (Marks{0, 1, 2, 3}));
  EXPECT_EQ(TimeMarks(147, 5), (Marks{0, 30, 60, 90, 120, 150}));
  EXPECT_EQ(TimeMark(90, TimeMarks(147, 5)), "1:30");
  EXPECT_EQ(TimeMark(3600, TimeMarks(20000, 10)), "1:00:00");
  EXPECT_EQ(TimeMarks(400000, 10).at(1), 72000);
}

void AddVobu(CTimeMapTable& map, unsigned fields, unsigned packs) {
  map.AddVobuENNode()->word_1 = static_cast<std::uint16_t>(fields << 10U | packs);
}

TEST(ReportBitrate, FollowsPacksAndFields) {
  CTimeMapTable map;
  AddVobu(map, 25, 100);  // 100 * 2,048 * 8 bits in half a second
  AddVobu(map, 0, 7);
  AddVobu(map, 50, 100);
  const Bitrate bitrate = BitrateOf(map, kFields50, 100);
  EXPECT_EQ(bitrate.vobus, 3);
  EXPECT_EQ(bitrate.untimed_vobus, 1);
  EXPECT_EQ(bitrate.bytes, 207U * 2048);
  EXPECT_DOUBLE_EQ(bitrate.seconds, 1.5);
  EXPECT_DOUBLE_EQ(bitrate.highest, 3.2768);
  EXPECT_DOUBLE_EQ(bitrate.mean, 200 * 2048 * 8 / 1e6 / 1.5);
  ASSERT_EQ(bitrate.steps.size(), 2U);
  EXPECT_DOUBLE_EQ(bitrate.steps[1].begin, 0.5);
  EXPECT_DOUBLE_EQ(bitrate.steps[1].mean, 1.6384);
  EXPECT_TRUE(BitrateOf(*std::make_unique<CTimeMapTable>(), kFields50, 10).steps.empty());
}

TEST(ReportBitrate, ManyVobusAreDrawnInEqualSteps) {
  CTimeMapTable map;
  for (const unsigned packs : {10U, 30U, 20U, 40U, 60U, 50U}) AddVobu(map, 20, packs);
  const double mbit = 2048 * 8 / 1e6 / 0.4;  // of one pack in 20 fields
  const Bitrate bitrate = BitrateOf(map, kFields50, 4);
  ASSERT_EQ(bitrate.steps.size(), 4U);
  // A step is one VOBU and a half: 10 and half of 30, the other half and 20, and so on.
  const double expected[4][3] = {
      {10, 50 / 3.0, 30}, {20, 70 / 3.0, 30}, {40, 140 / 3.0, 60}, {50, 160 / 3.0, 60}};
  for (std::size_t i = 0; i < 4; ++i) {
    SCOPED_TRACE(i);
    EXPECT_NEAR(bitrate.steps[i].lowest, expected[i][0] * mbit, 1e-9);
    EXPECT_NEAR(bitrate.steps[i].mean, expected[i][1] * mbit, 1e-9);
    EXPECT_NEAR(bitrate.steps[i].highest, expected[i][2] * mbit, 1e-9);
    EXPECT_NEAR(bitrate.steps[i].end, 0.6 * static_cast<double>(i + 1), 1e-9);
  }
}

TEST(ReportBitrate, GuessesTheFieldRateByTheClocks) {
  const struct {
    unsigned fields;
    std::uint32_t from;
    std::uint32_t to;
    double rate;
  } cases[] = {{500, 90000, 990000, kFields50}, {600, 90000, 990900, kFields60},
               {490, 0, 900000, kFields50},     {550, 0, 900000, 0},
               {500, 990000, 90000, 0},         {0, 0, 0, 0}};
  for (const auto& test : cases) {
    SCOPED_TRACE(test.fields);
    CMovieAVFile vobs;
    CMovieVOB& vob = vobs.AddNode()->M_VOBI;
    vob.GetHeader().time_9.base = test.from;
    vob.GetHeader().time_15.base = test.to;
    for (unsigned i = 0; i < test.fields; i += 10) AddVobu(vob.GetTimeMapTable(), 10, 1);
    EXPECT_EQ(GuessFieldRate(vobs), test.rate);
  }
}

TEST(ReportDrawing, DrawsTheNarrowTogetherAndLeavesNothingOut) {
  std::vector<Stretch> stretches;
  stretches.reserve(1001);
  for (int i = 0; i < 1000; ++i) {
    stretches.push_back({i * 0.5, i * 0.5 + 0.5, i % 2 == 0 ? "a" : "a odd", "s", "t"});
  }
  stretches.push_back({500, 600, "b", "wide", "wide"});
  Svg svg(600, 10);
  DrawStretches(svg, stretches, 1, 0, 10);
  const std::string text = svg.End();
  const std::regex rect("<rect class=\"([a-z ]+)\" x=\"([0-9.]+)\" y=\"0\" width=\"([0-9.]+)\"");
  double end = 0;
  int count = 0;
  for (std::sregex_iterator match(text.begin(), text.end(), rect), none; match != none; ++match) {
    EXPECT_NEAR(std::stod((*match)[2]), end, 0.11);
    end = std::stod((*match)[2]) + std::stod((*match)[3]);
    EXPECT_EQ((*match)[1], end < 550 ? "a" : "b");
    ++count;
  }
  EXPECT_NEAR(end, 600, 0.11);
  EXPECT_LE(count, 200);
}

struct Disc : CVMGInfo {
  Disc() { std::memcpy(GetMAT().GetHeader().VMG_ID, "DVD_RTR_VMG0", 12); }
};

/// The page of a report, which has to say some things.
std::string PageOf(CVMGInfo& info, std::initializer_list<const char*> parts,
                   const std::string& name = "disc.ifo") {
  std::string page = Report(name, Completed(info));
  for (const char* part : parts) EXPECT_NE(page.find(part), std::string::npos) << part;
  return page;
}

TEST(Report, DrawsTheFileToScale) {
  const auto info = Load(ReadFile(SamplePath("movie_recorder")));
  // The movie table is at 958 and has 7,010 of 13,088 bytes; the drawing is 960 wide. There are 310
  // VOBUs in 7,370 fields at 50 a second, 89,057 packs.
  PageOf(*info, {"<rect class=\"t3\" x=\"70.3\" y=\"8\" width=\"514.2\"",
                 "50 fields a second, which the clock values of the VOBs tell",
                 "<td class=\"n\">2:27</td><td class=\"n\">182 MB</td><td class=\"n\">310</td>"
                 "<td class=\"n\">9.90</td>",
                 "cell 8 of program 3, &ldquo;Garden in spring&rdquo;"});
}

TEST(Report, CountsWithTheRateThatIsAskedFor) {
  const VESKA::Bytes bytes = ReadFile(SamplePath("movie_recorder"));
  const struct {
    FieldRate rate;
    const char* said;
  } cases[] = {{FieldRate::kGuessed, "at 50 fields a second, which the clock"},
               {FieldRate::k50, "at 50 fields a second, as asked for"},
               {FieldRate::k59_94, "at 59.94 fields a second, as asked for"}};
  for (const auto& test : cases) {
    EXPECT_NE(Report("x", bytes, {test.rate}).find(test.said), std::string::npos) << test.said;
  }
  EXPECT_THROW(Report("x", bytes.Part(0, 1200)), Error);
}

TEST(Report, EscapesWhateverTheFileSays) {
  const auto info = Load(ReadFile(SamplePath("movie_recorder")));
  const std::string evil = "<script>alert(\"'&\")</script>";
  const auto put = [&](auto& field) { std::copy(evil.begin(), evil.end(), field); };
  put(info->GetMAT().GetHeader().text_93);
  put(info->GetMAT().GetPlayListTable()[0]->text_8);
  put(info->GetOriginalPGC().GetPGNode(7)->text_4);
  put(info->GetUserPGCTable()[0]->UD_PGCI.GetPGNode(0)->text_4);
  info->GetMAT().GetPlayListTable()[1]->cell_point.cell = 25;
  const std::string page = PageOf(*info, {"&lt;script&gt;"}, evil);
  EXPECT_EQ(page.find("<script"), std::string::npos);
  EXPECT_EQ(page.find("alert(\""), std::string::npos);
}

TEST(Report, StaysSmallHoweverLongTheLists) {
  Disc info;
  CPGCInfo& chain = info.GetOriginalPGC();
  for (int i = 0; i < 0xFFFF; ++i) chain.AddCellNode(i % 3 == 0 ? CELL_STILL : CELL_MOVIE);
  for (int i = 0; i < 255; ++i) {
    chain.AddPGNode()->C_Ns = 257;
    info.GetMAT().GetPlayListTable().AddNode()->cell_point.cell =
        static_cast<std::uint16_t>(1 + i * 257);
    CPGCInfo& user_chain = info.GetUserPGCTable().AddNode()->UD_PGCI;
    user_chain.AddCellNode(CELL_STILL);
    for (int k = 0; k < 255; ++k) user_chain.AddPGNode()->C_Ns = 1;
  }
  CMovieAVFile& vobs = info.GetMovieAVFileTable().GetMovieAVFile();
  CTimeMapTable& map = vobs.AddNode()->M_VOBI.GetTimeMapTable();
  for (unsigned i = 0; i < 0xFFFF; ++i) AddVobu(map, 1 + i % 63, i % 1024);
  for (int i = 0; i < 2000; ++i) {
    for (unsigned k = 0; k < 20; ++k) AddVobu(vobs.AddNode()->M_VOBI.GetTimeMapTable(), 20, 100);
  }
  const auto page = PageOf(info, {" charts more are not shown.", " chains more are not shown."});
  EXPECT_LT(page.size(), 6'000'000U);
}

TEST(Report, FollowsNothingThatIsNotThere) {
  Disc info;
  CPGCInfo& chain = info.GetOriginalPGC();
  chain.AddCellNode(CELL_MOVIE);
  chain.AddCellNode(CELL_MOVIE);
  chain.AddPGNode()->C_Ns = 0xFFFF;
  chain.AddPGNode()->C_Ns = 0xFFFF;
  for (const int cell : {0, 3, 0xFFFF})
    info.GetMAT().GetPlayListTable().AddNode()->cell_point.cell = static_cast<std::uint16_t>(cell);
  info.GetMovieAVFileTable().GetMovieAVFile().AddNode();
  PageOf(info, {"cell 0, which does not exist", "cell 3, which does not exist", "nowhere",
                "has no VOBU with a playback time"});
}

}  // namespace
