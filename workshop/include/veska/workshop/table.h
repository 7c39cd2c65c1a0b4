/// The tables of a management file, and how the places in them are told.
#pragma once

#include <string>
#include <string_view>

#include "veska/workshop/export.h"

namespace VESKA::workshop {

/// The parts of a management file, in the order in which they are written. The values are for good.
enum class Table : unsigned char {
  kFile,  ///< the file as a whole
  kHeader,
  kPlayLists,
  kMovie,
  kStill,
  kOriginalChain,
  kUserChains,
  kTexts,
  kManufacturers
};

/// The table's key in a file's JSON document: "movie", "original_chain"; "file" for kFile.
VESKA_WORKSHOP_API const char* NameOf(Table table);

/// A place in a file's JSON document for people: "/movie/vobs/2/time_map" is
/// "movie / vob 3 / time_map". Items are numbered from 1. The whole document is "file".
VESKA_WORKSHOP_API std::string InWords(std::string_view pointer);

}  // namespace VESKA::workshop
