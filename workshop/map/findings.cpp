#include "map/findings.h"

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>

namespace VESKA::workshop {
namespace {

using enum Code;
using enum Severity;

constexpr CatalogueEntry kCatalogue[] = {
    // The file as a whole.
    {kShortFile, kError, "file", "the file is shorter than its header"},
    {kIdentifier, kError, "header", "the identifier is not DVD_RTR_VMG0"},
    {kDoesNotLoad, kError, "any", "the table cannot be loaded"},
    {kFileCutOff, kError, "header", "the file ends before its end address"},
    {kFileEnd, kError, "header", "the file's end address is not that of its last structure"},
    {kPadding, kNote, "file", "zero bytes follow the end of the data"},
    {kBytesBehind, kWarning, "file", "bytes follow the end of the data"},
    {kTooMuchShared, kError, "any",
     "so many structures share their bytes that the examination stopped"},
    // Addresses.
    {kTableElsewhere, kError, "header", "the table does not start where the header says"},
    {kAddressOutside, kError, "any", "the start address names no place for a structure"},
    {kOverlap, kError, "any", "structures overlap"},
    {kElsewhere, kError, "any", "the structure does not start where its address says"},
    {kOrder, kWarning, "any", "the structures stand in another order than their addresses"},
    {kUnusedBytes, kWarning, "any", "bytes belong to no structure"},
    {kEndTooLow, kError, "any", "the end address lies before the end of the last structure"},
    {kEndTooHigh, kError, "any",
     "the end address lies in the next table or past the end of the file"},
    {kEndBehind, kWarning, "any", "the end address lies after the last structure"},
    {kTableMissing, kWarning, "header", "a table that is always written is missing"},
    {kChainMissing, kError, "header", "the header names no place for the original program chain"},
    {kEmptyTable, kWarning, "user chains, texts, manufacturers",
     "a table that is left out when empty is present"},
    // Counts.
    {kPastFile, kError, "any", "the file ends within the structure"},
    {kCountAndRoom, kError, "any", "a count does not fit the room that it has"},
    {kPresenceValue, kError, "movie, still", "a presence count is neither 0 nor 1"},
    {kPresentButEmpty, kWarning, "movie, still", "a presence count is 1 and the index is empty"},
    {kPresentUncounted, kError, "movie, still", "a presence count is 0 and an index stands there"},
    {kTooManyCells, kError, "chains", "the programs count more cells than the chain has"},
    {kCellsOfNoProgram, kWarning, "chains", "cells belong to no program"},
    // References.
    {kPointToNoCell, kError, "header, play lists, original chain", "a cell point names no cell"},
    {kUserPointToNoCell, kWarning, "user chains",
     "a cell point of a user-defined chain names none of its cells"},
    {kPointNotSet, kNote, "header", "a cell point is not set"},
    // Contents.
    {kEntryKind, kWarning, "chains", "the kind of an entry point is 10 or 11"},
    {kCellKind, kWarning, "chains", "the kind of a cell is above 001"},
    {kWrongCellKind, kError, "chains", "the kind of a cell does not fit the room that it has"},
    {kEmptyVob, kError, "movie", "a VOB has no entries in its time map"},
    {kEmptyStillGroup, kError, "still", "a still VOB group has no entries"},
    {kEmptyAudioGroup, kError, "still", "an additional audio group has no entries"},
    {kNoVobus, kWarning, "movie", "a time map has time entries but no VOBU entries"},
    {kZeroRecords, kWarning, "movie, still, chains", "records are all zero"},
    // Texts.
    {kTextPastSet, kError, "texts", "a text runs past the end of its set"},
    // Manufacturers.
    {kNegativeLength, kError, "manufacturers",
     "the length of a manufacturer information is negative"},
    // Completing.
    {kCompletingChanges, kNote, "header", "completing would change the field"}};

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
