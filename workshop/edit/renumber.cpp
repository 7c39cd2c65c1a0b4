#include "edit/renumber.h"

#include "basis/cell_points.h"

namespace VESKA::workshop {
namespace {

/// The number that each cell will have, by its present position; `kNoCell` for those that go.
std::vector<std::uint16_t> NewNumbers(int count, const std::vector<int>& new_order) {
  std::vector<std::uint16_t> numbers(static_cast<std::size_t>(count), kNoCell);
  for (std::size_t i = 0; i < new_order.size(); ++i) {
    numbers[static_cast<std::size_t>(new_order[i])] = static_cast<std::uint16_t>(i + 1);
  }
  return numbers;
}

}  // namespace

std::vector<LostReference> Renumber(CVMGInfo& info, const CPGCInfo& chain,
                                    const std::vector<int>& new_order) {
  const std::vector<std::uint16_t> numbers = NewNumbers(chain.GetCellCount(), new_order);
  std::vector<LostReference> lost;
  ForEachCellPoint(info, [&](tag_CELL_POINT& point, const CellPointHolder& holder) {
    const std::uint16_t number = point.cell;
    if (holder.chain != &chain || NamedCell(chain, number) == nullptr) return;
    point.cell = numbers[number - 1U];
    if (point.cell != kNoCell) return;
    lost.push_back({HolderText(holder), number});
    if (holder.HasNumbers() && NamesMovieCell(chain, number)) ConvertPosition(point);
  });
  return lost;
}

}  // namespace VESKA::workshop
