#include "veska/workshop/salvage.h"

#include <algorithm>

#include "salvage/kept.h"

namespace VESKA::workshop {
namespace {

constexpr std::size_t kFindingsOfACode = 100;

/// True for what is read otherwise than it stands, as everything else implies.
bool IsTakenOtherwise(const Finding& finding) {
  constexpr Code kCodes[] = {Code::kTableElsewhere, Code::kElsewhere,        Code::kCountAndRoom,
                             Code::kPresenceValue,  Code::kPresentUncounted, Code::kWrongCellKind};
  return !finding.right.empty() &&
         std::find(std::begin(kCodes), std::end(kCodes), finding.code) != std::end(kCodes);
}

std::string TextOf(const SalvagedTable& table) {
  std::string counts;
  for (const KeptItems& items : table.counts) {
    if (items.all == 0) continue;
    counts += (counts.empty() ? "" : ", ") + std::to_string(items.kept) + " of " +
              std::to_string(items.all) + " " + items.what;
  }
  if (counts.empty()) counts = table.table == Table::kHeader ? "read" : "nothing in it";
  if (table.is_lost) counts = "lost";
  std::string text = std::string(NameOf(table.table)) + ": " + counts + "\n";
  for (const Loss& loss : table.losses) {
    text += "  " + InWords(loss.pointer) + ": " + loss.what;
    if (!loss.reason.empty()) text += ", since " + loss.reason;
    text += "\n";
  }
  return text;
}

}  // namespace

SalvagedTable& Losses::At(Table table) {
  const auto at = std::find_if(tables_.begin(), tables_.end(),
                               [table](const SalvagedTable& one) { return one.table >= table; });
  if (at != tables_.end() && at->table == table) return *at;
  return *tables_.insert(at, {table, false, {}, {}});
}

void Losses::Count(Table table, std::uint64_t kept, std::uint64_t all, const char* what) {
  is_empty_ = is_empty_ && kept == all;
  kept_ += kept;
  auto& counts = At(table).counts;
  auto count = std::find_if(counts.begin(), counts.end(),
                            [what](const KeptItems& one) { return one.what == what; });
  if (count == counts.end()) count = counts.insert(count, {what, 0, 0});
  count->kept += kept;
  count->all += all;
}

void Losses::Add(std::string pointer, std::string what, std::string reason) {
  is_empty_ = false;
  for (const TableInfo& row : kTables) {
    if (row.table == Table::kFile || !IsWithin(pointer, PointerOf(row.table))) continue;
    At(row.table).losses.push_back({std::move(pointer), std::move(what), std::move(reason)});
    return;
  }
}

Salvaged Salvage(std::span<const unsigned char> bytes) {
  Salvaged salvaged;
  const MappedFile file(bytes, kFindingsOfACode);
  if (file.map.structures.empty()) return salvaged;
  Losses losses;
  KeptTables kept = Keep(file, losses);
  MendReferences(kept, losses);
  const bool is_whole = losses.IsEmpty() && file.findings.Count(Severity::kError) == 0;
  if (losses.Kept() != 0 || is_whole) {
    auto info = std::make_unique<CVMGInfo>();
    Bytes image = Write(kept);
    if (info->LoadFromMemory(image.data(), static_cast<unsigned long>(image.size()),
                             CVMGInfo::kLoadAll)) {
      info->AutoComplete();
      salvaged.info = std::move(info);
    }
  }
  salvaged.is_whole = is_whole && salvaged.info != nullptr;
  salvaged.tables = losses.Take();
  for (const Finding& finding : file.findings.Kept()) {
    if (IsTakenOtherwise(finding)) salvaged.otherwise.push_back(finding);
  }
  return salvaged;
}

std::string ToText(const Salvaged& salvaged) {
  if (salvaged.tables.empty()) return "nothing can be read: the file is shorter than its header\n";
  std::string text;
  for (const SalvagedTable& table : salvaged.tables) text += TextOf(table);
  if (!salvaged.otherwise.empty()) text += "contradicts all else, and is taken otherwise:\n";
  for (const Finding& finding : salvaged.otherwise) {
    text += "  " + InWords(finding.pointer) + ": " + finding.stands + ", taken as " +
            finding.right + "\n";
  }
  return text;
}

}  // namespace VESKA::workshop
