/// Why loading or saving failed.
#pragma once

#include <veska/export.h>

#include <cstdint>
#include <string>

namespace VESKA {

/// What went wrong. The numbers are stable; further ones may follow the last.
enum class FailureKind : std::uint8_t {
  kNone = 0,               ///< nothing
  kNoData = 1,             ///< the pointer to the image is null
  kNoName = 2,             ///< the name of the file is null, empty or none of the platform's
  kNoFile = 3,             ///< there is no file of that name
  kNotAFile = 4,           ///< it is a folder, a device or something else that is no regular file
  kUnreadable = 5,         ///< the system does not open it, or does not read all of it
  kEmpty = 6,              ///< it has no bytes
  kTooLarge = 7,           ///< it has 4 GiB or more, or would have
  kNotManagement = 8,      ///< it does not begin with "DVD_RTR_VMG0"
  kEndsWithinTable = 9,    ///< a table reaches past the end of the image
  kNegativeLength = 10,    ///< the addresses of two manufacturer records leave less than none
  kOverBudget = 11,        ///< a table needs more memory than its share, `kBytesPerImageByte`
  kNoMemory = 12,          ///< the system has no more memory
  kWouldNotReadBack = 13,  ///< a saved file would hold something else than the object
  kPadding = 14,           ///< an end address claims more than 32 KiB beyond what there is
  kReadOnly = 15,          ///< the file is write-protected
  kLocked = 16,            ///< another program is writing the file
  kUnwritable = 17         ///< the system does not open it for writing, or does not write all of it
};

/// The tables of a file, in its order. The numbers are stable.
enum class FailureTable : std::uint8_t {
  kNone = 0,
  kHeader = 1,
  kPlayLists = 2,
  kMovie = 3,
  kStill = 4,
  kOriginalChain = 5,
  kUserChains = 6,
  kTexts = 7,
  kManufacturers = 8
};

/// The lists of the tables. The numbers are stable.
enum class FailureList : std::uint8_t {
  kNone = 0,
  kPlayLists = 1,
  kMovieStreams = 2,
  kMovieVobs = 3,
  kStillStreams = 4,
  kStillGroups = 5,
  kAudioStreams = 6,
  kAudioGroups = 7,
  kPrograms = 8,
  kCells = 9,
  kUserChains = 10,
  kTextItems = 11,
  kManufacturers = 12
};

/// The reason of a failed load or save, see `CVMGInfo::GetFailure`.
struct Failure {
  FailureKind kind = FailureKind::kNone;

  /// The table that failed, of the kinds from `kNotManagement` on that concern one.
  FailureTable table = FailureTable::kNone;

  /// Of `kWouldNotReadBack`: the list of that table and the 0-based position in it of the record
  /// that would be lost, or `kNone` and -1 where it is no record.
  FailureList list = FailureList::kNone;
  std::int32_t index = -1;

  /// Of a failed load: where in the image stands what could not be read; of `kOverBudget`, what was
  /// to be built.
  std::uint64_t offset = 0;

  /// The system's number for it, `errno` or what `GetLastError` gives on Windows; 0 for none.
  std::int32_t system_error = 0;

  bool operator==(const Failure&) const = default;
};

/// One English sentence without full stop, to stand behind the name of the file and a colon. The
/// words of the system are in its own language. Throws `std::bad_alloc`.
VESKA_API std::string Describe(const Failure& failure);

}  // namespace VESKA
