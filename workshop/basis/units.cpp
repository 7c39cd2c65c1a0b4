#include "basis/units.h"

#include <veska/time_functions.h>

#include <cstdio>

namespace VESKA::workshop {

double SecondsBetween(const tag_SCR& from, const tag_SCR& to) {
  constexpr double kClockRate = 90000;  // ticks a second of the base
  return to.base <= from.base ? 0 : (to.base - from.base) / kClockRate;
}

double SecondsOf(const tag_C_ITEM& cell) {
  if (cell.CI->GetType() != CELL_MOVIE) return 0;
  const tag_M_C_GI& header = static_cast<const CMovieCell&>(*cell.CI).GetHeader();
  return SecondsBetween(header.time_6, header.time_12);
}

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

}  // namespace VESKA::workshop
