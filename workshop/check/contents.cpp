#include <veska/records.h>

#include "basis/text.h"
#include "check/examined.h"

namespace VESKA::workshop {
namespace {

/// One finding for each stretch of them.
void CheckZeroRecords(Examined& file, const Structure& run) {
  const std::uint64_t size = RecordSize(run.part);
  const auto is_zero = [&](std::uint32_t i) {
    return i < run.count && file.image.IsZero(run.offset + size * i, size);
  };
  for (std::uint32_t i = 0; i < run.count; ++i) {
    if (!is_zero(i)) continue;
    const std::uint32_t first = i;
    while (is_zero(i + 1)) ++i;
    std::string which;
    if (run.count > 1) which = "number " + std::to_string(first + 1);
    if (i > first) which += " to " + std::to_string(i + 1) + " of " + std::to_string(run.count);
    file.Report(Code::kZeroRecords, run, run.offset + size * first, which);
  }
}

void CheckTimeMap(Examined& file, const Structure& map) {
  if (file.map.ParentOf(map).state != State::kWhole) return;
  const FileNumber times = CountOf(file.image, Part::kTimeEntries, map.offset);
  const FileNumber vobus = CountOf(file.image, Part::kVobus, map.offset);
  if (vobus.value != 0) return;
  file.Report(times.value == 0 ? Code::kEmptyVob : Code::kNoVobus, map, map.offset,
              Is(times) + ", " + Is(vobus));
}

void CheckGroup(Examined& file, const Structure& info, Part entries, Code code) {
  const FileNumber count = CountOf(file.image, entries, info.offset);
  if (count.value != 0 || file.map.ParentOf(info).state != State::kWhole) return;
  file.Report(code, info, info.offset, Is(count));
}

void CheckCell(Examined& file, const Structure& info) {
  const unsigned kind = file.image.Byte(info.offset + offsetof(tag_M_C_GI, C_TY)) >> 5U;
  if (kind <= CELL_STILL) return;
  std::string bits;
  for (unsigned bit = 4; bit != 0; bit >>= 1U) bits += (kind & bit) != 0 ? '1' : '0';
  file.Report(Code::kCellKind, info, info.offset + offsetof(tag_M_C_GI, C_TY),
              "the kind is " + bits, "001");
}

void CheckEntryPoints(Examined& file, const Structure& entries) {
  const auto position = static_cast<std::size_t>(file.map.PositionOf(entries));
  const bool is_still = file.map.structures[position - 1].part == Part::kStillCellInfo;
  std::uint64_t at = entries.offset;
  for (std::uint32_t i = 0; i < entries.count; ++i) {
    const std::uint8_t type = file.image.Byte(at);
    if ((type & 0x80U) != 0) {
      file.Report(Code::kEntryKind, entries, at,
                  (type & 0x40U) != 0 ? "the kind is 11" : "the kind is 10", "00 or 01", i + 1);
    }
    at += is_still ? StillEntryPointSize(type) : MovieEntryPointSize(type);
  }
}

void CheckTexts(Examined& file, const Structure& set) {
  const std::uint64_t end = set.offset + set.size;
  std::uint64_t at = set.offset;
  for (std::uint32_t number = 1; at < end; ++number) {
    const std::uint64_t next = at + TextSize(file.image, at);
    if (next > end) {
      file.Report(Code::kTextPastSet, set, at,
                  "text " + std::to_string(number) + " ends " + Plural(next - end, "byte") +
                      " after the set");
      return;
    }
    at = next;
  }
}

void CheckEmptyTable(Examined& file, const Structure& index) {
  if (index.count != 0 || index.part == Part::kCellIndex) return;
  file.Report(InfoOf(index.table).is_left_out ? Code::kEmptyTable : Code::kPresentButEmpty, index,
              index.offset, "its count is 0");
}

void CheckStructure(Examined& file, const Structure& structure) {
  switch (structure.part) {
    case Part::kTimeMap:
      return CheckTimeMap(file, structure);
    case Part::kGroupInfo:
      return CheckGroup(file, structure, Part::kStillEntries, Code::kEmptyStillGroup);
    case Part::kAudioGroupInfo:
      return CheckGroup(file, structure, Part::kAudioEntries, Code::kEmptyAudioGroup);
    case Part::kMovieCellInfo:
    case Part::kStillCellInfo:
      return CheckCell(file, structure);
    case Part::kEntryPoints:
      return CheckEntryPoints(file, structure);
    case Part::kTextSet:
      return CheckTexts(file, structure);
    default:
      return;
  }
}

}  // namespace

void CheckContents(Examined& file) {
  for (const Structure& structure : file.map.structures) {
    if (structure.state == State::kLost || structure.state == State::kCut) continue;
    const PartInfo& info = InfoOf(structure.part);
    if (info.is_never_zero) CheckZeroRecords(file, structure);
    if (info.role == Role::kIndex) CheckEmptyTable(file, structure);
    CheckStructure(file, structure);
  }
}

}  // namespace VESKA::workshop
