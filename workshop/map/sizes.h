// The sizes of what has no fixed one, by its first bytes.
#pragma once

#include <veska/records.h>

#include <cstdint>

#include "map/image_bytes.h"

namespace VESKA::workshop {

inline unsigned StillEntrySize(std::uint8_t type) {
  tag_S_VOB_ENT entry{};
  entry.S_VOB_ENT_TY = type;
  return entry.Size();
}
inline unsigned AudioEntrySize(std::uint8_t) { return kFileSize<tag_AA_ENT>; }

/// An entry point of a movie or a still cell.
inline unsigned MovieEntryPointSize(std::uint8_t type) {
  return static_cast<unsigned>(kFileSize<tag_M_C_EPI>) + (IsLongEntry(type) ? kEntryBlockSize : 0);
}
inline unsigned StillEntryPointSize(std::uint8_t type) {
  return static_cast<unsigned>(kFileSize<tag_S_C_EPI>) + (IsLongEntry(type) ? kEntryBlockSize : 0);
}

/// The text that stands at `at`, with its head.
inline std::uint64_t TextSize(const ImageBytes& image, std::uint64_t at) {
  return kFileSize<tag_IT_TXT> + image.Byte(at + offsetof(tag_IT_TXT, length));
}

/// True when the cell that stands at `at` is a still cell.
inline bool IsStillCell(const ImageBytes& image, std::uint64_t at) {
  return CellKind(image.Byte(at + offsetof(tag_M_C_GI, C_TY))) == CELL_STILL;
}

}  // namespace VESKA::workshop
