// The drawings of program chains.
#include <algorithm>

#include "report_charts.h"
#include "svg.h"
#include "units.h"

namespace veska_tool {
namespace {

/// The time between the clock values of a movie cell; 0 when it has none.
double SecondsOf(VESKA::CBaseCell& cell) {
  if (cell.GetType() != VESKA::CELL_MOVIE) return 0;
  const VESKA::tag_M_C_GI& header = static_cast<VESKA::CMovieCell&>(cell).GetHeader();
  if (header.time_12.base <= header.time_6.base) return 0;
  return (header.time_12.base - header.time_6.base) / kClockRate;
}

std::vector<Stretch> CellStretches(VESKA::CPGCInfo& chain, const std::vector<double>& begins,
                                   int first, int end) {
  std::vector<Stretch> stretches;
  const double origin = begins[static_cast<std::size_t>(first)];
  for (int i = first; i < end; ++i) {
    VESKA::CBaseCell& cell = *chain.GetCellNode(i)->CI;
    const bool is_movie = cell.GetType() == VESKA::CELL_MOVIE;
    const std::string name = "cell " + std::to_string(i + 1);
    const double seconds = SecondsOf(cell);
    const auto at = static_cast<std::size_t>(i);
    stretches.push_back({begins[at] - origin, begins[at + 1] - origin, is_movie ? "movie" : "still",
                         name,
                         name + (is_movie ? ", movie" : ", still") +
                             (seconds > 0 ? ", " + DurationText(seconds) : "")});
  }
  return stretches;
}

}  // namespace

bool HasCellLengths(VESKA::CPGCInfo& chain) {
  for (int i = 0; i < chain.GetCellCount(); ++i) {
    if (SecondsOf(*chain.GetCellNode(i)->CI) == 0) return false;
  }
  return true;
}

std::vector<double> CellBegins(VESKA::CPGCInfo& chain, bool by_time) {
  std::vector<double> begins = {0};
  for (int i = 0; i < chain.GetCellCount(); ++i) {
    begins.push_back(begins.back() + (by_time ? SecondsOf(*chain.GetCellNode(i)->CI) : 1));
  }
  return begins;
}

std::string CellBar(VESKA::CPGCInfo& chain, const std::vector<double>& begins, int first, int end,
                    double full, int width) {
  constexpr int kHeight = 16;
  Svg svg(width, kHeight);
  DrawStretches(svg, CellStretches(chain, begins, first, end), width / std::max(full, 1e-9), 0,
                kHeight);
  return svg.End();
}

std::vector<int> ProgramStarts(VESKA::CPGCInfo& chain) {
  std::vector<int> starts{0};
  for (int i = 0; i < chain.GetPGCount(); ++i) {
    starts.push_back(std::min(starts.back() + chain.GetPGNode(i)->C_Ns, chain.GetCellCount()));
  }
  return starts;
}

std::string BarAxis(double full, bool by_time, int width) {
  Svg svg(width, 20);
  const std::vector<double> marks = by_time ? TimeMarks(full, 6) : CountMarks(full, 6);
  DrawAxis(svg, marks, full, 0, width / std::max(full, 1e-9), 0,
           [&](double mark) { return by_time ? TimeMark(mark, marks) : Decimal(mark, 0); });
  return svg.End();
}

std::string ChainChart(VESKA::CPGCInfo& chain, bool by_time, const std::vector<ChainMark>& marks) {
  const std::vector<double> begins = CellBegins(chain, by_time);
  constexpr double kTop = 24;
  constexpr double kProgramHeight = 24;
  constexpr double kCellHeight = 14;
  constexpr double kAxis = kTop + kProgramHeight + 2 + kCellHeight + 4;
  const double full = begins.back();
  const double unit = kChartWidth / std::max(full, 1e-9);
  Svg svg("chain", kChartWidth, kAxis + 22, "The programs of the original chain in a row",
          "Programs above, their cells below, drawn to scale. The table below says the same in "
          "numbers.");

  std::vector<Stretch> programs;
  const std::vector<int> starts = ProgramStarts(chain);
  for (std::size_t i = 0; i + 1 < starts.size(); ++i) {
    if (starts[i] == starts[i + 1]) continue;
    const std::string name = std::to_string(i + 1);
    programs.push_back({begins[static_cast<std::size_t>(starts[i])],
                        begins[static_cast<std::size_t>(starts[i + 1])],
                        i % 2 == 0 ? "program" : "program odd", name, "program " + name});
  }
  DrawStretches(svg, programs, unit, kTop, kProgramHeight);
  for (const Stretch& program : programs) {
    const double width = (program.end - program.begin) * unit;
    if (width < 10 + 8.0 * static_cast<double>(program.name.size())) continue;
    svg.Text("on-bar", program.begin * unit + width / 2, kTop + 17, program.name);
  }
  svg.NewLine();
  DrawStretches(svg, CellStretches(chain, begins, 0, chain.GetCellCount()), unit,
                kTop + kProgramHeight + 2, kCellHeight);
  svg.NewLine();

  constexpr double kMarkWidth = 8;
  double last = -kMarkWidth;
  double free_from = last;
  for (const ChainMark& mark : marks) {
    const double at = begins[static_cast<std::size_t>(mark.cell)] * unit;
    if (at - last < kMarkWidth / 2) continue;
    last = at;
    svg.Path("point", "M" + Coordinate(at) + " " + Coordinate(kTop - 2) + "l-4 -7h8z", mark.title);
    const double width = 8.0 * static_cast<double>(mark.label.size());
    if (at - width / 2 < free_from) continue;
    svg.Text(at < width                 ? "mark from"
             : at > kChartWidth - width ? "mark to"
                                        : "mark",
             at, kTop - 12, mark.label);
    free_from = at + width;
  }
  const std::vector<double> axis = by_time ? TimeMarks(full, 10) : CountMarks(full, 10);
  DrawAxis(svg, axis, full, 0, unit, kAxis,
           [&](double mark) { return by_time ? TimeMark(mark, axis) : Decimal(mark, 0); });
  return svg.End();
}

}  // namespace veska_tool
