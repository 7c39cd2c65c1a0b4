#include "report_page.h"

#include <algorithm>
#include <utility>

#include "html.h"
#include "report_charts.h"
#include "report_parts.h"
#include "report_style.h"

namespace veska_tool {
namespace {

constexpr std::size_t kLongestName = 255;

void AddHead(Report& report) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(report.name.data());
  const std::string name = DiscText({bytes, report.name.size()}, kLongestName);
  report.page = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
<meta http-equiv="Content-Security-Policy"
  content="default-src 'none'; style-src 'unsafe-inline'; img-src data:">
<link rel="icon" href="data:,">
<title>)" + name +
                "</title>\n<style>" + kReportStyle + R"(</style>
</head>
<body>
<header>
<p class="kind">Management file of a DVD Video Recording disc</p>
<h1>)" + name + "</h1>\n";
  const std::string text = DiscText(report.info.GetMAT().GetHeader().text_93, 128);
  if (!text.empty()) report.page += "<p class=\"lead\">" + text + "</p>\n";
}

void AddFacts(Report& report) {
  const auto add = [&](const char* what, const std::string& value) {
    report.page += std::string("<div><dt>") + what + "</dt><dd>" + value + "</dd></div>\n";
  };
  const auto count = [](int number) { return Grouped(static_cast<std::uint64_t>(number)); };
  double seconds = 0;
  std::uint64_t bytes = 0;
  for (const Bitrate& bitrate : report.bitrates) {
    seconds += bitrate.seconds;
    bytes += bitrate.bytes;
  }
  report.page += "<dl>\n";
  add("Programs", count(report.Chain().GetPGCount()));
  add("Cells", count(report.Chain().GetCellCount()));
  add("Play lists", count(report.PlayLists().GetCount()));
  add("User-defined chains", count(report.info.GetUserPGCTable().GetCount()));
  add("Movie VOBs", count(report.Vobs().GetCount()));
  if (!report.bitrates.empty()) {
    add("Playing time of the VOBs", DurationText(seconds));
    add("Size of the VOBs", SizeText(bytes));
  }
  add("Still groups", count(report.Groups().GetCount()));
  add("Size of this file", SizeText(report.bytes.size()));
  report.page += "</dl>\n</header>\n<main>\n";
}

/// What a table holds, in numbers.
std::string Contents(Report& report, Table table) {
  const auto counted = [](int number, const char* thing) {
    return Counted(static_cast<std::uint64_t>(number), thing);
  };
  switch (table) {
    case Table::kPlayLists:
      return counted(report.PlayLists().GetCount(), "play list");
    case Table::kMovie:
      return counted(report.info.GetMovieAVFileTable().GetStreamCount(), "stream") + ", " +
             counted(report.Vobs().GetCount(), "VOB");
    case Table::kStill:
      return counted(report.Groups().GetCount(), "group") + ", " +
             counted(report.info.GetStillAVFileTable().GetAdditionalAFile().GetCount(),
                     "audio group");
    case Table::kOriginalChain:
      return counted(report.Chain().GetPGCount(), "program") + ", " +
             counted(report.Chain().GetCellCount(), "cell");
    case Table::kUserChains:
      return counted(report.info.GetUserPGCTable().GetCount(), "chain");
    case Table::kTexts:
      return counted(report.info.GetTextDataMgr().GetCount(), "text set");
    case Table::kManufacturers:
      return counted(report.info.GetMNFInfoTable().GetCount(), "manufacturer");
    default:
      return "";
  }
}

}  // namespace

void AddFileMap(Report& report) {
  std::string& page = report.page;
  StartSection(page, "The file");
  AddParagraph(page,
               "Which table lies where, to scale: the tables above, what they are made of below.");
  AddFigure(page, FileMapChart(report.map, report.bytes.size()));
  StartTable(page, "The tables in the order of the file",
             TextHead("Table") + NumberHead("From byte") + NumberHead("Bytes") +
                 NumberHead("Share") + TextHead("Holds"));
  std::vector<Structure> tables;
  for (const Structure& structure : report.map.structures) {
    if (IsWholeTable(structure)) tables.push_back(structure);
  }
  std::stable_sort(tables.begin(), tables.end(),
                   [](const Structure& a, const Structure& b) { return a.offset < b.offset; });
  for (const Structure& table : tables) {
    const double share = 100.0 * static_cast<double>(table.size) /
                         static_cast<double>(std::max<std::size_t>(report.bytes.size(), 1));
    page += "<tr><th scope=\"row\"><span class=\"key " + LookOf(table.table) + "\"></span>" +
            NameOf(table.table) + "</th>" + NumberCell(Grouped(table.offset)) +
            NumberCell(Grouped(table.size)) + NumberCell(Fixed(share, 1) + "&nbsp;%") + "<td>" +
            Contents(report, table.table) + "</td></tr>\n";
  }
  EndTable(page);
  EndSection(page);
}

std::string ReportPage(const std::string& name, std::span<const unsigned char> bytes,
                       VESKA::CVMGInfo& info, double field_rate) {
  Findings findings(0);
  Report report{name, bytes, info, MapImage(bytes, findings), field_rate, {}, {}, {}};
  FindBitrates(report);
  AddHead(report);
  AddFacts(report);
  AddFileMap(report);
  AddOriginalChain(report);
  AddPlayLists(report);
  AddUserChains(report);
  AddBitrates(report);
  AddStillGroups(report);
  report.page += R"(</main>
<footer class="note">Made by veska. Programs, cells, play lists, chains and VOBs are numbered from
1. Texts are shown as the disc has them, with \xNN for bytes that are not UTF-8.</footer>
</body>
</html>
)";
  return std::move(report.page);
}

}  // namespace veska_tool
