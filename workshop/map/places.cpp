#include <veska/records.h>

#include <algorithm>
#include <array>

#include "basis/text.h"
#include "map/walk.h"

namespace VESKA::workshop {

namespace {

constexpr std::uint64_t kHeaderSize = kFileSize<tag_VMGI_MAT_HEADER>;
constexpr std::uint64_t kPlayListsAt = kHeaderSize + kFileSize<tag_PL_SRPTI>;

// The counts and addresses of an honest file come to a few MB; an end address beyond this does not
// tell where a file was cut off.
constexpr std::uint64_t kLargestCredible = 1 << 26;

/// A table that the header names.
struct Place {
  Table table;
  std::uint64_t (*walk)(Walk& walk, std::uint64_t at);
  std::uint64_t least;  ///< the fewest bytes by which it can be told
};

constexpr Place kPlaces[] = {{Table::kMovie, MovieTable, kFileSize<tag_M_AVFITI>},
                             {Table::kStill, StillTable, kFileSize<tag_S_AVFITI>},
                             {Table::kOriginalChain, OriginalChain, kFileSize<tag_PGC_GI> + 1},
                             {Table::kUserChains, UserChains, kFileSize<tag_UD_PGCITI> + 1},
                             {Table::kTexts, Texts, kFileSize<tag_TXTDITI> + 1},
                             {Table::kManufacturers, Manufacturers, kFileSize<tag_MNFITI> + 1}};

FileNumber HeaderField(Walk& walk, const char* name) {
  return walk.build.Number<tag_VMGI_MAT_HEADER>(name, 0);
}

bool IsInFile(Walk& walk, std::uint64_t start) {
  return start >= kPlayListsAt && start < walk.build.FileEnd();
}

/// Returns false when the table contradicts itself, or a chain that stands apart is empty.
bool TryTable(Walk& walk, const Place& place, std::uint64_t at) {
  const std::uint64_t behind = walk.end;
  walk.own_end = 0;
  walk.build.AddWhole(Part::kTable, at, 0, [&] { walk.end = place.walk(walk, at); });
  if (walk.build.TableHasErrors()) {
    walk.end = std::max(walk.end, walk.own_end);
    return false;
  }
  return at == behind || walk.end >= at + place.least;
}

/// The start of a table bounds the one before it. One whose table contradicts itself may be wrong,
/// and is not relied on.
void ReadTableStarts(Walk& walk) {
  const std::uint64_t end = HeaderField(walk, "VMG_EA").value + 1;
  walk.claimed_end =
      end > walk.build.FileEnd() && end <= kLargestCredible ? end : walk.build.FileEnd();
  const bool is_padded =
      end < walk.build.FileEnd() && walk.build.Image().IsZero(end, walk.build.FileEnd() - end);
  walk.table_starts = {is_padded ? std::max(end, kPlayListsAt) : walk.claimed_end};
  std::vector<std::uint64_t> starts;
  for (const Place& place : kPlaces) {
    const std::uint64_t start = HeaderField(walk, InfoOf(place.table).field).value;
    if (!IsInFile(walk, start)) continue;
    const MapBuilder::Mark mark = walk.build.SetMark();
    walk.build.CurrentTable() = place.table;
    if (TryTable(walk, place, start)) starts.push_back(start);
    walk.build.Return(mark);
  }
  walk.table_starts.insert(walk.table_starts.end(), starts.begin(), starts.end());
  std::sort(walk.table_starts.begin(), walk.table_starts.end());
}

bool TryBehind(Walk& walk, const Place& place, const FileNumber& address) {
  const std::uint64_t at = walk.end;
  if (at >= walk.build.FileEnd() || walk.IsTableStart(at)) return false;
  const bool is_sound =
      TryTable(walk, place, at) &&
      walk.build.Found().Count(Severity::kWarning, walk.build.CurrentTable()) == 0 &&
      walk.end >= at + place.least && walk.end <= walk.NextTable(at);
  if (!is_sound) return false;
  walk.build.Found().Add({Code::kTableElsewhere, Table::kHeader, PointerOf(Table::kHeader),
                          address.offset, Is(address), std::to_string(at)});
  return true;
}

void ReportMissing(Walk& walk, const Place& place, const FileNumber& address) {
  const bool is_chain = place.table == Table::kOriginalChain;
  const bool is_left_out = address.value == 0 && place.table > Table::kOriginalChain;
  if (is_left_out) return;
  if (address.value == 0) {
    walk.build.Report(is_chain ? Code::kChainMissing : Code::kTableMissing, address.offset,
                      PointerOf(place.table), Is(address));
  } else if (address.value < kPlayListsAt) {
    walk.build.Report(Code::kAddressOutside, address.offset, PointerOf(place.table),
                      Is(address) + ", where the header and the play lists stand");
  } else {
    walk.build.Report(
        address.value < walk.claimed_end ? Code::kPastFile : Code::kAddressOutside, address.offset,
        PointerOf(place.table),
        Is(address) + ", and the file has " + std::to_string(walk.build.FileEnd()) + " bytes");
  }
  if (address.value != 0 || is_chain) walk.build.AddLost(Part::kTable, 0);
}

/// Walks a table where the header says that it stands. If it contradicts itself there, and one
/// stands without a fault right behind the table before, that is the one.
void FindTable(Walk& walk, const Place& place) {
  walk.build.CurrentTable() = place.table;
  const FileNumber address = HeaderField(walk, InfoOf(place.table).field);
  const bool in_file = IsInFile(walk, address.value);
  const MapBuilder::Mark mark = walk.build.SetMark();
  const std::uint64_t behind = walk.end;
  if (in_file && TryTable(walk, place, address.value)) return;
  walk.build.Return(mark);
  walk.end = behind;
  if (address.value != behind && TryBehind(walk, place, address)) return;
  walk.build.Return(mark);
  walk.end = behind;
  if (in_file) {
    TryTable(walk, place, address.value);
  } else {
    ReportMissing(walk, place, address);
  }
}

void FileHeader(Walk& walk) {
  walk.build.CurrentTable() = Table::kHeader;
  walk.build.Add(Part::kFileHeader, 0, kHeaderSize);
  const auto id = walk.build.Image().At(0, kFileIdentifier.size());
  if (std::equal(id.begin(), id.end(), kFileIdentifier.begin(), kFileIdentifier.end())) return;
  walk.build.Report(Code::kIdentifier, 0, walk.build.Here(), '"' + Readable(id) + '"',
                    std::string(kFileIdentifier));
}

/// The count that two of these bear out: the table's end address, the header's, and where the first
/// table starts. Otherwise the count that stands there, as far as there is room.
std::uint64_t PlayListCount(Walk& walk, const FileNumber& count, const Room& room) {
  constexpr std::uint64_t kSize = kFileSize<tag_PL_SRP>;
  const std::array ends{room.own, HeaderField(walk, "VMGI_MAT_EA").value + 1, room.next};
  const std::uint64_t stated_end = kPlayListsAt + kSize * count.value;
  const auto bearing_out = [&](std::uint64_t end) {
    return std::count(ends.begin(), ends.end(), end);
  };
  if (bearing_out(stated_end) != 0) return count.value;
  for (const std::uint64_t end : ends) {
    const bool is_count = end >= kPlayListsAt && (end - kPlayListsAt) % kSize == 0 &&
                          (end - kPlayListsAt) / kSize <= 0xFF;
    if (!is_count || bearing_out(end) < 2) continue;
    const std::uint64_t right = (end - kPlayListsAt) / kSize;
    walk.build.ReportCount(count, right);
    return right;
  }
  if (stated_end <= room.next) return count.value;
  walk.build.ReportCrowded(count, {room.next, true});
  return (room.next - kPlayListsAt) / kSize;
}

void PlayLists(Walk& walk) {
  walk.build.CurrentTable() = Table::kPlayLists;
  walk.build.AddWhole(Part::kTable, kHeaderSize, 0, [&] {
    walk.build.Add(Part::kPlayListHeader, kHeaderSize, kFileSize<tag_PL_SRPTI>);
    const FileNumber end_address = walk.build.Number<tag_PL_SRPTI>("PL_SRPT_EA", kHeaderSize);
    FileNumber count = walk.build.Number<tag_PL_SRPTI>("PL_SRP_Ns", kHeaderSize);
    const Room room{kHeaderSize + end_address.value + 1, walk.table_starts.front()};
    count.value = PlayListCount(walk, count, room);
    walk.end = walk.build.AddRun(Part::kPlayLists, kPlayListsAt, count);
    CheckEnd(walk, end_address, kHeaderSize, walk.end);
  });
  const bool is_known = !walk.build.TableHasErrors();
  walk.build.CurrentTable() = Table::kHeader;
  if (is_known) CheckEnd(walk, HeaderField(walk, "VMGI_MAT_EA"), 0, walk.end);
}

void CheckFileEnd(Walk& walk) {
  std::uint64_t last = 0;
  for (const Structure& structure : walk.build.Map().structures) {
    last = std::max(last, structure.offset + structure.size);
  }
  const FileNumber address = HeaderField(walk, "VMG_EA");
  const std::uint64_t end = address.value + 1;
  const bool is_known = walk.build.Found().Count(Severity::kError) == 0;
  const std::string right = is_known ? std::to_string(last - 1) : "";
  if (walk.build.Found().Count(Code::kPastFile) != 0 && end > walk.build.FileEnd()) {
    walk.build.Report(
        Code::kFileCutOff, address.offset, walk.build.Here(),
        Is(address) + ", and the file has " + std::to_string(walk.build.FileEnd()) + " bytes");
  } else if (end > walk.build.FileEnd() || end < last) {
    walk.build.Report(Code::kFileEnd, address.offset, walk.build.Here(), Is(address), right);
  } else if (end > last && is_known) {
    walk.build.Report(Code::kEndBehind, address.offset, walk.build.Here(), Is(address), right);
  }
  const std::uint64_t behind = end <= walk.build.FileEnd() ? std::max(end, last) : last;
  if (behind >= walk.build.FileEnd()) return;
  const std::uint64_t left = walk.build.FileEnd() - behind;
  walk.build.CurrentTable() = Table::kFile;
  walk.build.Report(walk.build.Image().IsZero(behind, left) ? Code::kPadding : Code::kBytesBehind,
                    behind, walk.build.Here(), Plural(left, "byte"));
}

void WalkTables(Walk& walk) {
  ReadTableStarts(walk);
  FileHeader(walk);
  PlayLists(walk);
  for (const Place& place : kPlaces) FindTable(walk, place);
  walk.build.CurrentTable() = Table::kHeader;
  CheckFileEnd(walk);
}

}  // namespace

/// Compares the end address of what starts at `start` with the end of its last structure. Where
/// structures are lost or cut, that end is not known.
void CheckEnd(Walk& walk, const FileNumber& end_address, std::uint64_t start, std::uint64_t end) {
  const std::uint64_t own = start + end_address.value + 1;
  if (own <= walk.claimed_end) walk.own_end = own;
  if (own == end) return;
  const bool is_known = !walk.build.TableHasErrors();
  const std::string right = is_known ? std::to_string(end - start - 1) : "";
  if (own < end) {
    walk.build.Report(Code::kEndTooLow, end_address.offset, walk.build.Here(), Is(end_address),
                      right);
  } else if (own > walk.NextTable(start)) {
    walk.build.Report(Code::kEndTooHigh, end_address.offset, walk.build.Here(), Is(end_address),
                      right);
  } else if (is_known) {
    walk.build.Report(Code::kEndBehind, end_address.offset, walk.build.Here(), Is(end_address),
                      right);
  }
}

ImageMap MapImage(std::span<const unsigned char> bytes, Findings& findings) {
  ImageMap map;
  Walk walk{MapBuilder(bytes, map, findings)};
  MapBuilder& build = walk.build;
  if (bytes.size() < kHeaderSize) {
    build.Report(Code::kShortFile, 0, PointerOf(Table::kFile),
                 "the file has " + std::to_string(bytes.size()) + " bytes",
                 "at least " + std::to_string(kHeaderSize));
    return map;
  }
  try {
    WalkTables(walk);
  } catch (const MapBuilder::BudgetSpent&) {
    build.Report(Code::kTooMuchShared, 0, PointerOf(build.CurrentTable()),
                 "the examination stopped in this table");
  }
  return map;
}

}  // namespace VESKA::workshop
