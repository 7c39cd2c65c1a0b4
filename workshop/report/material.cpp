// The sections of a report on the file map, the bitrates and the still pictures.
#include <algorithm>

#include "basis/units.h"
#include "report/charts.h"
#include "report/facts.h"
#include "report/html.h"
#include "report/numbers.h"

namespace VESKA::workshop {
namespace {

/// The steps of all curves together, so that many VOBs make a page no larger than a few do.
constexpr int kMostSteps = 60000;
constexpr int kFewestSteps = 200;
constexpr int kMostStepsOfOne = 840;
/// In Mbit/s: where nothing was recorded the axis still needs a length.
constexpr double kLeastTop = 0.1;

/// What a table holds, in numbers.
std::string Contents(const Facts& facts, Table table) {
  const CVMGInfo& info = facts.info;
  const struct {
    Table table;
    int count;
    const char* thing;
  } all[] = {
      {Table::kPlayLists, facts.PlayLists().GetCount(), "play list"},
      {Table::kMovie, info.GetMovieAVFileTable().GetStreamCount(), "stream"},
      {Table::kMovie, facts.Vobs().GetCount(), "VOB"},
      {Table::kStill, facts.Groups().GetCount(), "group"},
      {Table::kStill, info.GetStillAVFileTable().GetAdditionalAFile().GetCount(), "audio group"},
      {Table::kOriginalChain, facts.Chain().GetPGCount(), "program"},
      {Table::kOriginalChain, facts.Chain().GetCellCount(), "cell"},
      {Table::kUserChains, info.GetUserPGCTable().GetCount(), "chain"},
      {Table::kTexts, info.GetTextDataMgr().GetCount(), "text set"},
      {Table::kManufacturers, info.GetMNFInfoTable().GetCount(), "manufacturer"},
  };
  std::string text;
  for (const auto& one : all) {
    if (one.table == table) text += (text.empty() ? "" : ", ") + Counted(one.count, one.thing);
  }
  return text;
}

std::string VobTable(const std::vector<Bitrate>& bitrates) {
  const int count = static_cast<int>(bitrates.size());
  const int shown = std::min(count, kMostRows);
  std::string rows;
  for (int i = 0; i < shown; ++i) {
    const Bitrate& bitrate = bitrates[static_cast<std::size_t>(i)];
    rows += "<tr>" + RowNumber(i + 1) + NumberCell(DurationText(bitrate.seconds)) +
            NumberCell(SizeText(bitrate.bytes)) + NumberCell(Grouped(bitrate.vobus)) +
            NumberCell(Fixed(bitrate.mean, 2)) + NumberCell(Fixed(bitrate.highest, 2)) + "</tr>\n";
  }
  return HtmlTable("Movie VOBs by their time maps",
                   NumberHead("No.") + NumberHead("Length") + NumberHead("Size") +
                       NumberHead("VOBUs") + NumberHead("Mean, Mbit/s") +
                       NumberHead("Highest VOBU, Mbit/s"),
                   rows) +
         RestOf(count, shown, "VOB");
}

/// The scale that charts share, 0 when the VOBs differ too much for one.
double CommonTop(const std::vector<Bitrate>& bitrates) {
  double top = 0;
  double least = 0;
  for (const Bitrate& bitrate : bitrates) {
    if (bitrate.steps.empty()) continue;
    top = std::max(top, bitrate.highest);
    least = least == 0 ? bitrate.highest : std::min(least, bitrate.highest);
  }
  return top > 3 * least ? 0 : top;
}

std::string BitrateNote(const Bitrate& bitrate) {
  std::string note;
  const int drawn = bitrate.vobus - bitrate.untimed_vobus;
  const int steps = static_cast<int>(bitrate.steps.size());
  if (steps > 0 && drawn > steps) {
    note = "Drawn in " + std::to_string(steps) + " steps of " +
           DurationText(bitrate.seconds / steps) +
           ": the band from the lowest VOBU to the highest, the line for the mean. ";
  }
  if (bitrate.untimed_vobus > 0) {
    note += Counted(bitrate.untimed_vobus, "VOBU") + " without playback time not drawn.";
  }
  return note;
}

/// The chart of a VOB under its heading. `top` is where its scale ends, 0 for one of its own.
std::string VobChart(const Bitrate& bitrate, double top, int number) {
  const std::string heading = "<h3>VOB " + std::to_string(number) + "</h3>\n";
  if (bitrate.steps.empty()) {
    return heading + "<p class=\"note\">Its time map has no VOBU with a playback time.</p>\n";
  }
  const double end = std::max(top != 0 ? top : bitrate.highest, kLeastTop);
  return heading +
         Figure(ForBothWidths([&](int width) { return BitrateChart(bitrate, end, number, width); }),
                BitrateNote(bitrate));
}

}  // namespace

std::string FileMapSection(const Facts& facts) {
  std::vector<Structure> tables;
  const auto& all = facts.map.structures;
  std::copy_if(all.begin(), all.end(), std::back_inserter(tables), IsWholeTable);
  std::stable_sort(tables.begin(), tables.end(),
                   [](const Structure& a, const Structure& b) { return a.offset < b.offset; });
  const auto size = static_cast<double>(std::max<std::size_t>(facts.bytes.size(), 1));
  std::string rows;
  for (const Structure& table : tables) {
    const double share = 100.0 * static_cast<double>(table.size) / size;
    rows += "<tr><th scope=\"row\"><span class=\"key " + LookOf(table.table) + "\"></span>" +
            InfoOf(table.table).name + "</th>" + NumberCell(Grouped(table.offset)) +
            NumberCell(Grouped(table.size)) + NumberCell(Fixed(share, 1) + "&nbsp;%") + "<td>" +
            Contents(facts, table.table) + "</td></tr>\n";
  }
  return Section(
      "The file",
      Paragraph(
          "Which table lies where, to scale: the tables above, what they are made of below.") +
          Figure(ForBothWidths(
              [&](int width) { return FileMapChart(facts.map, facts.bytes.size(), width); })) +
          HtmlTable("The tables in the order of the file",
                    TextHead("Table") + NumberHead("From byte") + NumberHead("Bytes") +
                        NumberHead("Share") + TextHead("Holds"),
                    rows));
}

Rate RateOf(const CMovieAVFile& vobs, FieldRate asked) {
  const auto rate = [](double fields, const char* reason) {
    return Rate{fields, Decimal(fields, 2) + " fields a second, " + reason};
  };
  if (asked != FieldRate::kGuessed) {
    return rate(asked == FieldRate::k50 ? kFields50 : kFields60, "as asked for");
  }
  const double guess = GuessFieldRate(vobs);
  if (guess != 0) return rate(guess, "which the clock values of the VOBs tell");
  return rate(kFields60,
              "an assumption: the clock values of the VOBs fit neither 50 nor 59.94 (option "
              "--field-rate)");
}

std::vector<Bitrate> BitratesOf(const CMovieAVFile& vobs, double fields_per_second) {
  const int charts = std::clamp(vobs.GetCount(), 1, kMostCharts);
  const int steps = std::clamp(kMostSteps / charts, kFewestSteps, kMostStepsOfOne);
  std::vector<Bitrate> bitrates;
  bitrates.reserve(static_cast<std::size_t>(vobs.GetCount()));
  for (int i = 0; i < vobs.GetCount(); ++i) {
    bitrates.push_back(
        BitrateOf(vobs[i]->M_VOBI.GetTimeMapTable(), fields_per_second, i < charts ? steps : 1));
  }
  return bitrates;
}

std::string BitrateSection(const Facts& facts) {
  if (facts.bitrates.empty()) return {};
  const double common = CommonTop(facts.bitrates);
  std::string content =
      Paragraph("For each VOBU its packs of 2,048 bytes over its video fields, at " +
                facts.rate.reason + ". One Mbit is a million bits. " +
                (common != 0 ? "All charts have one scale upwards; each is as wide as the page, "
                               "however long its VOB."
                             : "The VOBs differ much, so each chart has a scale of its own.")) +
      VobTable(facts.bitrates);
  const int count = static_cast<int>(facts.bitrates.size());
  const int shown = std::min(count, kMostCharts);
  for (int i = 0; i < shown; ++i) {
    content += VobChart(facts.bitrates[static_cast<std::size_t>(i)], common, i + 1);
  }
  return Section("Bitrate", content + RestOf(count, shown, "chart"));
}

std::string StillSection(const Facts& facts) {
  const CStillAVFile& groups = facts.Groups();
  if (groups.IsEmpty()) return {};
  const int shown = std::min(groups.GetCount(), kMostRows);
  std::string rows;
  for (int i = 0; i < shown; ++i) {
    const CStillVOG& group = groups[i]->S_VOGI;
    rows += "<tr>" + RowNumber(i + 1) + NumberCell(group.GetCount()) +
            NumberCell(SizeText(std::uint64_t{group.GetPackCount()} * kPackSize)) + "</tr>\n";
  }
  return Section("Still pictures",
                 HtmlTable("Groups of still pictures",
                           NumberHead("No.") + NumberHead("Pictures") + NumberHead("Size"), rows) +
                     RestOf(groups.GetCount(), shown, "group"));
}

}  // namespace VESKA::workshop
