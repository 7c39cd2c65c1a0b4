#include "table_walk.h"

#include <veska/records.h>

#include <algorithm>
#include <array>

#include "field_text.h"
#include "tool_io.h"

namespace veska_tool {

using namespace VESKA;

namespace {

constexpr std::uint64_t kHeaderSize = kFileSize<tag_VMGI_MAT_HEADER>;
constexpr std::uint64_t kPlayListsAt = kHeaderSize + kFileSize<tag_PL_SRPTI>;

// The counts and addresses of an honest file come to a few MB; an end address beyond this does not
// tell where a file was cut off.
constexpr std::uint64_t kLargestCredible = 1 << 26;

}  // namespace

const TableWalk::Place TableWalk::kPlaces[] = {
    {Table::kMovie, "M_AVFIT_SA", &TableWalk::MovieTable, kFileSize<tag_M_AVFITI>},
    {Table::kStill, "S_AVFIT_SA", &TableWalk::StillTable, kFileSize<tag_S_AVFITI>},
    {Table::kOriginalChain, "ORG_PGCI_SA", &TableWalk::OriginalChain, kFileSize<tag_PGC_GI> + 1},
    {Table::kUserChains, "UD_PGCIT_SA", &TableWalk::UserChains, kFileSize<tag_UD_PGCITI> + 1},
    {Table::kTexts, "TXTDT_MG_SA", &TableWalk::Texts, kFileSize<tag_TXTDITI> + 1},
    {Table::kManufacturers, "MNFIT_SA", &TableWalk::Manufacturers, kFileSize<tag_MNFITI> + 1}};

ImageMap MapImage(std::span<const unsigned char> bytes, Findings& findings) {
  ImageMap map;
  TableWalk(bytes, map, findings).Walk();
  return map;
}

void TableWalk::Walk() {
  if (FileEnd() < kHeaderSize) {
    Report(Code::kShortFile, 0, NameOf(Table::kFile),
           "the file has " + std::to_string(FileEnd()) + " bytes",
           "at least " + std::to_string(kHeaderSize));
    return;
  }
  try {
    WalkTables();
  } catch (const BudgetSpent&) {
    Report(Code::kTooMuchShared, 0, NameOf(table_), "the examination stopped in this table");
  }
}

void TableWalk::WalkTables() {
  ReadTableStarts();
  FileHeader();
  PlayLists();
  for (const Place& place : kPlaces) FindTable(place);
  table_ = Table::kHeader;
  CheckFileEnd();
}

// --- Where the tables are ------------------------------------------------------------------------

FileNumber TableWalk::HeaderField(const char* name) const {
  return Number<tag_VMGI_MAT_HEADER>(name, 0);
}

/// The start of a table bounds the one before it. One whose table contradicts itself may be wrong,
/// and is not relied on.
void TableWalk::ReadTableStarts() {
  const std::uint64_t end = HeaderField("VMG_EA").value + 1;
  claimed_end_ = end > FileEnd() && end <= kLargestCredible ? end : FileEnd();
  const bool is_padded = end < FileEnd() && image_.IsZero(end, FileEnd() - end);
  table_starts_ = {is_padded ? std::max(end, kPlayListsAt) : claimed_end_};
  std::vector<std::uint64_t> starts;
  for (const Place& place : kPlaces) {
    const std::uint64_t start = HeaderField(place.field).value;
    if (!IsInFile(start)) continue;
    const Mark mark = SetMark();
    table_ = place.table;
    if (TryTable(place, start)) starts.push_back(start);
    Return(mark);
  }
  table_starts_.insert(table_starts_.end(), starts.begin(), starts.end());
  std::sort(table_starts_.begin(), table_starts_.end());
}

bool TableWalk::IsInFile(std::uint64_t start) const {
  return start >= kPlayListsAt && start < FileEnd();
}

std::uint64_t TableWalk::NextTable(std::uint64_t offset) const {
  const auto next = std::upper_bound(table_starts_.begin(), table_starts_.end(), offset);
  return next != table_starts_.end() ? *next : claimed_end_;
}

Room TableWalk::RoomOf(std::uint64_t at, const FileNumber& end_address) const {
  const std::uint64_t own = at + end_address.value + 1;
  return {own <= claimed_end_ ? own : 0, NextTable(at)};
}

/// Walks a table where the header says that it stands. If it contradicts itself there, and one
/// stands without a fault right behind the table before, that is the one.
void TableWalk::FindTable(const Place& place) {
  table_ = place.table;
  const FileNumber address = HeaderField(place.field);
  const bool in_file = IsInFile(address.value);
  const Mark mark = SetMark();
  const std::uint64_t behind = end_;
  if (in_file && TryTable(place, address.value)) return;
  Return(mark);
  end_ = behind;
  if (address.value != behind && TryBehind(place, address)) return;
  Return(mark);
  end_ = behind;
  if (in_file) {
    TryTable(place, address.value);
  } else {
    ReportMissing(place, address);
  }
}

/// Returns false when the table contradicts itself, or a chain that stands apart is empty.
bool TableWalk::TryTable(const Place& place, std::uint64_t at) {
  const std::uint64_t behind = end_;
  own_end_ = 0;
  AddWhole(Part::kTable, at, 0, [&] { end_ = (this->*place.walk)(at); });
  if (TableHasErrors()) {
    end_ = std::max(end_, own_end_);
    return false;
  }
  return at == behind || end_ >= at + place.least;
}

bool TableWalk::TryBehind(const Place& place, const FileNumber& address) {
  const std::uint64_t at = end_;
  if (at >= FileEnd() || IsTableStart(at)) return false;
  const bool is_sound = TryTable(place, at) && findings_.Count(Severity::kWarning, table_) == 0 &&
                        end_ >= at + place.least && end_ <= NextTable(at);
  if (!is_sound) return false;
  findings_.Add({Code::kTableElsewhere, Table::kHeader, NameOf(Table::kHeader), address.offset,
                 Is(address), std::to_string(at)});
  return true;
}

void TableWalk::ReportMissing(const Place& place, const FileNumber& address) {
  const bool is_chain = place.table == Table::kOriginalChain;
  const bool is_left_out = address.value == 0 && place.table > Table::kOriginalChain;
  if (is_left_out) return;
  if (address.value == 0) {
    Report(is_chain ? Code::kChainMissing : Code::kTableMissing, address.offset,
           NameOf(place.table), Is(address));
  } else if (address.value < kPlayListsAt) {
    Report(Code::kAddressOutside, address.offset, NameOf(place.table),
           Is(address) + ", where the header and the play lists stand");
  } else {
    Report(address.value < claimed_end_ ? Code::kPastFile : Code::kAddressOutside, address.offset,
           NameOf(place.table),
           Is(address) + ", and the file has " + std::to_string(FileEnd()) + " bytes");
  }
  if (address.value != 0 || is_chain) AddLost(Part::kTable, 0);
}

/// Compares the end address of what starts at `start` with the end of its last structure. Where
/// structures are lost or cut, that end is not known.
void TableWalk::CheckEnd(const FileNumber& end_address, std::uint64_t start, std::uint64_t end) {
  const std::uint64_t own = start + end_address.value + 1;
  if (own <= claimed_end_) own_end_ = own;
  if (own == end) return;
  const bool is_known = !TableHasErrors();
  const std::string right = is_known ? std::to_string(end - start - 1) : "";
  if (own < end) {
    Report(Code::kEndTooLow, end_address.offset, Here(), Is(end_address), right);
  } else if (own > NextTable(start)) {
    Report(Code::kEndTooHigh, end_address.offset, Here(), Is(end_address), right);
  } else if (is_known) {
    Report(Code::kEndBehind, end_address.offset, Here(), Is(end_address), right);
  }
}

// --- The header and the play lists ---------------------------------------------------------------

void TableWalk::FileHeader() {
  table_ = Table::kHeader;
  Add(Part::kFileHeader, 0, kHeaderSize);
  const auto id = image_.At(0, kIdentifier.size());
  if (std::ranges::equal(id, kIdentifier)) return;
  Report(Code::kIdentifier, 0, Here(), '"' + Readable(id) + '"', std::string(kIdentifier));
}

void TableWalk::PlayLists() {
  table_ = Table::kPlayLists;
  AddWhole(Part::kTable, kHeaderSize, 0, [&] {
    Add(Part::kPlayListHeader, kHeaderSize, kFileSize<tag_PL_SRPTI>);
    const FileNumber end_address = Number<tag_PL_SRPTI>("PL_SRPT_EA", kHeaderSize);
    FileNumber count = Number<tag_PL_SRPTI>("PL_SRP_Ns", kHeaderSize);
    const Room room{kHeaderSize + end_address.value + 1, table_starts_.front()};
    count.value = PlayListCount(count, room);
    end_ = AddRun(Part::kPlayLists, kPlayListsAt, count);
    CheckEnd(end_address, kHeaderSize, end_);
  });
  const bool is_known = !TableHasErrors();
  table_ = Table::kHeader;
  if (is_known) CheckEnd(HeaderField("VMGI_MAT_EA"), 0, end_);
}

/// The count that two of these bear out: the table's end address, the header's, and where the first
/// table starts. Otherwise the count that stands there, as far as there is room.
std::uint64_t TableWalk::PlayListCount(const FileNumber& count, const Room& room) {
  constexpr std::uint64_t kSize = kFileSize<tag_PL_SRP>;
  const std::array ends{room.own, HeaderField("VMGI_MAT_EA").value + 1, room.next};
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
    ReportCount(count, right);
    return right;
  }
  if (stated_end <= room.next) return count.value;
  ReportCrowded(count, {room.next, true});
  return (room.next - kPlayListsAt) / kSize;
}

