#include "cell_points.h"

#include <cstddef>

#include "fields.h"

namespace veska_tool {
namespace {

using VESKA::tag_CELL_POINT;

/// Calls `convert(bytes, width)` for both numbers of a position.
template <class Convert>
void ForBothNumbers(tag_CELL_POINT& point, Convert&& convert) {
  auto* bytes = reinterpret_cast<unsigned char*>(&point);
  convert(bytes + offsetof(tag_CELL_POINT, position), unsigned{sizeof point.position});
  convert(bytes + offsetof(tag_CELL_POINT, position_ext), unsigned{sizeof point.position_ext});
}

}  // namespace

void VisitCellPoints(VESKA::CVMGInfo& info, const CellPointVisit& visit) {
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

void PositionToFileBytes(tag_CELL_POINT& point) {
  ForBothNumbers(point, [](unsigned char* at, unsigned width) {
    SetBigEndian(at, width, GetNumber(at, width));
  });
}

void PositionToNumbers(tag_CELL_POINT& point) {
  ForBothNumbers(point, [](unsigned char* at, unsigned width) {
    SetNumber(at, width, GetBigEndian(at, width));
  });
}

}  // namespace veska_tool
