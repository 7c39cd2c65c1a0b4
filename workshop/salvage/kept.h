// What is kept of a damaged file, in the bytes of the file.
#pragma once

#include <veska/workshop/load.h>
#include <veska/workshop/salvage.h>

#include <string>
#include <vector>

#include "map/map.h"

namespace VESKA::workshop {

/// What is kept of a structure.
struct Kept {
  Part part;
  std::string pointer;      ///< in the damaged file
  Bytes bytes = {};         ///< its own
  std::uint64_t count = 1;  ///< of the records or entries that these are; of an index, as stated
  bool is_lost = false;     ///< an item that is not kept, and yet has its number
  /// What it is made of: of a table or a chain, the header and the lists; of an index, what it
  /// names.
  std::vector<Kept> parts = {};

  /// Null when there is no such part.
  Kept* Find(Part which);
};
/// The file's tables, in the order of `Table`; that of the file as a whole is empty.
using KeptTables = std::vector<Kept>;

/// What is told of a salvage.
class Losses {
 public:
  /// Counts items of a table, `kept` of `all` of them.
  void Count(Table table, std::uint64_t kept, std::uint64_t all, const char* what);
  /// Something was lost or changed.
  void Add(std::string pointer, std::string what, std::string reason = {});
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
KeptTables Keep(const MappedFile& file, Losses& losses);
/// Brings the cells that programs count and the cell numbers in step with the cells that are kept.
void MendReferences(KeptTables& tables, Losses& losses);
/// A file of what is kept, which is still to be completed.
Bytes Write(const KeptTables& tables);

}  // namespace VESKA::workshop
