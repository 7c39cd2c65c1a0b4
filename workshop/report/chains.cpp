// The sections of a report on the program chains and the play lists.
#include <algorithm>

#include "basis/cell_points.h"
#include "report/charts.h"
#include "report/facts.h"
#include "report/html.h"
#include "report/numbers.h"

namespace VESKA::workshop {
namespace {

constexpr int kBarWidth = 430;

std::string LengthNote(bool by_time) {
  return Paragraph(by_time ? "The length of a cell is the time between its two clock values."
                           : "Some cells have no clock values to tell their length by, so all are "
                             "drawn equally long, by number.");
}

std::string CellNumbers(int first, int end) {
  if (end == first) return "none";
  if (end == first + 1) return std::to_string(end);
  return std::to_string(first + 1) + "&ndash;" + std::to_string(end);
}

/// A row of a program, or of the cells behind the last program, which belong to none.
std::string ProgramRow(const Facts& facts, const ScaledChain& scaled, int number, double longest) {
  const int first = scaled.starts[static_cast<std::size_t>(number)];
  const int end = scaled.starts[static_cast<std::size_t>(number) + 1];
  const tag_PGI* program = scaled.chain.GetPGNode(number);
  return (program == nullptr ? "<td></td><th scope=\"row\" class=\"note\">in no program</th>"
                             : NumberCell(number + 1) + RowText(program->text_4, facts.decode)) +
         NumberCell(CellNumbers(first, end)) +
         NumberCell(scaled.by_time ? DurationText(scaled.Length(first, end))
                                   : std::to_string(end - first)) +
         "<td class=\"bar\">" + CellBar(scaled, first, end, longest, kBarWidth) + "</td></tr>\n";
}

/// The programs of some chains as a table with a bar for each, all to one scale.
std::string Programs(const Facts& facts, const std::vector<const CPGCInfo*>& chains, bool by_time,
                     bool chain_numbers, const std::string& caption) {
  std::vector<ScaledChain> all;
  double longest = 0;
  for (const CPGCInfo* chain : chains) {
    ScaledChain& scaled = all.emplace_back(*chain, by_time);
    std::vector<int>& starts = scaled.starts;
    if (starts.back() < chain->GetCellCount()) starts.push_back(chain->GetCellCount());
    for (std::size_t i = 1; i < starts.size(); ++i) {
      longest = std::max(longest, scaled.Length(starts[i - 1], starts[i]));
    }
  }
  std::string rows;
  for (std::size_t chain = 0; chain < all.size(); ++chain) {
    for (int i = 0; i + 1 < static_cast<int>(all[chain].starts.size()); ++i) {
      rows += "<tr>";
      if (chain_numbers) rows += NumberCell(static_cast<int>(chain) + 1);
      rows += ProgramRow(facts, all[chain], i, longest);
    }
  }
  return HtmlTable(
      caption,
      (chain_numbers ? NumberHead("Chain") : "") + NumberHead("No.") + TextHead("Text") +
          NumberHead("Cells") + NumberHead(by_time ? "Length" : "Number") +
          "<th scope=\"col\" class=\"bar\">" + BarAxis(longest, by_time, kBarWidth) + "</th>",
      rows);
}

/// The cells that play lists point at, in order.
std::vector<ChainMark> PlayListMarks(const Facts& facts) {
  std::vector<ChainMark> marks;
  for (int i = 0; i < facts.PlayLists().GetCount(); ++i) {
    const int cell = facts.PlayLists()[i]->cell_point.cell - 1;
    if (cell + 1 == kNoCell || facts.Chain().GetCellNode(cell) == nullptr) continue;
    const std::string number = std::to_string(i + 1);
    marks.push_back({cell, number, "play list " + number});
  }
  std::stable_sort(marks.begin(), marks.end(),
                   [](const ChainMark& a, const ChainMark& b) { return a.cell < b.cell; });
  return marks;
}

/// Where a cell point leads, in the original chain.
std::string Place(const Facts& facts, tag_CELL_POINT point) {
  const CPGCInfo& chain = facts.Chain();
  if (point.cell == kNoCell) return "nowhere";
  std::string place = "cell " + std::to_string(point.cell);
  if (chain.GetCellNode(point.cell - 1) == nullptr) return place + ", which does not exist";
  int end = 0;
  for (int i = 0; i < chain.GetPGCount(); ++i) {
    const tag_PGI* program = chain.GetPGNode(i);
    end += program->C_Ns;
    if (point.cell > end) continue;
    const std::string text = DiscText(program->text_4, kTextLimit, facts.decode);
    return place + " of program " + std::to_string(i + 1) +
           (text.empty() ? "" : ", &ldquo;" + text + "&rdquo;");
  }
  return place;
}

}  // namespace

std::string OriginalChainSection(const Facts& facts) {
  const CPGCInfo& chain = facts.Chain();
  const std::string heading = "Programs and cells";
  if (chain.IsEmpty()) {
    return Section(heading, Paragraph("The original program chain has no cells."));
  }
  const std::vector<ChainMark> marks = PlayListMarks(facts);
  const bool by_time = HasCellLengths(chain);
  return Section(
      heading,
      LengthNote(by_time) +
          Figure(ForBothWidths([&](int width) {
                   return ChainChart(ScaledChain(chain, by_time), marks, width);
                 }),
                 "Programs above and cells below, " +
                     std::string(by_time ? "by time" : "by number") +
                     ": <span class=\"key movie\"></span>movie, <span class=\"key "
                     "still\"></span>still" +
                     (marks.empty() ? "."
                                    : ". A triangle marks the cell that a play list points at.")) +
          Programs(facts, {&chain}, by_time, false, "Programs of the original chain"));
}

std::string PlayListSection(const Facts& facts) {
  const CPlayListSRPTable& play_lists = facts.PlayLists();
  const std::string heading = "Play lists";
  if (play_lists.IsEmpty()) return Section(heading, Paragraph("There are none."));
  std::string rows;
  for (int i = 0; i < play_lists.GetCount(); ++i) {
    rows += "<tr>" + NumberCell(i + 1) + RowText(play_lists[i]->text_8, facts.decode) + "<td>" +
            Place(facts, play_lists[i]->cell_point) + "</td></tr>\n";
  }
  return Section(heading,
                 HtmlTable("Where the play lists point",
                           NumberHead("No.") + TextHead("Text") + TextHead("Points at"), rows));
}

std::string UserChainSection(const Facts& facts) {
  const CUserPGCTable& chains = facts.info.GetUserPGCTable();
  if (chains.IsEmpty()) return {};
  std::vector<const CPGCInfo*> shown;
  bool by_time = true;
  for (int rows = 0, i = 0; i < chains.GetCount() && rows < kMostRows; ++i) {
    shown.push_back(&chains[i]->UD_PGCI);
    rows += shown.back()->GetPGCount();
    by_time = by_time && HasCellLengths(*shown.back());
  }
  return Section("User-defined chains",
                 LengthNote(by_time) +
                     Programs(facts, shown, by_time, true, "Programs of the user-defined chains") +
                     RestOf(chains.GetCount(), static_cast<int>(shown.size()), "chain"));
}

}  // namespace VESKA::workshop
