#include "map/parts.h"

#include <algorithm>
#include <iterator>

namespace VESKA::workshop {
namespace {

using enum Part;
using enum Role;

constexpr PartInfo kParts[] = {
    {kTable, "", {}, kWhole},
    {kFileHeader, "", kFields<tag_VMGI_MAT_HEADER>, kHeader},
    {kPlayListHeader, "", kFields<tag_PL_SRPTI>, kHeader},
    {kPlayLists, "lists", kFields<tag_PL_SRP>, kRun, {kPlayListHeader, "PL_SRP_Ns"}, true, true},
    {kMovieHeader, "", kFields<tag_M_AVFITI>, kHeader},
    {kMovieStreams,
     "streams",
     kFields<tag_M_VOB_STI>,
     kRun,
     {kMovieHeader, "M_VOB_STI_Ns"},
     false,
     true},
    {kVobIndex, "vobs", kFields<tag_M_AVFI_GI>, kIndex, {kMovieHeader, "M_AVFI_Ns"}},
    {kVob, "vobs", {}, kWhole, {}, true},
    {kVobInfo, "", kFields<tag_M_VOB_GI>, kHeader, {}, false, true},
    {kSeamless, "seamless_block", kFields<tag_SMLI>, kHeader},
    {kAudioGaps, "audio_gap_block", kFields<tag_AGAPI>, kHeader},
    {kTimeMap, "time_map", kFields<tag_TMAP_GI>, kHeader},
    {kTimeEntries, "time_map/times", kFields<tag_TM_ENT>, kRun, {kTimeMap, "TM_ENT_Ns"}},
    {kVobus, "time_map/vobus", kFields<tag_VOBU_ENT>, kRun, {kTimeMap, "VOBU_ENT_Ns"}, false, true},
    {kStillHeader, "", kFields<tag_S_AVFITI>, kHeader},
    {kStillStreams,
     "streams",
     kFields<tag_S_VOB_STI>,
     kRun,
     {kStillHeader, "S_VOB_STI_Ns"},
     false,
     true},
    {kGroupIndex, "groups", kFields<tag_S_AVFI_GI>, kIndex, {kStillHeader, "S_AVFI_Ns"}},
    {kStillGroup, "groups", {}, kWhole, {}, true},
    {kGroupInfo, "", kFields<tag_S_VOG_GI>, kHeader},
    {kStillEntries, "entries", {}, kEntries, {kGroupInfo, "S_VOB_Ns"}},
    {kAudioStreams, "audio_streams", kFields<tag_S_A_ATR>, kRun, {kStillHeader, "S_A_ATR_Ns"}},
    {kAudioIndex, "audio_groups", kFields<tag_S_AAFI_GI>, kIndex, {kStillHeader, "S_AAFI_Ns"}},
    {kAudioGroup, "audio_groups", {}, kWhole, {}, true},
    {kAudioGroupInfo, "", kFields<tag_S_AAG_GI>, kHeader},
    {kAudioEntries,
     "entries",
     kFields<tag_AA_ENT>,
     kRun,
     {kAudioGroupInfo, "AA_ENT_Ns"},
     false,
     true},
    {kUserHeader, "", kFields<tag_UD_PGCITI>, kHeader},
    {kUserIndex, "chains", {}, kIndex, {kUserHeader, "UD_PGCI_Ns"}},
    {kUserChain, "chains", {}, kWhole},
    {kChainHeader, "", kFields<tag_PGC_GI>, kHeader},
    {kPrograms, "programs", kFields<tag_PGI>, kRun, {kChainHeader, "PG_Ns"}, false, true},
    {kCellIndex, "cells", {}, kIndex, {kChainHeader, "CI_SRP_Ns"}},
    {kCell, "cells", {}, kWhole, {}, true},
    {kMovieCellInfo, "", kFields<tag_M_C_GI>, kHeader, {}, false, true},
    {kStillCellInfo, "", kFields<tag_S_C_GI>, kHeader},
    {kEntryPoints, "entries", {}, kEntries, {kMovieCellInfo, "C_EPI_Ns"}},  // or kStillCellInfo
    {kTextHeader, "", kFields<tag_TXTDITI>, kHeader},
    {kTextIndex, "sets", {}, kIndex, {kTextHeader, "IT_TXT_SRP_Ns"}},
    {kTextSet, "sets", {}, kEntries, {}, true},
    {kManufacturerHeader, "", kFields<tag_MNFITI>, kHeader},
    {kManufacturerIndex, "items", {}, kIndex, {kManufacturerHeader, "MNFI_Ns"}},
    {kManufacturer, "items", {}, kWhole, {}, true},
    {kManufacturerInfo, "", kFields<tag_A_MNFI>, kHeader, {}, false, true},
    {kManufacturerData, "data", {}, kBytes},
};
static_assert(std::size(kParts) == static_cast<std::size_t>(kManufacturerData) + 1);
static_assert(std::all_of(std::begin(kParts), std::end(kParts), [](const PartInfo& part) {
  const auto& header = kParts[static_cast<std::size_t>(part.counted.in)];
  return part.counted.by == nullptr ||
         FieldNamed(header.fields, part.counted.by).kind == FieldKind::kDerived;
}));
static_assert(offsetof(tag_M_C_GI, C_EPI_Ns) == offsetof(tag_S_C_GI, C_EPI_Ns) &&
              offsetof(tag_M_C_GI, C_TY) == offsetof(tag_S_C_GI, C_TY));

constexpr IndexInfo kIndexes[] = {
    {kVobIndex, kVob, kFileSize<tag_M_VOB_GI> + kFileSize<tag_TMAP_GI>, "M_VOBI_SA"},
    {kGroupIndex, kStillGroup, kFileSize<tag_S_VOG_GI> + offsetof(tag_S_VOB_ENT, form1),
     "S_VOGI_SA"},
    {kAudioIndex, kAudioGroup, kFileSize<tag_S_AAG_GI> + kFileSize<tag_AA_ENT>, "S_AAGI_SA"},
    {kUserIndex, kUserChain, kFileSize<tag_PGC_GI>, "UD_PGCI_SA"},
    {kCellIndex, kCell, kFileSize<tag_S_C_GI>, "CI_SA"},
    {kTextIndex, kTextSet, 0, "IT_TXT_SA", 2, 2},
    {kManufacturerIndex, kManufacturer, kFileSize<tag_A_MNFI>, "MNFI_SA", 2}};

constexpr Part kHeaders[] = {kTable,       kFileHeader,  kPlayListHeader,
                             kMovieHeader, kStillHeader, kChainHeader,
                             kUserHeader,  kTextHeader,  kManufacturerHeader};
static_assert(std::size(kHeaders) == kTables.size());

}  // namespace

const PartInfo& InfoOf(Part part) { return kParts[static_cast<std::size_t>(part)]; }

std::span<const PartInfo> Parts() { return kParts; }

Part HeaderOf(Table table) { return kHeaders[IndexOf(table)]; }

std::uint64_t RecordSize(Part part) {
  const auto fields = InfoOf(part).fields;
  return fields.empty() ? 1 : fields.back().offset + fields.back().width;
}

std::string Is(const FileNumber& number) {
  return std::string(number.name) + " is " + std::to_string(number.value);
}

FileNumber NumberAt(const ImageBytes& image, const Field& field, std::uint64_t at) {
  return {field.name, at + field.offset, image.Number(at + field.offset, field.width),
          LargestNumber(field.width)};
}

FileNumber CountOf(const ImageBytes& image, Part part, std::uint64_t at) {
  const CountField& counted = InfoOf(part).counted;
  return NumberAt(image, FieldNamed(InfoOf(counted.in).fields, counted.by), at);
}

const IndexInfo& IndexInfoOf(Part index) {
  return *std::find_if(std::begin(kIndexes), std::end(kIndexes),
                       [index](const IndexInfo& info) { return info.index == index; });
}

}  // namespace VESKA::workshop
