// The sections of a report on the file map, the bitrates and the still pictures.
#include <algorithm>
#include <vector>

#include "html.h"
#include "report_charts.h"
#include "report_parts.h"
#include "units.h"

namespace veska_tool {
namespace {

constexpr int kMostCharts = 200;
/// The steps of all curves together, so that many VOBs make a page no larger than a few do.
constexpr int kMostSteps = 60000;
constexpr int kFewestSteps = 200;
constexpr int kMostStepsOfOne = 840;
/// In Mbit/s: where nothing was recorded the axis still needs a length.
constexpr double kLeastTop = 0.1;

void AddVobTable(Report& report) {
  std::string& page = report.page;
  StartTable(page, "Movie VOBs by their time maps",
             NumberHead("No.") + NumberHead("Length") + NumberHead("Size") + NumberHead("VOBUs") +
                 NumberHead("Mean, Mbit/s") + NumberHead("Highest VOBU, Mbit/s"));
  const int count = static_cast<int>(report.bitrates.size());
  const int shown = std::min(count, kMostRows);
  for (int i = 0; i < shown; ++i) {
    const Bitrate& bitrate = report.bitrates[static_cast<std::size_t>(i)];
    page += "<tr>" + RowNumber(i + 1) + NumberCell(DurationText(bitrate.seconds)) +
            NumberCell(SizeText(bitrate.bytes)) +
            NumberCell(Grouped(static_cast<std::uint64_t>(bitrate.vobus))) +
            NumberCell(Fixed(bitrate.mean, 2)) + NumberCell(Fixed(bitrate.highest, 2)) + "</tr>\n";
  }
  EndTable(page);
  SayRest(page, count, shown, "VOB");
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
    note += Counted(static_cast<std::uint64_t>(bitrate.untimed_vobus), "VOBU") +
            " without playback time not drawn.";
  }
  return note;
}

}  // namespace

void FindBitrates(Report& report) {
  VESKA::CMovieAVFile& vobs = report.Vobs();
  const double guess = GuessFieldRate(vobs);
  const auto text = [](double rate) { return Decimal(rate, 2) + " fields a second"; };
  if (report.field_rate != 0) {
    report.field_rate_reason = text(report.field_rate) + ", as asked for";
  } else if (guess != 0) {
    report.field_rate = guess;
    report.field_rate_reason = text(guess) + ", which the clock values of the VOBs tell";
  } else {
    report.field_rate = kFields60;
    report.field_rate_reason = text(kFields60) +
                               ", an assumption: the clock values of the VOBs fit neither 50 nor "
                               "59.94 (option --field-rate)";
  }
  const int charts = std::clamp(vobs.GetCount(), 1, kMostCharts);
  const int steps = std::clamp(kMostSteps / charts, kFewestSteps, kMostStepsOfOne);
  for (int i = 0; i < vobs.GetCount(); ++i) {
    report.bitrates.push_back(
        BitrateOf(vobs[i]->M_VOBI.GetTimeMapTable(), report.field_rate, i < charts ? steps : 1));
  }
}

void AddBitrates(Report& report) {
  if (report.bitrates.empty()) return;
  std::string& page = report.page;
  StartSection(page, "Bitrate");
  const double common = CommonTop(report.bitrates);
  AddParagraph(page, "For each VOBU its packs of 2,048 bytes over its video fields, at " +
                         report.field_rate_reason + ". One Mbit is a million bits. " +
                         (common != 0 ? "All charts have one scale upwards; each is as wide as the "
                                        "page, however long its VOB."
                                      : "The VOBs differ much, so each chart has a scale of its "
                                        "own."));
  AddVobTable(report);
  const int count = static_cast<int>(report.bitrates.size());
  const int shown = std::min(count, kMostCharts);
  for (int i = 0; i < shown; ++i) {
    const Bitrate& bitrate = report.bitrates[static_cast<std::size_t>(i)];
    page += "<h3>VOB " + std::to_string(i + 1) + "</h3>\n";
    if (bitrate.steps.empty()) {
      page += "<p class=\"note\">Its time map has no VOBU with a playback time.</p>\n";
      continue;
    }
    AddFigure(
        page,
        BitrateChart(bitrate, std::max(common != 0 ? common : bitrate.highest, kLeastTop), i + 1),
        BitrateNote(bitrate));
  }
  SayRest(page, count, shown, "chart");
  EndSection(page);
}

void AddStillGroups(Report& report) {
  VESKA::CStillAVFile& groups = report.Groups();
  if (groups.IsEmpty()) return;
  std::string& page = report.page;
  StartSection(page, "Still pictures");
  StartTable(page, "Groups of still pictures",
             NumberHead("No.") + NumberHead("Pictures") + NumberHead("Size"));
  const int shown = std::min(groups.GetCount(), kMostRows);
  for (int i = 0; i < shown; ++i) {
    VESKA::CStillVOG& group = groups[i]->S_VOGI;
    page += "<tr>" + RowNumber(i + 1) + NumberCell(group.GetCount()) +
            NumberCell(SizeText(std::uint64_t{group.GetPackCount()} * kPackSize)) + "</tr>\n";
  }
  EndTable(page);
  SayRest(page, groups.GetCount(), shown, "group");
  EndSection(page);
}

}  // namespace veska_tool
