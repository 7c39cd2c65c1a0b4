/// The cell points of a file: where they are, and which cells they name.
#pragma once

#include <veska/CVMGInfo.h>
#include <veska/layouts.h>
#include <veska/records.h>

#include <cstdint>
#include <type_traits>

namespace VESKA {

/// The number of a cell point that names no cell. So the 65,535th cell of a chain, which a chain
/// can have, has no number.
inline constexpr std::uint16_t kNoCell = 0xFFFF;

/// The cell that `number`, which counts from 1, names in `chain`; null for 0, `kNoCell` and what is
/// past the last cell.
inline const tag_C_ITEM* NamedCell(const CPGCInfo& chain, std::uint16_t number) {
  return number == kNoCell ? nullptr : chain.GetCellNode(number - 1);
}

/// True when `number` names a movie cell of `chain`.
inline bool NamesMovieCell(const CPGCInfo& chain, std::uint16_t number) {
  const tag_C_ITEM* cell = NamedCell(chain, number);
  return cell != nullptr && cell->CI->GetType() == CELL_MOVIE;
}

/// What holds a cell point.
struct CellPointHolder {
  /// Where it stands.
  enum Kind : int { kHeader, kPlayList, kProgram };
  Kind kind;
  int index;              ///< position of the play list, or of the program in its chain, from 0
  int user_chain;         ///< position of the program's user-defined chain, from 0; else -1
  const CPGCInfo* chain;  ///< the chain whose cells the point counts: that of the program in a
                          ///< user-defined chain, else the original one
  const Field* field;     ///< of the record that holds the point

  /// True when the point's position stands in memory as two numbers where it names a movie cell.
  /// In user-defined chains it is the bytes of the file whatever it names.
  bool HasNumbers() const { return user_chain < 0; }
};

/// Calls `visit(point, holder)` for every cell point of a file: those of the header, of the play
/// lists, of the programs of the original chain and of those of the user-defined chains, in this
/// order. `point` is a `tag_CELL_POINT&`, constant where `info` is. The lists are not to change
/// meanwhile.
template <class Info, class Visit>
void ForEachCellPoint(Info& info, const Visit& visit) {
  using Point = std::conditional_t<std::is_const_v<Info>, const tag_CELL_POINT, tag_CELL_POINT>;
  using Byte = std::conditional_t<std::is_const_v<Info>, const unsigned char, unsigned char>;
  const auto visit_record = [&visit](auto& record, CellPointHolder holder) {
    for (const Field& field : kFields<std::remove_cvref_t<decltype(record)>>) {
      if (field.kind != FieldKind::kCellPoint) continue;
      holder.field = &field;
      visit(*reinterpret_cast<Point*>(reinterpret_cast<Byte*>(&record) + field.offset), holder);
    }
  };
  const auto visit_programs = [&](auto& chain, int user_chain) {
    for (int i = 0; i < chain.GetPGCount(); ++i) {
      visit_record(*chain.GetPGNode(i),
                   {CellPointHolder::kProgram, i, user_chain, &chain, nullptr});
    }
  };
  const CPGCInfo* original = &info.GetOriginalPGC();
  visit_record(info.GetMAT().GetHeader(), {CellPointHolder::kHeader, 0, -1, original, nullptr});
  auto& play_lists = info.GetMAT().GetPlayListTable();
  for (int i = 0; i < play_lists.GetCount(); ++i) {
    visit_record(*play_lists[i], {CellPointHolder::kPlayList, i, -1, original, nullptr});
  }
  visit_programs(info.GetOriginalPGC(), -1);
  auto& user_chains = info.GetUserPGCTable();
  for (int i = 0; i < user_chains.GetCount(); ++i) visit_programs(user_chains[i]->UD_PGCI, i);
}

}  // namespace VESKA
