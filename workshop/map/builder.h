// What all walks over the tables of a file share: the map and the findings that they fill.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "map/findings.h"
#include "map/image_bytes.h"
#include "map/map.h"

namespace VESKA::workshop {

/// A number of the file that may turn out to be wrong.
struct FileNumber {
  const char* name = "";
  std::uint64_t offset = 0;
  std::uint64_t value = 0;
};
/// "VOBU_ENT_Ns is 300"
std::string Is(const FileNumber& number);

/// Where a structure has to end, when its own counts let it end elsewhere.
struct Fit {
  std::uint64_t end = 0;  ///< 0: its counts hold
  bool crowded = false;   ///< by its counts it would run into what starts at `end`
};

/// The size of an entry by its first byte.
using EntrySize = unsigned (*)(std::uint8_t type);

class MapBuilder {
 public:
  /// Thrown when the structures read come to many times the bytes of the file, which they can only
  /// when they share them.
  struct BudgetSpent {};

  MapBuilder(std::span<const unsigned char> bytes, ImageMap& map, Findings& findings);

  /// Accounts for the work of reading `bytes`. What is read more than once counts each time.
  void Spend(std::uint64_t bytes);

  /// Adds a structure of one record, or of bytes; what lies behind the end of the file is reported.
  std::int32_t Add(Part part, std::uint64_t offset, std::uint64_t size, std::uint32_t number = 0);
  /// Adds one that is made of the structures that `action` adds.
  template <class Action>
  void AddWhole(Part part, std::uint64_t offset, std::uint32_t number, Action&& action) {
    const std::int32_t outside = parent_;
    parent_ = Append(part, offset, 0, number);
    action();
    SetSize(parent_);
    parent_ = outside;
  }
  /// Adds `count` records of one length, as far as the file goes. Returns where they end.
  std::uint64_t AddRun(Part part, std::uint64_t offset, const FileNumber& count);
  /// Adds what a count counts, of which the file holds `there`, and reports it when it is cut.
  void AddCounted(Part part, std::uint64_t offset, std::uint64_t size, const FileNumber& count,
                  std::uint64_t there);
  /// Adds one that stands nowhere, which is `counted` records or one structure.
  void AddLost(Part part, std::uint32_t number, std::uint32_t counted = 1);
  /// Sets the state of the structure that is being added to.
  void SetState(State state);

  /// The number field of a record that stands at `at`.
  template <class Record>
  FileNumber Number(std::string_view name, std::uint64_t at) const {
    for (const VESKA::Field& field : VESKA::kFields<Record>) {
      if (name == field.name) return NumberOf(field, at);
    }
    return {};
  }
  FileNumber NumberOf(const VESKA::Field& field, std::uint64_t at) const {
    return {field.name, at + field.offset, image_.Number(at + field.offset, field.width)};
  }

  void Report(Code code, std::uint64_t offset, std::string pointer, std::string stands,
              std::string right = {});
  void ReportCount(const FileNumber& count, std::uint64_t right);
  /// Reports that a structure has to end at `fit.end` and cannot with any one count.
  void ReportCrowded(const FileNumber& count, const Fit& fit);
  std::string Here() const;
  std::string PointerOf(Part part, std::uint32_t number = 0) const;
  bool TableHasErrors() const { return findings_.Count(Severity::kError, table_) != 0; }

  std::uint64_t FileEnd() const { return image_.Size(); }

  /// What was mapped and found up to some point, to go back to.
  struct Mark {
    std::size_t structures;
    Findings::Mark findings;
    std::int32_t parent;
    Table table;
  };
  Mark SetMark() const;
  void Return(const Mark& mark);

  const ImageBytes& Image() const { return image_; }
  ImageMap& Map() { return map_; }
  Findings& Found() { return findings_; }
  /// The table that is being added to.
  Table& CurrentTable() { return table_; }

 private:
  std::int32_t Append(Part part, std::uint64_t offset, std::uint64_t size, std::uint32_t number);
  void SetSize(std::int32_t position);
  Structure& At(std::int32_t position) {
    return map_.structures[static_cast<std::size_t>(position)];
  }

  ImageBytes image_;
  ImageMap& map_;
  Findings& findings_;
  Table table_ = Table::kFile;
  std::uint64_t budget_;
  std::int32_t parent_ = -1;
};

/// Where `count` entries whose size their first byte tells end; past the file when it ends in them.
std::uint64_t EndOfEntries(MapBuilder& build, std::uint64_t at, std::uint64_t count,
                           EntrySize size);
/// Adds such entries, and returns where they end. When they have to end elsewhere, the count for
/// which they do is reported as right and taken.
std::uint64_t AddEntries(MapBuilder& build, Part part, std::uint64_t at, FileNumber count,
                         std::uint64_t largest, EntrySize size, const Fit& fit);

}  // namespace VESKA::workshop