// --- The end of the file -------------------------------------------------------------------------

void TableWalk::CheckFileEnd() {
  std::uint64_t last = 0;
  for (const Structure& structure : map_.structures) {
    last = std::max(last, structure.offset + structure.size);
  }
  const FileNumber address = HeaderField("VMG_EA");
  const std::uint64_t end = address.value + 1;
  const bool is_known = findings_.Count(Severity::kError) == 0;
  const std::string right = is_known ? std::to_string(last - 1) : "";
  if (findings_.Count(Code::kPastFile) != 0 && end > FileEnd()) {
    Report(Code::kFileCutOff, address.offset, Here(),
           Is(address) + ", and the file has " + std::to_string(FileEnd()) + " bytes");
  } else if (end > FileEnd() || end < last) {
    Report(Code::kFileEnd, address.offset, Here(), Is(address), right);
  } else if (end > last && is_known) {
    Report(Code::kEndBehind, address.offset, Here(), Is(address), right);
  }
  const std::uint64_t behind = end <= FileEnd() ? std::max(end, last) : last;
  if (behind >= FileEnd()) return;
  const std::uint64_t left = FileEnd() - behind;
  table_ = Table::kFile;
  Report(image_.IsZero(behind, left) ? Code::kPadding : Code::kBytesBehind, behind, Here(),
         Plural(left, "byte"));
}

}  // namespace veska_tool
