// What the sections of a report have in common.
#pragma once

#include <veska/CVMGInfo.h>

#include <span>
#include <string>
#include <vector>

#include "bitrate.h"
#include "image_map.h"

namespace veska_tool {

/// Longer lists are cut there.
inline constexpr int kMostRows = 500;
/// In characters; longer texts are cut there.
inline constexpr std::size_t kTextLimit = 64;

/// What is shown, and the page as far as it is written.
struct Report {
  std::string name;
  std::span<const unsigned char> bytes;
  VESKA::CVMGInfo& info;
  ImageMap map;
  double field_rate = 0;          ///< 0 until it is guessed
  std::string field_rate_reason;  ///< the rate in words
  std::vector<Bitrate> bitrates;  ///< of the movie VOBs
  std::string page;

  VESKA::CPGCInfo& Chain() { return info.GetOriginalPGC(); }
  VESKA::CPlayListSRPTable& PlayLists() { return info.GetMAT().GetPlayListTable(); }
  VESKA::CMovieAVFile& Vobs() { return info.GetMovieAVFileTable().GetMovieAVFile(); }
  VESKA::CStillAVFile& Groups() { return info.GetStillAVFileTable().GetStillAVFile(); }
};

/// The sections, appended to the page. `FindBitrates` comes before all of them.
void FindBitrates(Report& report);
void AddFileMap(Report& report);
void AddOriginalChain(Report& report);
void AddPlayLists(Report& report);
void AddUserChains(Report& report);
void AddBitrates(Report& report);
void AddStillGroups(Report& report);

/// The parts of a section. What they are given is HTML unless it says otherwise.
void StartSection(std::string& page, const std::string& heading);
void EndSection(std::string& page);
void AddParagraph(std::string& page, const std::string& text);
void AddFigure(std::string& page, const std::string& drawing, const std::string& caption = {});
/// A table that scrolls by itself where the window is narrow.
void StartTable(std::string& page, const std::string& caption, const std::string& column_heads);
void EndTable(std::string& page);
/// Says that a list shows `shown` of `count` things, if that is so.
void SayRest(std::string& page, int count, int shown, const std::string& thing);

/// The head of a column of texts, of numbers; a cell with a number; the head of a row that is a
/// number, or a text of the disc.
std::string TextHead(const std::string& title);
std::string NumberHead(const std::string& title);
std::string NumberCell(const std::string& number);
std::string NumberCell(int number);
std::string RowNumber(int number);
std::string RowText(std::span<const unsigned char> text_of_the_disc);

}  // namespace veska_tool
