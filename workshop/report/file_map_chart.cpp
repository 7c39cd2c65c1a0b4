// The drawing of the file map.
#include <algorithm>

#include "basis/tables.h"
#include "report/axis.h"
#include "report/charts.h"
#include "report/svg.h"

namespace VESKA::workshop {
namespace {

/// The structures in the order in which they lie, each cut where the next one starts.
std::vector<Stretch> FileStretches(const ImageMap& map, bool tables) {
  std::vector<std::size_t> order;
  for (std::size_t i = 0; i < map.structures.size(); ++i) {
    const Structure& structure = map.structures[i];
    if (structure.size == 0) continue;
    if (tables ? IsWholeTable(structure) : ImageMap::IsLeaf(structure.part)) order.push_back(i);
  }
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    return map.structures[a].offset < map.structures[b].offset;
  });
  std::vector<Stretch> stretches;
  for (const std::size_t i : order) {
    const Structure& structure = map.structures[i];
    const auto begin = static_cast<double>(structure.offset);
    const double end = begin + static_cast<double>(structure.size);
    if (!stretches.empty() && stretches.back().end > begin) stretches.back().end = begin;
    const std::string name = tables ? InfoOf(structure.table).name
                                    : InWords(map.PointerOf(static_cast<std::int32_t>(i)));
    const std::string look = tables || stretches.size() % 2 == 0 ? "" : " odd";
    stretches.push_back(
        {begin, end, LookOf(structure.table) + look, name,
         name + ": " + SizeText(structure.size) + " at " + Grouped(structure.offset)});
  }
  return stretches;
}

}  // namespace

bool IsWholeTable(const Structure& structure) {
  const bool is_table = structure.part == Part::kTable || structure.part == Part::kFileHeader;
  return is_table && structure.size != 0;
}

std::string LookOf(Table table) { return "t" + std::to_string(static_cast<int>(table)); }

std::string FileMapChart(const ImageMap& map, std::uint64_t size, int width) {
  constexpr double kTop = 8;
  constexpr double kTableHeight = 40;
  constexpr double kPartHeight = 18;
  constexpr double kAxis = kTop + kTableHeight + 3 + kPartHeight + 4;
  const auto bytes = static_cast<double>(size);
  const double scale = width / std::max(bytes, 1.0);

  Svg svg("map", width, kAxis + 22, "Map of the file",
          "Which table lies where in the file, to scale. The table below says "
          "the same in numbers.");
  svg.Rect("unused", 0, kTop, width, kTableHeight + 3 + kPartHeight, "used by no table");
  const std::vector<Stretch> tables = FileStretches(map, true);
  DrawStretches(svg, tables, scale, kTop, kTableHeight);
  for (const Stretch& table : tables) {
    const double room = (table.end - table.begin) * scale;
    if (room < 8.0 * static_cast<double>(table.name.size())) continue;
    svg.Text("on-bar", table.begin * scale + room / 2, kTop + kTableHeight / 2 + 5, table.name);
  }
  svg.NewLine();
  DrawStretches(svg, FileStretches(map, false), scale, kTop + kTableHeight + 3, kPartHeight);
  svg.NewLine();
  DrawAxis(svg, CountMarks(bytes, MarksIn(width)), bytes, 0, scale, kAxis, [](double mark) {
    return Grouped(static_cast<std::uint64_t>(mark)) + (mark == 0 ? " bytes" : "");
  });
  return svg.End();
}

}  // namespace VESKA::workshop
