// What the walks over the tables of a file work with: the map and the findings that they fill, and
// what is known of where the tables stand.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "map/findings.h"
#include "map/image_bytes.h"
#include "map/map.h"

namespace VESKA::workshop {

/// Where a structure has to end, when its own counts let it end elsewhere.
struct Fit {
  std::uint64_t end = 0;  ///< 0: its counts hold
  bool crowded = false;   ///< by its counts it would run into what starts at `end`
};

/// Where the structures of a table or a chain should end: by its own end address (0 for none), and
/// because something else starts there.
struct Room {
  std::uint64_t own = 0;
  std::uint64_t next = 0;
};

/// The size of an entry by its first byte.
using EntrySize = unsigned (*)(std::uint8_t type);

/// Thrown when the structures read come to many times the bytes of the file, which they can only
/// when they share them.
struct BudgetSpent {};

class Walk {
 public:
  Walk(std::span<const unsigned char> bytes, ImageMap& map, Findings& findings);

  std::uint64_t claimed_end = 0;                 ///< of the file by its header, if that is credible
  std::vector<std::uint64_t> table_starts = {};  ///< of sound tables, and the file's end; ascending
  std::uint64_t end = 0;                         ///< of the table before
  std::uint64_t own_end = 0;   ///< of the table by its end address, 0 when that is no place
  Table table = Table::kFile;  ///< that is being added to

  const ImageBytes& Image() const { return image_; }
  std::uint64_t FileEnd() const { return image_.Size(); }
  ImageMap& Map() { return map_; }
  Findings& Found() { return findings_; }
  bool TableHasErrors() const { return findings_.Count(Severity::kError, table) != 0; }

  /// True when a table starts at `offset`, or the file ends there.
  bool IsTableStart(std::uint64_t offset) const {
    return std::binary_search(table_starts.begin(), table_starts.end(), offset);
  }
  /// Where the next table behind `offset` starts.
  std::uint64_t NextTable(std::uint64_t offset) const {
    const auto next = std::upper_bound(table_starts.begin(), table_starts.end(), offset);
    return next != table_starts.end() ? *next : claimed_end;
  }

  /// The number field of a record that stands at `at`.
  FileNumber Number(const Field& field, std::uint64_t at) const {
    return NumberAt(image_, field, at);
  }
  FileNumber Number(Part part, std::string_view name, std::uint64_t at) const {
    return Number(FieldNamed(InfoOf(part).fields, name), at);
  }
  /// What counts a part in the header that stands at `at`.
  FileNumber CountOf(Part part, std::uint64_t at) const {
    return workshop::CountOf(image_, part, at);
  }

  /// Accounts for the work of reading `bytes`. What is read more than once counts each time.
  void Spend(std::uint64_t bytes);

  /// Adds a structure of one record, or of bytes; what lies behind the end of the file is reported.
  std::int32_t Add(Part part, std::uint64_t offset, std::uint64_t size, std::uint32_t number = 0);
  std::int32_t Add(Part part, std::uint64_t offset) { return Add(part, offset, RecordSize(part)); }
  /// Adds one that is made of the structures that `action` adds, and returns the end that it does.
  template <class Action>
  std::uint64_t AddWhole(Part part, std::uint64_t offset, std::uint32_t number, Action&& action) {
    const std::int32_t outside = parent_;
    parent_ = Append(part, offset, 0, number);
    const std::uint64_t whole_end = action();
    SetSize(parent_);
    parent_ = outside;
    return whole_end;
  }
  /// Adds `count` records of one length, as far as the file goes. Returns where they end.
  std::uint64_t AddRun(Part part, std::uint64_t offset, const FileNumber& count);
  /// Adds what a count counts, of which the file holds `there`, and reports it when it is cut.
  void AddCounted(Part part, std::uint64_t offset, std::uint64_t size, const FileNumber& count,
                  std::uint64_t there);
  /// Adds one that stands nowhere, which is `counted` records or one structure.
  void AddLost(Part part, std::uint32_t number, std::uint64_t counted = 1);
  /// Sets the state of the structure that is being added to.
  void SetState(State state);

  void Report(Code code, std::uint64_t offset, std::string pointer, std::string stands,
              std::string right = {});
  /// Reports a number, at the place that is being added to.
  void Report(Code code, const FileNumber& number, const std::string& more = {},
              std::string right = {}) {
    Report(code, number.offset, Here(), Is(number) + more, std::move(right));
  }
  void ReportCount(const FileNumber& count, std::uint64_t right);
  /// Reports that a structure has to end at `fit.end` and cannot with any one count.
  void ReportCrowded(const FileNumber& count, const Fit& fit);
  std::string Here() const;
  std::string PointerOf(Part part, std::uint32_t number = 0) const;

  /// What was mapped and found up to some point, to go back to.
  struct Mark {
    std::size_t structures;
    Findings::Counts findings;
    std::int32_t parent;
    Table table;
  };
  Mark SetMark() const;
  void Return(const Mark& mark);

 private:
  std::int32_t Append(Part part, std::uint64_t offset, std::uint64_t size, std::uint32_t number);
  void SetSize(std::int32_t position);
  Structure& At(std::int32_t position) {
    return map_.structures[static_cast<std::size_t>(position)];
  }

  ImageBytes image_;
  ImageMap& map_;
  Findings& findings_;
  std::uint64_t budget_;
  std::int32_t parent_ = -1;
};

/// Where `count` entries whose size their first byte tells end; past the file when it ends in them.
std::uint64_t EndOfEntries(Walk& walk, std::uint64_t at, std::uint64_t count, EntrySize size);
/// Adds such entries, and returns where they end. When they have to end elsewhere, the count for
/// which they do is reported as right and taken.
std::uint64_t AddEntries(Walk& walk, Part part, std::uint64_t at, FileNumber count, EntrySize size,
                         const Fit& fit);

/// The walks over the tables that stand at `at`, behind the header where they have one: they return
/// the end of the last structure.
std::uint64_t MovieTable(Walk& walk, std::uint64_t at, const Room& room);
std::uint64_t StillTable(Walk& walk, std::uint64_t at, const Room& room);
std::uint64_t OriginalChain(Walk& walk, std::uint64_t at, const Room& room);
std::uint64_t UserChains(Walk& walk, std::uint64_t at, const Room& room);
std::uint64_t Texts(Walk& walk, std::uint64_t at, const Room& room);
std::uint64_t Manufacturers(Walk& walk, std::uint64_t at, const Room& room);

}  // namespace VESKA::workshop
