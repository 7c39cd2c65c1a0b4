#include "check/examined.h"

#include <utility>

namespace VESKA::workshop {
namespace {

TableSummary SummaryOf(const Examined& file, Table table) {
  TableSummary summary{table};
  const Structure* structure = file.map.TableOf(table);
  if (structure != nullptr) {
    summary.offset = structure->offset;
    summary.size = structure->size;
    summary.condition = structure->state == State::kLost ? Condition::kLost
                        : file.HasErrors(table)          ? Condition::kDamaged
                                                         : Condition::kSound;
  }
  for (const Structure& item : file.map.structures) {
    if (item.table != table || !InfoOf(item.part).is_item) continue;
    const bool is_run = InfoOf(item.part).role == Role::kRun;
    summary.items += is_run ? item.count : 1;
    summary.readable += is_run ? item.count : item.state == State::kWhole ? 1 : 0;
  }
  return summary;
}

}  // namespace

void Examined::Report(Code code, const Structure& structure, std::uint64_t offset,
                      std::string stands, std::string right, std::uint32_t number) {
  findings.Add({code, structure.table, map.PointerOf(structure, number), offset, std::move(stands),
                std::move(right)});
}

Examined Examine(std::span<const unsigned char> bytes, std::size_t limit) {
  Examined file(bytes, limit);
  if (!file.map.structures.empty()) {
    CheckPlacing(file);
    CheckContents(file);
    CheckReferences(file);
  }
  CheckLoading(file);
  file.findings.Sort();
  return file;
}

const char* NameOf(Condition condition) {
  constexpr const char* kNames[] = {"absent", "sound", "damaged", "lost"};
  return kNames[static_cast<std::size_t>(condition)];
}

Examination Check(std::span<const unsigned char> bytes, std::size_t limit) {
  const Examined file = Examine(bytes, limit != 0 ? limit : ~std::size_t{0});
  const Findings& findings = file.findings;
  Examination examination{bytes.size(),
                          file.loads,
                          findings.Count(Severity::kError),
                          findings.Count(Severity::kWarning),
                          findings.Count(Severity::kNote),
                          {},
                          {findings.Kept().begin(), findings.Kept().end()},
                          {}};
  for (const TableInfo& row : kTables) {
    if (row.table != Table::kFile) examination.tables.push_back(SummaryOf(file, row.table));
  }
  for (const CatalogueEntry& entry : Catalogue()) {
    if (const auto omitted = findings.Omitted(entry.code))
      examination.omitted[entry.code] = omitted;
  }
  return examination;
}

}  // namespace VESKA::workshop
