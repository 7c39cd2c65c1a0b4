/// Finds management files in the image of a disc, whatever has become of its file system.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "veska/workshop/load.h"

namespace VESKA::workshop {

/// The logical sector of a DVD, in bytes: every file on it starts at a multiple of this.
inline constexpr std::uint64_t kSectorSize = 2048;

/// Reads the bytes at `offset` of an image into `to`, and returns how many: fewer only at the end
/// of the image. What the medium does not give is to be filled with zeros. May throw.
using ReadBytes = std::function<std::size_t(std::uint64_t offset, std::span<unsigned char> to)>;

/// A management file in an image.
struct Located {
  std::uint64_t offset = 0;  ///< in bytes from the start of the image
  std::uint64_t size =
      0;                  ///< by its own end address; where that is not credible, what is looked at
  bool is_sound = false;  ///< it loads, and an examination finds no error
  bool loads = false;
  bool can_be_salvaged = false;  ///< something of it can be read
  std::size_t same_as = 0;  ///< the number, from 1, of an earlier one with the same bytes; 0: none
};

/// Looks at the start of every sector of an image for the identifier of a management file, in one
/// pass. Where the file lies in several extents, what follows the first one is not its own, and it
/// counts as damaged. `went` is told how many bytes were looked at, and stops the search by
/// returning false; what was found until then is returned. Takes a fixed buffer, and the memory of
/// one management file at a time.
std::vector<Located> VESKA_WORKSHOP_API
Locate(const ReadBytes& read, const std::function<bool(std::uint64_t bytes)>& went = {});

/// What begins at `offset` of an image; a `size` of 0 when no management file does.
VESKA_WORKSHOP_API Located LocatedAt(const ReadBytes& read, std::uint64_t offset);

/// True when bytes begin with the identifier of a management file.
VESKA_WORKSHOP_API bool BeginsLikeOne(std::span<const unsigned char> bytes);

/// The bytes of a management file that was located.
VESKA_WORKSHOP_API Bytes ReadLocated(const ReadBytes& read, const Located& located);

}  // namespace VESKA::workshop
