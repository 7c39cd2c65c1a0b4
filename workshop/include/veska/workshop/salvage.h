/// What can still be read of a damaged management file.
#pragma once

#include <veska/CVMGInfo.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "veska/workshop/check.h"
#include "veska/workshop/export.h"
#include "veska/workshop/table.h"

namespace VESKA::workshop {

/// How many of the items of one kind were kept.
struct KeptItems {
  std::string what;  ///< "cells"
  std::uint64_t kept = 0;
  std::uint64_t all = 0;  ///< as the file counts them, as far as that can be told
};

/// Something that was lost or changed.
struct Loss {
  std::string pointer;  ///< its place as in the JSON document of the whole file
  std::string what;     ///< "kept with 3 of 8 entry points"
  std::string reason;   ///< why, where that can be told; else empty
};

/// What was made of one table.
struct SalvagedTable {
  Table table = Table::kFile;
  bool is_lost = false;           ///< nothing of it could be read
  std::vector<KeptItems> counts;  ///< of the kinds of item that it has
  std::vector<Loss> losses;
};

/// What was salvaged of a file.
struct Salvaged {
  std::unique_ptr<CVMGInfo> info;     ///< completed; null when nothing could be read
  bool is_whole = false;              ///< nothing was lost and nothing taken otherwise
  std::vector<SalvagedTable> tables;  ///< those that the file has, in their order
  std::vector<Finding> otherwise;     ///< what was taken as `right` instead of as it stands
};

/// Reads the tables of a file of any bytes, record by record, as far as it is sure what they are,
/// and invents nothing: every item of the result stands in the file. A count or an address that
/// contradicts all others is taken as they imply; what refers to a cell that is lost refers to
/// none. The result loads once it is saved, and Check finds no error in it. Takes time and memory
/// in proportion to the bytes. Throws std::bad_alloc alone.
VESKA_WORKSHOP_API Salvaged Salvage(std::span<const unsigned char> bytes);

/// The lines that are printed for people, each with a line end.
VESKA_WORKSHOP_API std::string ToText(const Salvaged& salvaged);

}  // namespace VESKA::workshop
