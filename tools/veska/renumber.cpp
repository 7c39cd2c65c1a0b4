#include "renumber.h"

#include <cstring>

namespace veska_tool {
namespace {

using VESKA::tag_CELL_POINT;

/// Calls `visit(cell point, its holder, whether the file object converts its position)` for every
/// cell point of the file.
template <class Visit>
void VisitCellPoints(VESKA::CVMGInfo& info, Visit&& visit) {
  VESKA::tag_VMGI_MAT_HEADER& header = info.GetMAT().GetHeader();
  visit(header.cell_point_70, "header, cell point at 70", true);
  visit(header.cell_point_85, "header, cell point at 85", true);

  VESKA::CPlayListSRPTable& play_lists = info.GetMAT().GetPlayListTable();
  for (int i = 0; i < play_lists.GetCount(); ++i) {
    visit(play_lists[i]->cell_point, "play list " + std::to_string(i + 1), true);
  }

  const auto visit_programs = [&](VESKA::CPGCInfo& chain, const std::string& of, bool converts) {
    for (int i = 0; i < chain.GetPGCount(); ++i) {
      visit(chain.GetPGNode(i)->cell_point, of + "program " + std::to_string(i + 1), converts);
    }
  };
  visit_programs(info.GetOriginalPGC(), "", true);
  VESKA::CUserPGCTable& user_chains = info.GetUserPGCTable();
  for (int i = 0; i < user_chains.GetCount(); ++i) {
    const std::string of = "user chain " + std::to_string(i + 1) + ", ";
    visit_programs(user_chains[i]->UD_PGCI, of, false);
  }
}

/// Stores the low bytes of `value` at `to` as a file does, the highest first.
void StoreBigEndian(unsigned char* to, unsigned bytes, std::uint32_t value) {
  for (unsigned i = 0; i < bytes; ++i) {
    to[i] = static_cast<unsigned char>(value >> (8 * (bytes - 1 - i)));
  }
}

void PositionToFileBytes(tag_CELL_POINT& point) {
  const tag_CELL_POINT numbers = point;
  auto* bytes = reinterpret_cast<unsigned char*>(&point);
  StoreBigEndian(bytes + offsetof(tag_CELL_POINT, position), 4, numbers.position);
  StoreBigEndian(bytes + offsetof(tag_CELL_POINT, position_ext), 2, numbers.position_ext);
}

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
