#include "renumber.h"

#include "cell_points.h"

namespace veska_tool {
namespace {

using VESKA::tag_CELL_POINT;

/// The number that each cell will have, by its present position; `kNoCell` for those that go.
std::vector<std::uint16_t> NewNumbers(int count, const std::vector<int>& new_order) {
  std::vector<std::uint16_t> numbers(static_cast<std::size_t>(count), kNoCell);
  for (std::size_t i = 0; i < new_order.size(); ++i) {
    numbers[static_cast<std::size_t>(new_order[i])] = static_cast<std::uint16_t>(i + 1);
  }
  return numbers;
}

}  // namespace

std::vector<LostReference> Renumber(VESKA::CVMGInfo& info, const std::vector<int>& new_order) {
  VESKA::CPGCInfo& chain = info.GetOriginalPGC();
  const std::vector<std::uint16_t> numbers = NewNumbers(chain.GetCellCount(), new_order);
  std::vector<LostReference> lost;
  VisitCellPoints(info, [&](tag_CELL_POINT& point, const std::string& holder, bool converts) {
    const std::uint16_t number = point.cell;
    if (number == 0 || number == kNoCell || number > numbers.size()) return;

    point.cell = numbers[number - 1U];
    if (point.cell != kNoCell) return;
    lost.push_back({holder, number});
    const bool is_number =
        converts && chain.GetCellNode(number - 1)->CI->GetType() == VESKA::CELL_MOVIE;
    if (is_number) PositionToFileBytes(point);
  });
  return lost;
}

}  // namespace veska_tool
