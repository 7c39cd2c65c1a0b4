// What is on a disc, from the object and from what an examination finds.
#include <veska/cell_points.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "basis/programs.h"
#include "basis/text.h"
#include "basis/units.h"
#include "veska/workshop/check.h"
#include "veska/workshop/list.h"
#include "veska/workshop/load.h"
#include "veska/workshop/salvage.h"

namespace VESKA::workshop {
namespace {

void ListPrograms(const CPGCInfo& chain, const DecodeText& decode, Listing& listing) {
  for (const auto& [first, counted, there] : CellsOfPrograms(chain)) {
    const int i = static_cast<int>(listing.programs.size());
    ListedProgram listed{.text = ShownText(chain.GetPGNode(i)->text_4, decode),
                         .kind = kProgramKinds[chain.GetProgramVOBType(i)],
                         .first_cell = std::min(first, chain.GetCellCount()) + 1,
                         .cells = there};
    for (int cell = first; cell < first + there; ++cell) {
      listed.seconds += SecondsOf(*chain.GetCellNode(cell));
    }
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
        {ShownText(play_list.text_8, decode), cell == kNoCell ? 0 : static_cast<int>(cell)});
  }
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
