// What is on a disc, from the object and from what an examination finds.
#include <veska/time_functions.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <utility>

#include "basis/text.h"
#include "basis/units.h"
#include "veska/workshop/check.h"
#include "veska/workshop/list.h"
#include "veska/workshop/load.h"
#include "veska/workshop/salvage.h"

namespace VESKA::workshop {
namespace {

constexpr unsigned kNoCellNumber = 0xFFFF;

/// The time between the clock values of a movie cell; 0 when it has none.
double SecondsOf(CBaseCell& cell) {
  if (cell.GetType() != CELL_MOVIE) return 0;
  const tag_M_C_GI& header = static_cast<CMovieCell&>(cell).GetHeader();
  if (header.time_12.base <= header.time_6.base) return 0;
  return (header.time_12.base - header.time_6.base) / kClockRate;
}

void ListPrograms(CPGCInfo& chain, const DecodeText& decode, Listing& listing) {
  static constexpr const char* kKinds[] = {"movie", "still", "mixed", "none"};
  int next = 0;
  for (int i = 0; i < chain.GetPGCount(); ++i) {
    const tag_PGI& program = *chain.GetPGNode(i);
    const int end = std::min(next + program.C_Ns, chain.GetCellCount());
    ListedProgram listed{.text = ShownText(program.text_4, decode),
                         .kind = kKinds[chain.GetProgramVOBType(i)],
                         .first_cell = next + 1,
                         .cells = end - next};
    for (; next < end; ++next) listed.seconds += SecondsOf(*chain.GetCellNode(next)->CI);
    listing.seconds += listed.seconds;
    listing.programs.push_back(std::move(listed));
  }
  listing.cells = chain.GetCellCount();
}

void ListPlayLists(CPlayListSRPTable& table, const DecodeText& decode, Listing& listing) {
  for (int i = 0; i < table.GetCount(); ++i) {
    const tag_PL_SRP& play_list = *table[i];
    const unsigned cell = play_list.cell_point.cell;
    listing.play_lists.push_back(
        {ShownText(play_list.text_8, decode), cell == kNoCellNumber ? 0 : static_cast<int>(cell)});
  }
}

/// ISO 8601; empty where the bytes, in which recorders put the recording time, show no date.
std::string RecordingTime(const unsigned char* bytes) {
  SYSTEMTIME time{};
  GetWinTime(&time, bytes);
  const bool is_date = time.wYear >= 1990 && time.wYear <= 2100 && time.wMonth >= 1 &&
                       time.wMonth <= 12 && time.wDay >= 1 && time.wDay <= 31 && time.wHour <= 23 &&
                       time.wMinute <= 59 && time.wSecond <= 59;
  if (!is_date) return "";
  char text[64];
  std::snprintf(text, sizeof text, "%04u-%02u-%02uT%02u:%02u:%02u", unsigned{time.wYear},
                unsigned{time.wMonth}, unsigned{time.wDay}, unsigned{time.wHour},
                unsigned{time.wMinute}, unsigned{time.wSecond});
  return text;
}

void ListMaterial(CVMGInfo& info, Listing& listing) {
  std::uint64_t packs = 0;
  CMovieAVFile& vobs = info.GetMovieAVFileTable().GetMovieAVFile();
  for (int i = 0; i < vobs.GetCount(); ++i) {
    CMovieVOB& vob = vobs[i]->M_VOBI;
    packs += vob.GetTimeMapTable().GetPackCount();
    const std::string recorded = RecordingTime(vob.GetHeader().bytes_2);
    if (recorded.empty()) continue;
    std::string& first = listing.recorded_first;
    if (first.empty() || recorded < first) first = recorded;
    listing.recorded_last = std::max(listing.recorded_last, recorded);
  }
  CStillAVFile& groups = info.GetStillAVFileTable().GetStillAVFile();
  for (int i = 0; i < groups.GetCount(); ++i) packs += groups[i]->S_VOGI.GetPackCount();
  CAdditionalAFile& audio = info.GetStillAVFileTable().GetAdditionalAFile();
  for (int i = 0; i < audio.GetCount(); ++i) packs += audio[i]->S_AAGI.GetPackCount();
  listing.vobs = vobs.GetCount();
  listing.still_groups = groups.GetCount();
  listing.bytes = packs * kPackSize;
}

/// The first error and how many there are.
std::string ProblemOf(const Examination& examination) {
  if (examination.errors == 0) return "";
  const Finding& first = examination.findings.front();
  return Plural(examination.errors, "error") + ", " + (examination.errors > 1 ? "such as " : "") +
         first.pointer + ": " + EntryOf(first.code).title;
}

/// The object of a file that loads, or what is salvaged; null when nothing can be read.
std::unique_ptr<CVMGInfo> Readable(std::span<const unsigned char> bytes, bool loads) {
  return loads ? Load(bytes) : Salvage(bytes).info;
}

}  // namespace

Listing ListingOf(std::span<const unsigned char> bytes, const DecodeText& decode) {
  const Examination check = Check(bytes, 1);
  Listing listing;
  listing.errors = check.errors;
  listing.warnings = check.warnings;
  const std::unique_ptr<CVMGInfo> info = Readable(bytes, check.loads);
  if (info == nullptr) {
    listing.problem = "nothing can be read: " + ProblemOf(check);
    return listing;
  }
  listing.status = listing.errors == 0 ? DiscStatus::kSound : DiscStatus::kDamaged;
  listing.problem = ProblemOf(check);
  if (!check.loads) listing.problem += "; listed is what can be salvaged";
  listing.text = ShownText(info->GetMAT().GetHeader().text_93, decode);
  listing.user_chains = info->GetUserPGCTable().GetCount();
  ListPrograms(info->GetOriginalPGC(), decode, listing);
  ListPlayLists(info->GetMAT().GetPlayListTable(), decode, listing);
  ListMaterial(*info, listing);
  return listing;
}

Listing BadListing(std::string problem) {
  Listing listing;
  listing.problem = std::move(problem);
  return listing;
}

}  // namespace VESKA::workshop
