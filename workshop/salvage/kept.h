// What is kept of a damaged file, in the bytes of the file.
#pragma once

#include <veska/layouts.h>
#include <veska/workshop/load.h>
#include <veska/workshop/salvage.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "basis/fields.h"
#include "map/findings.h"
#include "map/image_bytes.h"
#include "map/map.h"

namespace VESKA::workshop {

/// A damaged file with its map.
struct DamagedFile {
  DamagedFile(std::span<const unsigned char> bytes, std::size_t limit)
      : image(bytes), findings(limit), map(MapImage(bytes, findings)) {}

  ImageBytes image;
  Findings findings;
  ImageMap map;
};

/// The header of a table or a chain and its records.
struct KeptRecords {
  Bytes header;
  Bytes records;
};

struct KeptChain {
  std::string pointer;  ///< in the damaged file
  Bytes header;
  Bytes programs;
  std::vector<std::optional<Bytes>> cells;  ///< none where one is lost
  bool has_all_cells = true;
};

struct Kept {
  Bytes header;
  KeptRecords play_lists;
  KeptRecords movie;
  std::vector<Bytes> vobs;
  KeptRecords still;
  std::vector<Bytes> groups;
  Bytes audio_streams;
  std::vector<Bytes> audio_groups;
  KeptChain original;
  Bytes user_header;
  std::vector<KeptChain> user_chains;
  Bytes text_header;
  std::vector<Bytes> text_sets;
  Bytes manufacturer_header;
  std::vector<Bytes> manufacturers;
};

/// What is told of a salvage.
class Losses {
 public:
  /// Counts items of a table, `kept` of `all` of them.
  void Count(Table table, std::uint64_t kept, std::uint64_t all, const char* what);
  /// Something was lost or changed.
  void Add(std::string pointer, std::string what, std::string reason = {});
  void LoseTable(Table table) { At(table).is_lost = true; }
  SalvagedTable& At(Table table);

  bool IsEmpty() const { return is_empty_; }
  std::uint64_t Kept() const { return kept_; }
  std::vector<SalvagedTable> Take() { return std::move(tables_); }

 private:
  std::vector<SalvagedTable> tables_;  // in the order of the file
  std::uint64_t kept_ = 0;
  bool is_empty_ = true;
};

/// Which items are sure, and why the others are not.
Kept Keep(const DamagedFile& file, Losses& losses);
/// Brings the cells that programs count and the cell numbers in step with the cells that are kept.
void MendReferences(Kept& kept, Losses& losses);
/// A file of what is kept, which is still to be completed.
Bytes Write(const Kept& kept);

/// The field `name` of the record that stands at `at`.
template <class Record>
const Field& FieldOf(std::string_view name) {
  for (const Field& field : kFields<Record>) {
    if (name == field.name) return field;
  }
  return kFields<Record>[0];
}
template <class Record>
std::uint64_t GetField(const Bytes& bytes, std::string_view name, std::size_t at = 0) {
  const Field& field = FieldOf<Record>(name);
  return GetBigEndian(&bytes[at + field.offset], field.width);
}
template <class Record>
void SetField(Bytes& bytes, std::string_view name, std::uint64_t value, std::size_t at = 0) {
  const Field& field = FieldOf<Record>(name);
  SetBigEndian(&bytes[at + field.offset], field.width, value);
}

}  // namespace VESKA::workshop
