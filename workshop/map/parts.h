// What the structures of a file can be, and how large.
#pragma once

#include <veska/records.h>

#include <cstdint>
#include <span>
#include <string>

#include "basis/tables.h"
#include "map/image_bytes.h"

namespace VESKA::workshop {

/// What a structure is.
enum class Part : unsigned char {
  kTable,       ///< a whole table: the structures below belong to one
  kFileHeader,  ///< in no table
  kPlayListHeader,
  kPlayLists,
  kMovieHeader,
  kMovieStreams,
  kVobIndex,
  kVob,
  kVobInfo,
  kSeamless,
  kAudioGaps,
  kTimeMap,
  kTimeEntries,
  kVobus,
  kStillHeader,
  kStillStreams,
  kGroupIndex,
  kStillGroup,
  kGroupInfo,
  kStillEntries,
  kAudioStreams,
  kAudioIndex,
  kAudioGroup,
  kAudioGroupInfo,
  kAudioEntries,
  kUserHeader,
  kUserIndex,
  kUserChain,
  kChainHeader,
  kPrograms,
  kCellIndex,
  kCell,
  kMovieCellInfo,
  kStillCellInfo,
  kEntryPoints,
  kTextHeader,
  kTextIndex,
  kTextSet,
  kManufacturerHeader,
  kManufacturerIndex,
  kManufacturer,
  kManufacturerInfo,
  kManufacturerData
};

/// What a part is made of.
enum class Role : unsigned char {
  kWhole,    ///< other structures
  kHeader,   ///< one record
  kRun,      ///< records of one length
  kEntries,  ///< entries whose own bytes tell their length
  kIndex,    ///< a count and addresses
  kBytes
};

/// The field that counts the records, entries or addresses of a part. Where an index begins with
/// its own count, the field says with 0 or 1 whether it is there.
struct CountField {
  Part in = Part::kTable;  ///< the header that holds it
  const char* by = nullptr;
};

/// What is known of a part, in an order that rows can be read in.
// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding)
struct PartInfo {
  Part part;
  const char* key;  ///< that it adds to the pointer of what it belongs to; none where its fields
                    ///< are those of the latter
  std::span<const Field> fields;  ///< of its record; of an index, its own count
  Role role;
  CountField counted = {};
  bool is_item = false;        ///< what people count in a table
  bool is_never_zero = false;  ///< a record of zeros says nothing
};
const PartInfo& InfoOf(Part part);
std::span<const PartInfo> Parts();
/// What a table, or the file, begins with.
Part HeaderOf(Table table);
/// The size of a part's record in the file; 1 for parts that are runs of bytes.
std::uint64_t RecordSize(Part part);

/// A number of the file that may turn out to be wrong.
struct FileNumber {
  const char* name = "";
  std::uint64_t offset = 0;
  std::uint64_t value = 0;
  std::uint64_t largest = 0;  ///< that it can hold
};
/// "VOBU_ENT_Ns is 300"
std::string Is(const FileNumber& number);

/// The number field of a record that stands at `at`.
FileNumber NumberAt(const ImageBytes& image, const Field& field, std::uint64_t at);
/// What counts a part in the header that stands at `at`.
FileNumber CountOf(const ImageBytes& image, Part part, std::uint64_t at);

/// What an index names, and how.
struct IndexInfo {
  Part index;
  Part item;
  std::uint64_t least;      ///< the fewest bytes that an item takes
  const char* address;      ///< the name of one
  unsigned width = 4;       ///< of an address, which counts from the header that counts the index
  unsigned size_width = 0;  ///< of the item's size, which may stand behind its address
};
const IndexInfo& IndexInfoOf(Part index);

// The sizes of what has no fixed one, by its first bytes.

inline unsigned StillEntrySize(std::uint8_t type) {
  tag_S_VOB_ENT entry{};
  entry.S_VOB_ENT_TY = type;
  return entry.Size();
}
inline unsigned AudioEntrySize(std::uint8_t) { return kFileSize<tag_AA_ENT>; }

/// What the VOB that stands at `at` says of the blocks that it has.
inline tag_M_VOB_GI VobFlags(const ImageBytes& image, std::uint64_t at) {
  tag_M_VOB_GI info{};
  info.VOB_TY[1] = image.Byte(at + offsetof(tag_M_VOB_GI, VOB_TY) + 1);
  return info;
}

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
