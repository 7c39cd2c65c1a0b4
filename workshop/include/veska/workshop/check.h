/// What is inconsistent in a management file, however damaged it is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "veska/workshop/export.h"
#include "veska/workshop/table.h"

namespace VESKA::workshop {

/// How bad a finding is.
enum class Severity : unsigned char {
  kNote,     ///< worth knowing
  kWarning,  ///< reads without loss, but completing and saving would change it
  kError     ///< contradicts itself, so that a reader misreads or loses something
};
/// "note", "warning", "error".
VESKA_WORKSHOP_API const char* NameOf(Severity severity);

/// What can be found. The values are for good: one that is no longer used is not given to anything
/// else.
enum class Code : std::uint16_t {
  kShortFile = 101,
  kIdentifier = 102,
  kDoesNotLoad = 103,
  kFileCutOff = 104,
  kFileEnd = 105,
  kPadding = 106,
  kBytesBehind = 107,
  kTooMuchShared = 108,

  kTableElsewhere = 201,
  kAddressOutside = 202,
  kOverlap = 203,
  kElsewhere = 204,
  kOrder = 205,
  kUnusedBytes = 206,
  kEndTooLow = 207,
  kEndTooHigh = 208,
  kEndBehind = 209,
  kTableMissing = 210,
  kChainMissing = 211,
  kEmptyTable = 212,

  kPastFile = 301,
  kCountAndRoom = 302,
  kPresenceValue = 303,
  kPresentButEmpty = 304,
  kPresentUncounted = 305,
  kTooManyCells = 306,
  kCellsOfNoProgram = 307,

  kPointToNoCell = 401,
  kUserPointToNoCell = 402,
  kPointNotSet = 403,

  kEntryKind = 501,
  kCellKind = 502,
  kWrongCellKind = 503,
  kEmptyVob = 504,
  kEmptyStillGroup = 505,
  kEmptyAudioGroup = 506,
  kNoVobus = 507,
  kZeroRecords = 508,

  kTextPastSet = 601,

  kNegativeLength = 701,

  kCompletingChanges = 801
};
/// "V101".
VESKA_WORKSHOP_API std::string NameOf(Code code);

/// What stands in the catalogue of all that can be found.
struct CatalogueEntry {
  Code code;
  Severity severity;
  const char* table;  ///< where it can be found, for people
  const char* title;  ///< what is wrong
};
/// All that can be found, in the order of the codes.
VESKA_WORKSHOP_API std::span<const CatalogueEntry> Catalogue();
/// What stands there of a code.
VESKA_WORKSHOP_API const CatalogueEntry& EntryOf(Code code);

/// One thing that is wrong in a file.
struct Finding {
  Code code;             ///< EntryOf(code) has its severity and what is wrong
  Table table;           ///< in which it is
  std::string pointer;   ///< its place as in the file's JSON document: "/movie/vobs/2/time_map"
  std::uint64_t offset;  ///< of the bytes in question, from the start of the file
  std::string stands;    ///< what stands there
  std::string right;     ///< what would be right; empty when that cannot be told
};

/// How much of a table can be read. The values are for good.
enum class Condition : unsigned char {
  kAbsent,
  kSound,    ///< without an error
  kDamaged,  ///< with errors, in part
  kLost      ///< nothing but perhaps its header
};
/// "absent", "sound", "damaged", "lost".
VESKA_WORKSHOP_API const char* NameOf(Condition condition);

/// What a table came to.
struct TableSummary {
  Table table;
  Condition condition = Condition::kAbsent;
  std::uint64_t offset = 0;    ///< in the file
  std::uint64_t size = 0;      ///< in bytes, up to the end of its last structure
  std::uint32_t readable = 0;  ///< of its play lists, VOBs, groups, cells, text sets, ...
  std::uint32_t items = 0;     ///< how many of them there are
};

/// What an examination came to.
struct Examination {
  std::uint64_t size = 0;               ///< of the file, in bytes
  bool loads = false;                   ///< the library loads the file
  std::size_t errors = 0;               ///< found, kept in `findings` or not
  std::size_t warnings = 0;             ///< as many
  std::size_t notes = 0;                ///< as many
  std::vector<TableSummary> tables;     ///< one for each table, in their order in a file
  std::vector<Finding> findings;        ///< the worst first, then by offset
  std::map<Code, std::size_t> omitted;  ///< how many findings of a code were not kept
};

/// Examines a file of any bytes, in time and memory proportional to their number, and keeps the
/// first `limit` findings of each code (0: all). Repairs nothing, refuses nothing: what is no
/// management file has findings. Throws std::bad_alloc alone.
VESKA_WORKSHOP_API Examination Check(std::span<const unsigned char> bytes, std::size_t limit = 20);

/// The lines that are printed for people, each with a line end; `name` is the file's.
VESKA_WORKSHOP_API std::string ToText(const Examination& examination, std::string_view name);

/// An examination and the name of its file.
struct NamedExamination {
  std::string name;
  Examination examination;
};
/// The document that docs/check.md describes, in lines. What is no UTF-8 in a name is replaced.
VESKA_WORKSHOP_API std::string ToJson(std::span<const NamedExamination> files);

}  // namespace VESKA::workshop
