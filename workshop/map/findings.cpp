#include "map/findings.h"

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>

namespace VESKA::workshop {
namespace {

constexpr CatalogueEntry kCatalogue[] = {
    // The file as a whole.
    {Code::kShortFile, Severity::kError, "file", "the file is shorter than its header"},
    {Code::kIdentifier, Severity::kError, "header", "the identifier is not DVD_RTR_VMG0"},
    {Code::kDoesNotLoad, Severity::kError, "any", "the table cannot be loaded"},
    {Code::kFileCutOff, Severity::kError, "header", "the file ends before its end address"},
    {Code::kFileEnd, Severity::kError, "header",
     "the file's end address is not that of its last structure"},
    {Code::kPadding, Severity::kNote, "file", "zero bytes follow the end of the data"},
    {Code::kBytesBehind, Severity::kWarning, "file", "bytes follow the end of the data"},
    {Code::kTooMuchShared, Severity::kError, "any",
     "so many structures share their bytes that the examination stopped"},
    // Addresses.
    {Code::kTableElsewhere, Severity::kError, "header",
     "the table does not start where the header says"},
    {Code::kAddressOutside, Severity::kError, "any",
     "the start address names no place for a structure"},
    {Code::kOverlap, Severity::kError, "any", "structures overlap"},
    {Code::kElsewhere, Severity::kError, "any",
     "the structure does not start where its address says"},
    {Code::kOrder, Severity::kWarning, "any",
     "the structures stand in another order than their addresses"},
    {Code::kUnusedBytes, Severity::kWarning, "any", "bytes belong to no structure"},
    {Code::kEndTooLow, Severity::kError, "any",
     "the end address lies before the end of the last structure"},
    {Code::kEndTooHigh, Severity::kError, "any",
     "the end address lies in the next table or past the end of the file"},
    {Code::kEndBehind, Severity::kWarning, "any", "the end address lies after the last structure"},
    {Code::kTableMissing, Severity::kWarning, "header",
     "a table that is always written is missing"},
    {Code::kChainMissing, Severity::kError, "header",
     "the header names no place for the original program chain"},
    {Code::kEmptyTable, Severity::kWarning, "user chains, texts, manufacturers",
     "a table that is left out when empty is present"},
    // Counts.
    {Code::kPastFile, Severity::kError, "any", "the file ends within the structure"},
    {Code::kCountAndRoom, Severity::kError, "any", "a count does not fit the room that it has"},
    {Code::kPresenceValue, Severity::kError, "movie, still", "a presence count is neither 0 nor 1"},
    {Code::kPresentButEmpty, Severity::kWarning, "movie, still",
     "a presence count is 1 and the index is empty"},
    {Code::kPresentUncounted, Severity::kError, "movie, still",
     "a presence count is 0 and an index stands there"},
    {Code::kTooManyCells, Severity::kError, "chains",
     "the programs count more cells than the chain has"},
    {Code::kCellsOfNoProgram, Severity::kWarning, "chains", "cells belong to no program"},
    // References.
    {Code::kPointToNoCell, Severity::kError, "header, play lists, original chain",
     "a cell point names no cell"},
    {Code::kUserPointToNoCell, Severity::kWarning, "user chains",
     "a cell point of a user-defined chain names none of its cells"},
    {Code::kPointNotSet, Severity::kNote, "header", "a cell point is not set"},
    // Contents.
    {Code::kEntryKind, Severity::kWarning, "chains", "the kind of an entry point is 10 or 11"},
    {Code::kCellKind, Severity::kWarning, "chains", "the kind of a cell is above 001"},
    {Code::kWrongCellKind, Severity::kError, "chains",
     "the kind of a cell does not fit the room that it has"},
    {Code::kEmptyVob, Severity::kError, "movie", "a VOB has no entries in its time map"},
    {Code::kEmptyStillGroup, Severity::kError, "still", "a still VOB group has no entries"},
    {Code::kEmptyAudioGroup, Severity::kError, "still", "an additional audio group has no entries"},
    {Code::kNoVobus, Severity::kWarning, "movie",
     "a time map has time entries but no VOBU entries"},
    {Code::kZeroRecords, Severity::kWarning, "movie, still, chains", "records are all zero"},
    // Texts.
    {Code::kTextPastSet, Severity::kError, "texts", "a text runs past the end of its set"},
    // Manufacturers.
    {Code::kNegativeLength, Severity::kError, "manufacturers",
     "the length of a manufacturer information is negative"},
    // Completing.
    {Code::kCompletingChanges, Severity::kNote, "header", "completing would change the field"}};

std::size_t RowOf(Code code) {
  const auto at = std::find_if(std::begin(kCatalogue), std::end(kCatalogue),
                               [code](const CatalogueEntry& entry) { return entry.code == code; });
  return static_cast<std::size_t>(at - std::begin(kCatalogue));
}

}  // namespace

const char* NameOf(Severity severity) {
  constexpr const char* kNames[] = {"note", "warning", "error"};
  return kNames[static_cast<std::size_t>(severity)];
}

std::span<const CatalogueEntry> Catalogue() { return kCatalogue; }

const CatalogueEntry& EntryOf(Code code) { return kCatalogue[RowOf(code)]; }

std::string NameOf(Code code) { return "V" + std::to_string(static_cast<int>(code)); }

void Findings::Add(Finding finding) {
  const std::size_t row = RowOf(finding.code);
  const Severity severity = kCatalogue[row].severity;
  ++counts_.by_severity[IndexOf(finding.table)][static_cast<std::size_t>(severity)];
  std::optional<Finding>& first = counts_.first_errors[IndexOf(finding.table)];
  if (severity == Severity::kError && !first) first = finding;
  if (++counts_.by_code[row] > limit_) return;
  ++counts_.kept;
  kept_.push_back(std::move(finding));
}

std::size_t Findings::Count(Code code) const { return counts_.by_code[RowOf(code)]; }

std::size_t Findings::Count(Severity severity) const {
  std::size_t count = 0;
  for (const TableInfo& row : kTables) count += Count(severity, row.table);
  return count;
}

std::size_t Findings::Count(Severity severity, Table table) const {
  return counts_.by_severity[IndexOf(table)][static_cast<std::size_t>(severity)];
}

const Finding* Findings::FirstError(Table table) const {
  const std::optional<Finding>& first = counts_.first_errors[IndexOf(table)];
  return first ? &*first : nullptr;
}

std::size_t Findings::Omitted(Code code) const {
  const std::size_t count = Count(code);
  return count > limit_ ? count - limit_ : 0;
}

void Findings::Sort() {
  std::stable_sort(kept_.begin(), kept_.end(), [](const Finding& a, const Finding& b) {
    const auto key = [](const Finding& finding) {
      return std::tuple(-static_cast<int>(EntryOf(finding.code).severity), finding.offset);
    };
    return key(a) < key(b);
  });
}

void Findings::Return(const Counts& counts) {
  kept_.erase(kept_.begin() + static_cast<std::ptrdiff_t>(counts.kept), kept_.end());
  counts_ = counts;
}

}  // namespace VESKA::workshop
