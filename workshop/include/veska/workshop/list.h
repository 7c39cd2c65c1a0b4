/// What is on a disc: the short answer, for a person and as rows of a table.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "veska/workshop/export.h"
#include "veska/workshop/text.h"

namespace VESKA::workshop {

/// A program of the original chain.
struct ListedProgram {
  std::string text;    ///< as people are shown it
  std::string kind;    ///< "movie", "still", "mixed" or "none"
  int first_cell = 0;  ///< from 1
  int cells = 0;       ///< that are there
  double seconds = 0;  ///< between the clock values of its movie cells
};

/// A play list.
struct ListedPlayList {
  std::string text;
  int cell = 0;  ///< the cell of the original chain that it names, 0 for none
};

/// How sound what is listed is. The values are for good.
enum class DiscStatus : int {
  kSound = 0,    ///< loads, and an examination finds no error
  kDamaged = 1,  ///< what is listed is what loads, or can be salvaged
  kBad = 2       ///< nothing can be read
};

/// What is on a disc.
struct Listing {
  DiscStatus status = DiscStatus::kBad;
  std::string problem;  ///< what is damaged, on one line; empty for a sound one
  std::string text;     ///< of the disc
  std::vector<ListedProgram> programs;
  std::vector<ListedPlayList> play_lists;
  int cells = 0;
  int user_chains = 0;
  int vobs = 0;
  int still_groups = 0;
  double seconds = 0;          ///< of all programs
  std::uint64_t bytes = 0;     ///< of movies, still pictures and their audio, by their pack counts
  std::string recorded_first;  ///< ISO 8601 without a zone, of the movie VOBs; empty when not known
  std::string recorded_last;
  std::size_t errors = 0;  ///< that an examination finds
  std::size_t warnings = 0;
};

/// Lists a management file of any bytes; one that does not load is salvaged. Time and memory in
/// proportion to the bytes.
VESKA_WORKSHOP_API Listing ListingOf(std::span<const unsigned char> bytes,
                                     const DecodeText& decode = DecodeUtf8);
/// The listing of something that could not be read, for this reason.
VESKA_WORKSHOP_API Listing BadListing(std::string problem);

/// The listing on one screen, in lines; `name` names the disc.
VESKA_WORKSHOP_API std::string ToText(const Listing& listing, std::string_view name);

/// What a row of a table is about.
enum class RowOf : int { kDisc = 0, kProgram = 1 };

/// The columns of a row, in order. They are for good: a new one comes at the end.
VESKA_WORKSHOP_API std::span<const char* const> Columns(RowOf of);

///@{
/// The rows of a listing, each with a line end: one for the disc, or one for each program. As CSV
/// (RFC 4180, lines ended by a line feed, without heads) or as JSON objects. Of something that
/// cannot be read, one row with the reason in either case.
VESKA_WORKSHOP_API std::string ToCsv(const Listing& listing, std::string_view name, RowOf of);
VESKA_WORKSHOP_API std::string ToJsonLines(const Listing& listing, std::string_view name, RowOf of);
///@}
/// The line of CSV that names the columns.
VESKA_WORKSHOP_API std::string CsvHeads(RowOf of);

}  // namespace VESKA::workshop
