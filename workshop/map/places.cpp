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

/// A table that the file's header names.
struct Place {
  std::uint64_t (*walk)(Walk& walk, std::uint64_t at, const Room& room);
  const char* end_address;  ///< the field of its header; a chain has none
  Table table;
  bool is_told_by_more = false;  ///< than its header: an empty one may be any bytes
};

constexpr Place kPlaces[] = {{MovieTable, "M_AVFIT_EA", Table::kMovie},
                             {StillTable, "S_AVFIT_EA", Table::kStill},
                             {OriginalChain, nullptr, Table::kOriginalChain, true},
                             {UserChains, "UD_PGCIT_EA", Table::kUserChains, true},
                             {Texts, "TXTDT_MG_EA", Table::kTexts, true},
                             {Manufacturers, "MNFIT_EA", Table::kManufacturers, true}};

std::uint64_t LeastSize(const Place& place) {
  return RecordSize(HeaderOf(place.table)) + (place.is_told_by_more ? 1 : 0);
}

FileNumber HeaderField(Walk& walk, const char* name) {
  return walk.Number(Part::kFileHeader, name, 0);
}

bool IsInFile(Walk& walk, std::uint64_t start) {
  return start >= kPlayListsAt && start < walk.FileEnd();
}

/// Compares the end address of what starts at `start` with the end of its last structure. Where
/// structures are lost or cut, that end is not known.
void CheckEnd(Walk& walk, const FileNumber& end_address, std::uint64_t start, std::uint64_t end) {
  const std::uint64_t own = start + end_address.value + 1;
  if (own <= walk.claimed_end) walk.own_end = own;
  if (own == end) return;
  const bool is_known = !walk.TableHasErrors();
  if (own >= end && own <= walk.NextTable(start) && !is_known) return;
  walk.Report(own < end                     ? Code::kEndTooLow
              : own > walk.NextTable(start) ? Code::kEndTooHigh
                                            : Code::kEndBehind,
              end_address, "", is_known ? std::to_string(end - start - 1) : "");
}

std::uint64_t WalkTable(Walk& walk, const Place& place, std::uint64_t at) {
  if (place.end_address == nullptr) {
    return place.walk(walk, at, {walk.NextTable(at), walk.NextTable(at)});
  }
  walk.Add(HeaderOf(place.table), at);
  const FileNumber end_address = walk.Number(HeaderOf(place.table), place.end_address, at);
  const std::uint64_t own = at + end_address.value + 1;
  const Room room{own <= walk.claimed_end ? own : 0, walk.NextTable(at)};
  const std::uint64_t end = place.walk(walk, at, room);
  CheckEnd(walk, end_address, at, end);
  return end;
}

/// Returns false when the table contradicts itself, or a chain that stands apart is empty.
bool TryTable(Walk& walk, const Place& place, std::uint64_t at) {
  const std::uint64_t behind = walk.end;
  walk.own_end = 0;
  walk.end = walk.AddWhole(Part::kTable, at, 0, [&] { return WalkTable(walk, place, at); });
  if (walk.TableHasErrors()) {
    walk.end = std::max(walk.end, walk.own_end);
    return false;
  }
  return at == behind || walk.end >= at + LeastSize(place);
}

/// The start of a table bounds the one before it. One whose table contradicts itself may be wrong,
/// and is not relied on.
void ReadTableStarts(Walk& walk) {
  const std::uint64_t end = HeaderField(walk, "VMG_EA").value + 1;
  walk.claimed_end = end > walk.FileEnd() && end <= kLargestCredible ? end : walk.FileEnd();
  const bool is_padded = end < walk.FileEnd() && walk.Image().IsZero(end, walk.FileEnd() - end);
  walk.table_starts = {is_padded ? std::max(end, kPlayListsAt) : walk.claimed_end};
  std::vector<std::uint64_t> starts;
  for (const Place& place : kPlaces) {
    const std::uint64_t start = HeaderField(walk, InfoOf(place.table).field).value;
    if (!IsInFile(walk, start)) continue;
    const Walk::Mark mark = walk.SetMark();
    walk.table = place.table;
    if (TryTable(walk, place, start)) starts.push_back(start);
    walk.Return(mark);
  }
  walk.table_starts.insert(walk.table_starts.end(), starts.begin(), starts.end());
  std::sort(walk.table_starts.begin(), walk.table_starts.end());
}

bool TryBehind(Walk& walk, const Place& place, const FileNumber& address) {
  const std::uint64_t at = walk.end;
  if (at >= walk.FileEnd() || walk.IsTableStart(at)) return false;
  const bool is_sound = TryTable(walk, place, at) &&
                        walk.Found().Count(Severity::kWarning, walk.table) == 0 &&
                        walk.end >= at + LeastSize(place) && walk.end <= walk.NextTable(at);
  if (!is_sound) return false;
  walk.Found().Add({Code::kTableElsewhere, Table::kHeader, PointerOf(Table::kHeader),
                    address.offset, Is(address), std::to_string(at)});
  return true;
}

