/// The two forms of time that a recorder handles.
#pragma once

#include <veska/export.h>
#include <veska/records.h>

#ifdef _WIN32
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#else
/// A calendar time, as the Windows platform has it.
struct SYSTEMTIME {
  unsigned short wYear;
  unsigned short wMonth;      ///< 1 to 12
  unsigned short wDayOfWeek;  ///< 0 Sunday to 6 Saturday
  unsigned short wDay;        ///< 1 to 31
  unsigned short wHour;
  unsigned short wMinute;
  unsigned short wSecond;
  unsigned short wMilliseconds;
};
#endif

extern "C" {

/// Decodes the six bytes of the system clock reference at `pack`, the field of an MPEG-2 pack
/// header behind its start code (ISO/IEC 13818-1, 2.5.3.3). Bit 32 of the base and the marker bits
/// are dropped.
VESKA_API void GetSCR(const unsigned char* pack, VESKA::tag_SCR* scr);

/// The clock value in milliseconds: base / 90 and ext / 27,000, each rounded to nearest, halves up.
VESKA_API unsigned long SCR2Millisecond(const VESKA::tag_SCR* scr);

/// 1 when `a` is later than `b`, -1 when it is earlier, 0 when they are equal.
VESKA_API int V_SCRComp(const VESKA::tag_SCR* a, const VESKA::tag_SCR* b);

/// Unpacks the recording time in the five bytes at `rec`, from the most significant bit: 14 bits
/// year, 4 month, 5 day, 5 hour, 6 minute, 6 second. The day of the week follows from the Gregorian
/// calendar; it is 0 when the month is not 1 to 12. The milliseconds are 0.
VESKA_API void GetWinTime(SYSTEMTIME* st, const unsigned char* rec);

/// Packs `*st` into the five bytes at `rec`. Of each field the bits that fit its width are taken;
/// the day of the week and the milliseconds are not used.
VESKA_API void SetRTRTime(unsigned char* rec, const SYSTEMTIME* st);
}
