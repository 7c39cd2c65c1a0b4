// What can be wrong with a management file: the catalogue, and what was found.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace veska_tool {

/// The parts of a management file, in the order in which they are written.
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
inline constexpr std::size_t kTables = 9;
const char* NameOf(Table table);

enum class Severity : unsigned char {
  kNote,     ///< worth knowing
  kWarning,  ///< reads without loss, but completing and saving would change it
  kError     ///< contradicts itself, so that a reader misreads or loses something
};
const char* NameOf(Severity severity);

/// The codes are for good: one that is no longer used is not given to anything else.
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

struct CatalogueEntry {
  Code code;
  Severity severity;
  const char* table;  ///< where it can be found
  const char* title;
};

/// All that can be found, in the order of the codes.
std::span<const CatalogueEntry> Catalogue();
const CatalogueEntry& EntryOf(Code code);
/// "V101".
std::string NameOf(Code code);

struct Finding {
  Code code;
  Table table;
  std::string path;      ///< "movie table / VOB 3 / time map"
  std::uint64_t offset;  ///< in the file
  std::string stands;    ///< what stands there
  std::string right;     ///< what would be right; empty when that cannot be told
};

/// What was found in a file. Counts everything and keeps the first findings of each code, so that a
/// file with 60,000 bad references needs neither the memory nor the reader's patience for all.
class Findings {
 public:
  /// Keeps `limit` findings of each code.
  explicit Findings(std::size_t limit) : limit_(limit) {}

  void Add(Finding finding);

  std::span<const Finding> Kept() const { return kept_; }
  std::size_t Count(Code code) const;
  std::size_t Count(Severity severity) const;
  std::size_t Count(Severity severity, Table table) const;
  /// The error that was found first in a table, kept whatever the limit; null when there is none.
  const Finding* FirstError(Table table) const;
  /// How many findings of `code` were not kept.
  std::size_t Omitted(Code code) const;
  /// Orders what is kept by severity, the worst first, then by offset.
  void Sort();

  /// What was found up to some point, to go back to.
  struct Mark {
    std::size_t kept = 0;
    std::vector<std::size_t> counts;
    std::array<std::array<std::size_t, 3>, kTables> by_table{};
    std::array<std::optional<Finding>, kTables> first_errors;
  };
  Mark Here() const { return {kept_.size(), counts_, by_table_, first_errors_}; }
  void Return(const Mark& mark);

 private:
  std::size_t limit_;
  std::vector<Finding> kept_;
  std::vector<std::size_t> counts_ = std::vector<std::size_t>(Catalogue().size());
  std::array<std::array<std::size_t, 3>, kTables> by_table_{};  // by severity
  std::array<std::optional<Finding>, kTables> first_errors_;
};

}  // namespace veska_tool
