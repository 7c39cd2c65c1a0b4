// The drawings of program chains.
#include <algorithm>

#include "basis/units.h"
#include "report/axis.h"
#include "report/charts.h"
#include "report/svg.h"

namespace VESKA::workshop {
namespace {

// Where the rows of the chart lie.
constexpr double kTop = 24;
constexpr double kProgramHeight = 24;
constexpr double kCellTop = kTop + kProgramHeight + 2;
constexpr double kCellHeight = 14;
constexpr double kAxis = kCellTop + kCellHeight + 4;

std::vector<Stretch> CellStretches(const ScaledChain& scaled, int first, int end) {
  std::vector<Stretch> stretches;
  const double origin = scaled.Begin(first);
  for (int i = first; i < end; ++i) {
    const tag_C_ITEM& cell = *scaled.chain.GetCellNode(i);
    const std::string look = cell.CI->GetType() == CELL_MOVIE ? "movie" : "still";
    const std::string name = "cell " + std::to_string(i + 1);
    const double seconds = SecondsOf(cell);
    std::string title = name;
    title += ", " + look;
    if (seconds > 0) title += ", " + DurationText(seconds);
    stretches.push_back(
        {scaled.Begin(i) - origin, scaled.Begin(i + 1) - origin, look, name, std::move(title)});
  }
  return stretches;
}

void DrawPrograms(Svg& svg, const ScaledChain& scaled, double unit) {
  std::vector<Stretch> programs;
  for (std::size_t i = 0; i + 1 < scaled.starts.size(); ++i) {
    const int first = scaled.starts[i];
    const int end = scaled.starts[i + 1];
    if (first == end) continue;
    const std::string name = std::to_string(i + 1);
    programs.push_back({scaled.Begin(first), scaled.Begin(end),
                        i % 2 == 0 ? "program" : "program odd", name, "program " + name});
  }
  DrawStretches(svg, programs, unit, kTop, kProgramHeight);
  for (const Stretch& program : programs) {
    const double width = (program.end - program.begin) * unit;
    if (width < 10 + 8.0 * static_cast<double>(program.name.size())) continue;
    svg.Text("on-bar", program.begin * unit + width / 2, kTop + 17, program.name);
  }
  svg.NewLine();
}

/// A triangle for each mark, with its label where there is room.
void DrawMarks(Svg& svg, const ScaledChain& scaled, const std::vector<ChainMark>& marks,
               double unit, int all) {
  constexpr double kMarkWidth = 8;
  double last = -kMarkWidth;
  double free_from = last;
  for (const ChainMark& mark : marks) {
    const double at = scaled.Begin(mark.cell) * unit;
    if (at - last < kMarkWidth / 2) continue;
    last = at;
    svg.Path("point", "M" + Point(at, kTop - 2) + "l-4 -7h8z", mark.title);
    const double width = 8.0 * static_cast<double>(mark.label.size());
    if (at - width / 2 < free_from) continue;
    svg.Text(at < width         ? "mark from"
             : at > all - width ? "mark to"
                                : "mark",
             at, kTop - 12, mark.label);
    free_from = at + width;
  }
}

}  // namespace

bool HasCellLengths(const CPGCInfo& chain) {
  const auto cells = chain.Cells();
  return std::all_of(cells.begin(), cells.end(),
                     [](const tag_C_ITEM& cell) { return SecondsOf(cell) > 0; });
}

ScaledChain::ScaledChain(const CPGCInfo& of, bool in_time)
    : chain(of), by_time(in_time), begins{0}, starts{0} {
  for (const tag_C_ITEM& cell : of.Cells()) {
    begins.push_back(begins.back() + (by_time ? SecondsOf(cell) : 1));
  }
  for (const tag_PGI& program : of.Programs()) {
    starts.push_back(std::min(starts.back() + program.C_Ns, of.GetCellCount()));
  }
}

std::string CellBar(const ScaledChain& scaled, int first, int end, double full, int width) {
  constexpr int kHeight = 16;
  Svg svg(width, kHeight);
  DrawStretches(svg, CellStretches(scaled, first, end), width / std::max(full, 1e-9), 0, kHeight);
  return svg.End();
}

std::string BarAxis(double full, bool by_time, int width) {
  Svg svg(width, 20);
  DrawAxis(svg, by_time, 6, full, width / std::max(full, 1e-9), 0);
  return svg.End();
}

std::string ChainChart(const ScaledChain& scaled, const std::vector<ChainMark>& marks, int width) {
  const double full = scaled.begins.back();
  const double unit = width / std::max(full, 1e-9);
  Svg svg("chain", width, kAxis + 22, "The programs of the original chain in a row",
          "Programs above, their cells below, drawn to scale. The table below says the same in "
          "numbers.");
  DrawPrograms(svg, scaled, unit);
  DrawStretches(svg, CellStretches(scaled, 0, scaled.chain.GetCellCount()), unit, kCellTop,
                kCellHeight);
  svg.NewLine();
  DrawMarks(svg, scaled, marks, unit, width);
  DrawAxis(svg, scaled.by_time, MarksIn(width), full, unit, kAxis);
  return svg.End();
}

}  // namespace VESKA::workshop
