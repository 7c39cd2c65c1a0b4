// A file, its map and what was found in it: what the rules work on.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "map/map.h"

namespace VESKA::workshop {

struct Examined : MappedFile {
  Examined(std::span<const unsigned char> file_bytes, std::size_t limit)
      : MappedFile(file_bytes, limit), bytes(file_bytes) {}

  /// Adds a finding on a structure or, with a number from 1, on that record of it.
  void Report(Code code, const Structure& structure, std::uint64_t offset, std::string stands,
              std::string right = {}, std::uint32_t number = 0);
  bool HasErrors(Table table) const { return findings.Count(Severity::kError, table) != 0; }

  std::span<const unsigned char> bytes;
  bool loads = false;  ///< the library loads the file
};

/// The rules that the map alone does not settle.
void CheckPlacing(Examined& file);     ///< what overlaps, what belongs to nothing
void CheckContents(Examined& file);    ///< of each structure
void CheckReferences(Examined& file);  ///< cell points, the cells of programs
void CheckLoading(Examined& file);     ///< by the library, and what completing would change

/// Examines a file of any bytes, in time and memory proportional to their number.
Examined Examine(std::span<const unsigned char> bytes, std::size_t limit);

}  // namespace VESKA::workshop
