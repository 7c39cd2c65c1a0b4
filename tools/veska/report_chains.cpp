// The sections of a report on the program chains and the play lists.
#include <algorithm>
#include <vector>

#include "cell_points.h"
#include "html.h"
#include "report_charts.h"
#include "report_parts.h"

namespace veska_tool {
namespace {

constexpr int kBarWidth = 430;

constexpr const char* kByTime = "The length of a cell is the time between its two clock values.";
constexpr const char* kByNumber =
    "Some cells have no clock values to tell their length by, so all are drawn equally long, by "
    "number.";

/// The programs of a chain with the positions of their first cells and of the end; behind the last
/// program the cells that belong to none, if any.
struct ChainRows {
  VESKA::CPGCInfo& chain;
  std::vector<double> begins;
  std::vector<int> starts;

  ChainRows(VESKA::CPGCInfo& of, bool by_time)
      : chain(of), begins(CellBegins(of, by_time)), starts(ProgramStarts(of)) {
    const int cells = chain.GetCellCount();
    if (starts.back() < cells) starts.push_back(cells);
  }

  std::size_t Count() const { return starts.size() - 1; }
  double Length(std::size_t i) const {
    return begins[static_cast<std::size_t>(starts[i + 1])] -
           begins[static_cast<std::size_t>(starts[i])];
  }
};

std::string CellNumbers(int first, int end) {
  if (end == first) return "none";
  if (end == first + 1) return std::to_string(end);
  return std::to_string(first + 1) + "&ndash;" + std::to_string(end);
}

void AddProgramRow(std::string& page, const ChainRows& rows, std::size_t i, bool by_time,
                   double longest) {
  const int first = rows.starts[i];
  const int end = rows.starts[i + 1];
  VESKA::tag_PGI* program = rows.chain.GetPGNode(static_cast<int>(i));
  page += program == nullptr ? "<td></td><th scope=\"row\" class=\"note\">in no program</th>"
                             : NumberCell(static_cast<int>(i) + 1) + RowText(program->text_4);
  page += NumberCell(CellNumbers(first, end));
  page += NumberCell(by_time ? DurationText(rows.Length(i)) : std::to_string(end - first));
  page += "<td class=\"bar\">" + CellBar(rows.chain, rows.begins, first, end, longest, kBarWidth) +
          "</td></tr>\n";
}

/// The programs of some chains as a table with a bar for each, all to one scale.
void AddPrograms(std::string& page, const std::vector<VESKA::CPGCInfo*>& chains, bool by_time,
                 bool chain_numbers, const std::string& caption) {
  std::vector<ChainRows> all;
  double longest = 0;
  for (VESKA::CPGCInfo* chain : chains) {
    all.emplace_back(*chain, by_time);
    for (std::size_t i = 0; i < all.back().Count(); ++i) {
      longest = std::max(longest, all.back().Length(i));
    }
  }
  StartTable(page, caption,
             std::string(chain_numbers ? NumberHead("Chain") : "") + NumberHead("No.") +
                 TextHead("Text") + NumberHead("Cells") +
                 NumberHead(by_time ? "Length" : "Number") + "<th scope=\"col\" class=\"bar\">" +
                 BarAxis(longest, by_time, kBarWidth) + "</th>");
  for (std::size_t chain = 0; chain < all.size(); ++chain) {
    for (std::size_t i = 0; i < all[chain].Count(); ++i) {
      page += "<tr>";
      if (chain_numbers) page += NumberCell(static_cast<int>(chain) + 1);
      AddProgramRow(page, all[chain], i, by_time, longest);
    }
  }
  EndTable(page);
}

/// The cells that play lists point at, in order.
std::vector<ChainMark> PlayListMarks(Report& report) {
  std::vector<ChainMark> marks;
  for (int i = 0; i < report.PlayLists().GetCount(); ++i) {
    const int cell = report.PlayLists()[i]->cell_point.cell - 1;
    if (cell + 1 == kNoCell || report.Chain().GetCellNode(cell) == nullptr) continue;
    const std::string number = std::to_string(i + 1);
    marks.push_back({cell, number, "play list " + number});
  }
  std::stable_sort(marks.begin(), marks.end(),
                   [](const ChainMark& a, const ChainMark& b) { return a.cell < b.cell; });
  return marks;
}

/// Where a cell point leads, in the original chain.
std::string Place(Report& report, VESKA::tag_CELL_POINT point) {
  VESKA::CPGCInfo& chain = report.Chain();
  if (point.cell == kNoCell) return "nowhere";
  if (chain.GetCellNode(point.cell - 1) == nullptr) {
    return "cell " + std::to_string(point.cell) + ", which does not exist";
  }
  std::string place = "cell " + std::to_string(point.cell);
  int end = 0;
  for (int i = 0; i < chain.GetPGCount(); ++i) {
    VESKA::tag_PGI* program = chain.GetPGNode(i);
    end += program->C_Ns;
    if (point.cell > end) continue;
    const std::string text = DiscText(program->text_4, kTextLimit);
    return place + " of program " + std::to_string(i + 1) +
           (text.empty() ? "" : ", &ldquo;" + text + "&rdquo;");
  }
  return place;
}

}  // namespace

void AddOriginalChain(Report& report) {
  std::string& page = report.page;
  VESKA::CPGCInfo& chain = report.Chain();
  StartSection(page, "Programs and cells");
  if (chain.IsEmpty()) {
    AddParagraph(page, "The original program chain has no cells.");
    EndSection(page);
    return;
  }
  const std::vector<ChainMark> marks = PlayListMarks(report);
  const bool by_time = HasCellLengths(chain);
  AddParagraph(page, by_time ? kByTime : kByNumber);
  AddFigure(page, ChainChart(chain, by_time, marks),
            "Programs above and cells below, " + std::string(by_time ? "by time" : "by number") +
                ": <span class=\"key movie\"></span>movie, <span class=\"key still\"></span>still" +
                (marks.empty() ? "." : ". A triangle marks the cell that a play list points at."));
  AddPrograms(page, {&chain}, by_time, false, "Programs of the original chain");
  EndSection(page);
}

void AddPlayLists(Report& report) {
  std::string& page = report.page;
  VESKA::CPlayListSRPTable& play_lists = report.PlayLists();
  StartSection(page, "Play lists");
  if (play_lists.IsEmpty()) {
    AddParagraph(page, "There are none.");
  } else {
    StartTable(page, "Where the play lists point",
               NumberHead("No.") + TextHead("Text") + TextHead("Points at"));
    for (int i = 0; i < play_lists.GetCount(); ++i) {
      page += "<tr>" + NumberCell(i + 1) + RowText(play_lists[i]->text_8) + "<td>" +
              Place(report, play_lists[i]->cell_point) + "</td></tr>\n";
    }
    EndTable(page);
  }
  EndSection(page);
}

void AddUserChains(Report& report) {
  VESKA::CUserPGCTable& chains = report.info.GetUserPGCTable();
  if (chains.IsEmpty()) return;
  std::string& page = report.page;
  StartSection(page, "User-defined chains");
  std::vector<VESKA::CPGCInfo*> shown;
  bool by_time = true;
  for (int rows = 0, i = 0; i < chains.GetCount() && rows < kMostRows; ++i) {
    shown.push_back(&chains[i]->UD_PGCI);
    rows += shown.back()->GetPGCount();
    by_time = by_time && HasCellLengths(*shown.back());
  }
  AddParagraph(page, by_time ? kByTime : kByNumber);
  AddPrograms(page, shown, by_time, true, "Programs of the user-defined chains");
  SayRest(page, chains.GetCount(), static_cast<int>(shown.size()), "chain");
  EndSection(page);
}

}  // namespace veska_tool
