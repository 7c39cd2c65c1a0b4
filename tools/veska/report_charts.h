// The drawings of a report: SVG that takes its colours from the page's style sheet.
#pragma once

#include <veska/CPGCInfo.h>

#include <cstdint>
#include <string>
#include <vector>

#include "bitrate.h"
#include "image_map.h"

namespace veska_tool {

/// The width of the drawings that fill the page, in units of about a pixel.
inline constexpr int kChartWidth = 960;

/// True for the tables and the header, where they are found.
bool IsWholeTable(const Structure& structure);
/// The class of the style sheet for what belongs to a table.
std::string LookOf(Table table);

/// The structures of a file of `size` bytes to scale: the tables, what they are made of, and an
/// axis in bytes. Structures too small to be seen are drawn together.
std::string FileMapChart(const ImageMap& map, std::uint64_t size);

/// True when every cell of a chain has a length: the time between its two clock values.
bool HasCellLengths(VESKA::CPGCInfo& chain);
/// Where each cell of a chain begins on an axis, and where the last one ends: by their lengths in
/// seconds, or by their number, which draws all equally long.
std::vector<double> CellBegins(VESKA::CPGCInfo& chain, bool by_time);
/// The positions of the programs' first cells, and behind the last program's, as far as there are
/// cells.
std::vector<int> ProgramStarts(VESKA::CPGCInfo& chain);

/// Cells `first` to `end` - 1 of a chain as a bar; `width` units are worth `full` of the axis.
std::string CellBar(VESKA::CPGCInfo& chain, const std::vector<double>& begins, int first, int end,
                    double full, int width);
/// The axis above bars of that width.
std::string BarAxis(double full, bool by_time, int width);

/// Something that points at a cell.
struct ChainMark {
  int cell;  ///< 0-based
  std::string label;
  std::string title;
};
/// The programs of a chain in a row, to scale, with marks at what points at their cells.
std::string ChainChart(VESKA::CPGCInfo& chain, bool by_time, const std::vector<ChainMark>& marks);

/// The bitrate of a VOB over time. The axis reaches up to `top` Mbit/s.
std::string BitrateChart(const Bitrate& bitrate, double top, int number);

}  // namespace veska_tool
