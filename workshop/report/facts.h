// What a report says of a file, and the sections that say it.
#pragma once

#include <veska/CVMGInfo.h>
#include <veska/workshop/bitrate.h>
#include <veska/workshop/report.h>

#include <span>
#include <string>
#include <vector>

#include "map/map.h"

namespace VESKA::workshop {

/// Longer lists are cut there.
inline constexpr int kMostRows = 500;
/// Of more VOBs, the others have a row in the table and no chart.
inline constexpr int kMostCharts = 200;

/// The rate that the bitrates count with.
struct Rate {
  double fields_per_second;
  std::string reason;  ///< the rate in words, and where it comes from
};
Rate RateOf(const CMovieAVFile& vobs, FieldRate asked);
/// The bitrates of the movie VOBs. Many VOBs make a page no larger than a few do.
std::vector<Bitrate> BitratesOf(const CMovieAVFile& vobs, double fields_per_second);

struct Facts {
  std::string_view name;
  std::span<const unsigned char> bytes;
  const CVMGInfo& info;
  const ImageMap map;
  const Rate rate;
  const std::vector<Bitrate> bitrates;
  const DecodeText& decode;

  const CPGCInfo& Chain() const { return info.GetOriginalPGC(); }
  const CPlayListSRPTable& PlayLists() const { return info.GetMAT().GetPlayListTable(); }
  const CMovieAVFile& Vobs() const { return info.GetMovieAVFileTable().GetMovieAVFile(); }
  const CStillAVFile& Groups() const { return info.GetStillAVFileTable().GetStillAVFile(); }
};

/// The sections in HTML; empty where there is nothing to show.
std::string FileMapSection(const Facts& facts);
std::string OriginalChainSection(const Facts& facts);
std::string PlayListSection(const Facts& facts);
std::string UserChainSection(const Facts& facts);
std::string BitrateSection(const Facts& facts);
std::string StillSection(const Facts& facts);

}  // namespace VESKA::workshop
