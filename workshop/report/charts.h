// The drawings of a report: SVG that takes its colours from the page's style sheet.
#pragma once

#include <veska/CPGCInfo.h>
#include <veska/workshop/bitrate.h>

#include <cstdint>
#include <string>
#include <vector>

#include "map/map.h"

namespace VESKA::workshop {

/// The widths of the drawings that fill the page, in units of about a pixel: each is drawn for a
/// page and for a phone, and the style sheet shows the one that fits.
inline constexpr int kPageWidth = 960;
inline constexpr int kPhoneWidth = 342;
template <class Draw>
std::string ForBothWidths(const Draw& draw) {
  return draw(kPageWidth) + draw(kPhoneWidth);
}
/// How many marks an axis of that width has room for.
inline int MarksIn(int width) { return width / 90; }

/// True for the tables and the header, where they are found.
bool IsWholeTable(const Structure& structure);
/// The class of the style sheet for what belongs to a table.
std::string LookOf(Table table);

/// The structures of a file of `size` bytes to scale: the tables, what they are made of, and an
/// axis in bytes. Structures too small to be seen are drawn together.
std::string FileMapChart(const ImageMap& map, std::uint64_t size, int width);

/// True when every cell of a chain has a length: the time between its two clock values.
bool HasCellLengths(const CPGCInfo& chain);

/// A chain on an axis: in seconds when `by_time`, else by number, which draws all cells equally
/// long.
struct ScaledChain {
  const CPGCInfo& chain;
  bool by_time;
  std::vector<double> begins;  ///< where each cell begins, and where the last one ends
  std::vector<int> starts;  ///< the programs' first cells and their end, as far as there are cells

  ScaledChain(const CPGCInfo& of, bool in_time);

  double Begin(int cell) const { return begins[static_cast<std::size_t>(cell)]; }
  double Length(int first, int end) const { return Begin(end) - Begin(first); }
};

/// Cells `first` to `end` - 1 of a chain as a bar; `width` units are worth `full` of the axis.
std::string CellBar(const ScaledChain& scaled, int first, int end, double full, int width);
/// The axis above bars of that width.
std::string BarAxis(double full, bool by_time, int width);

/// Something that points at a cell.
struct ChainMark {
  int cell;  ///< 0-based
  std::string label;
  std::string title;
};
/// The programs of a chain in a row, to scale, with marks at what points at their cells.
std::string ChainChart(const ScaledChain& scaled, const std::vector<ChainMark>& marks, int width);

/// The bitrate of a VOB over time. The axis reaches up to `top` Mbit/s.
std::string BitrateChart(const Bitrate& bitrate, double top, int number, int width);

}  // namespace VESKA::workshop
