#include <algorithm>
#include <set>
#include <utility>
#include <vector>

#include "basis/text.h"
#include "check/examined.h"

namespace VESKA::workshop {
namespace {

/// Pairs of tables, or of structures of one table, of which an overlap is reported.
using Overlaps = std::set<std::pair<std::int32_t, std::int32_t>>;

std::uint64_t EndOf(const Structure& structure) { return structure.offset + structure.size; }

std::string WordsOf(const Examined& file, const Structure& structure) {
  return InWords(file.map.PointerOf(structure));
}

void CheckOverlap(Examined& file, const Structure& first, const Structure& second,
                  Overlaps& reported) {
  const bool same_table = first.table == second.table;
  const auto holder = [&](const Structure& structure) {
    return same_table ? structure.parent : -static_cast<std::int32_t>(structure.table);
  };
  if (!reported.emplace(holder(first), holder(second)).second) return;
  file.Report(
      Code::kOverlap, second, second.offset,
      "it starts in " + WordsOf(file, first) + ", which ends at " + std::to_string(EndOf(first)));
}

/// Where structures were not found, or an end address already tells of it, nothing more is said.
void CheckGap(Examined& file, const Structure& first, const Structure& second) {
  if (file.HasErrors(first.table) || file.HasErrors(second.table)) return;
  const bool is_told = first.table != second.table &&
                       file.findings.Count(Severity::kWarning, first.table) != 0 &&
                       file.findings.Count(Code::kEndBehind) != 0;
  if (is_told) return;
  file.Report(Code::kUnusedBytes, first, EndOf(first),
              Plural(second.offset - EndOf(first), "byte") + ", then " + WordsOf(file, second));
}

}  // namespace

void CheckPlacing(Examined& file) {
  std::vector<const Structure*> leaves;
  for (const Structure& structure : file.map.structures) {
    if (structure.size != 0 && ImageMap::IsLeaf(structure.part)) leaves.push_back(&structure);
  }
  std::stable_sort(leaves.begin(), leaves.end(),
                   [](const Structure* a, const Structure* b) { return a->offset < b->offset; });
  Overlaps reported;
  const Structure* last = nullptr;
  for (const Structure* leaf : leaves) {
    if (last != nullptr && leaf->offset < EndOf(*last)) CheckOverlap(file, *last, *leaf, reported);
    if (last != nullptr && leaf->offset > EndOf(*last)) CheckGap(file, *last, *leaf);
    if (last == nullptr || EndOf(*leaf) > EndOf(*last)) last = leaf;
  }
}

}  // namespace VESKA::workshop