void ReportMissing(Walk& walk, const Place& place, const FileNumber& address) {
  const bool is_chain = place.table == Table::kOriginalChain;
  const bool is_left_out = address.value == 0 && place.table > Table::kOriginalChain;
  if (is_left_out) return;
  if (address.value == 0) {
    walk.Report(is_chain ? Code::kChainMissing : Code::kTableMissing, address.offset,
                PointerOf(place.table), Is(address));
  } else if (address.value < kPlayListsAt) {
    walk.Report(Code::kAddressOutside, address.offset, PointerOf(place.table),
                Is(address) + ", where the header and the play lists stand");
  } else {
    walk.Report(address.value < walk.claimed_end ? Code::kPastFile : Code::kAddressOutside,
                address.offset, PointerOf(place.table),
                Is(address) + ", and the file has " + std::to_string(walk.FileEnd()) + " bytes");
  }
  if (address.value != 0 || is_chain) walk.AddLost(Part::kTable, 0);
}

/// Walks a table where the header says that it stands. If it contradicts itself there, and one
/// stands without a fault right behind the table before, that is the one.
void FindTable(Walk& walk, const Place& place) {
  walk.table = place.table;
  const FileNumber address = HeaderField(walk, InfoOf(place.table).field);
  const bool in_file = IsInFile(walk, address.value);
  const Walk::Mark mark = walk.SetMark();
  const std::uint64_t behind = walk.end;
  if (in_file && TryTable(walk, place, address.value)) return;
  walk.Return(mark);
  walk.end = behind;
  if (address.value != behind && TryBehind(walk, place, address)) return;
  walk.Return(mark);
  walk.end = behind;
  if (in_file) {
    TryTable(walk, place, address.value);
  } else {
    ReportMissing(walk, place, address);
  }
}

void FileHeader(Walk& walk) {
  walk.table = Table::kHeader;
  walk.Add(Part::kFileHeader, 0);
  const auto id = walk.Image().At(0, kFileIdentifier.size());
  if (std::equal(id.begin(), id.end(), kFileIdentifier.begin(), kFileIdentifier.end())) return;
  walk.Report(Code::kIdentifier, 0, walk.Here(), '"' + Readable(id) + '"',
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
    walk.ReportCount(count, right);
    return right;
  }
  if (stated_end <= room.next) return count.value;
  walk.ReportCrowded(count, {room.next, true});
  return (room.next - kPlayListsAt) / kSize;
}

void PlayLists(Walk& walk) {
  walk.table = Table::kPlayLists;
  walk.end = walk.AddWhole(Part::kTable, kHeaderSize, 0, [&] {
    walk.Add(Part::kPlayListHeader, kHeaderSize);
    const FileNumber end_address = walk.Number(Part::kPlayListHeader, "PL_SRPT_EA", kHeaderSize);
    FileNumber count = walk.CountOf(Part::kPlayLists, kHeaderSize);
    const Room room{kHeaderSize + end_address.value + 1, walk.table_starts.front()};
    count.value = PlayListCount(walk, count, room);
    const std::uint64_t end = walk.AddRun(Part::kPlayLists, kPlayListsAt, count);
    CheckEnd(walk, end_address, kHeaderSize, end);
    return end;
  });
  const bool is_known = !walk.TableHasErrors();
  walk.table = Table::kHeader;
  if (is_known) CheckEnd(walk, HeaderField(walk, "VMGI_MAT_EA"), 0, walk.end);
}

void CheckFileEnd(Walk& walk) {
  std::uint64_t last = 0;
  for (const Structure& structure : walk.Map().structures) {
    last = std::max(last, structure.offset + structure.size);
  }
  const FileNumber address = HeaderField(walk, "VMG_EA");
  const std::uint64_t end = address.value + 1;
  const bool is_known = walk.Found().Count(Severity::kError) == 0;
  const std::string right = is_known ? std::to_string(last - 1) : "";
  if (walk.Found().Count(Code::kPastFile) != 0 && end > walk.FileEnd()) {
    walk.Report(Code::kFileCutOff, address,
                ", and the file has " + std::to_string(walk.FileEnd()) + " bytes");
  } else if (end > walk.FileEnd() || end < last) {
    walk.Report(Code::kFileEnd, address, "", right);
  } else if (end > last && is_known) {
    walk.Report(Code::kEndBehind, address, "", right);
  }
  const std::uint64_t behind = end <= walk.FileEnd() ? std::max(end, last) : last;
  if (behind >= walk.FileEnd()) return;
  const std::uint64_t left = walk.FileEnd() - behind;
  walk.table = Table::kFile;
  walk.Report(walk.Image().IsZero(behind, left) ? Code::kPadding : Code::kBytesBehind, behind,
              walk.Here(), Plural(left, "byte"));
}

void WalkTables(Walk& walk) {
  ReadTableStarts(walk);
  FileHeader(walk);
  PlayLists(walk);
  for (const Place& place : kPlaces) FindTable(walk, place);
  walk.table = Table::kHeader;
  CheckFileEnd(walk);
}

}  // namespace

ImageMap MapImage(std::span<const unsigned char> bytes, Findings& findings) {
  ImageMap map;
  Walk walk(bytes, map, findings);
  if (bytes.size() < kHeaderSize) {
    walk.Report(Code::kShortFile, 0, walk.Here(),
                "the file has " + std::to_string(bytes.size()) + " bytes",
                "at least " + std::to_string(kHeaderSize));
    return map;
  }
  try {
    WalkTables(walk);
  } catch (const BudgetSpent&) {
    walk.Report(Code::kTooMuchShared, 0, PointerOf(walk.table),
                "the examination stopped in this table");
  }
  return map;
}

}  // namespace VESKA::workshop
