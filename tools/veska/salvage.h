// What can still be read of a damaged management file.
#pragma once

#include <veska/CVMGInfo.h>

#include <memory>
#include <span>
#include <string>

namespace veska_tool {

struct SalvageResult {
  std::unique_ptr<VESKA::CVMGInfo> info;  ///< completed; null when nothing could be read
  bool is_whole = false;                  ///< nothing was lost and nothing had to be changed
  std::string report;                     ///< for people; lines
};

/// Reads the tables of a file of any bytes, record by record, as far as it is sure what they are,
/// and invents nothing. A count or an address that contradicts all others is taken as they imply.
/// What refers to a cell that is lost refers to none.
SalvageResult SalvageImage(std::span<const unsigned char> bytes);

}  // namespace veska_tool
