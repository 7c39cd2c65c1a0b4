// Clock values and recording times.
#include <chrono>
#include <cstring>

#include "support/image_builder.h"

namespace VESKA {
namespace {

// The clock references of pack headers as two multiplexers wrote them into program streams, and
// what the bits say by the table of ISO/IEC 13818-1, 2.5.3.3 (bits picked out one by one by a
// script, not by this library). The streams, of four seconds each:
//   ffmpeg -f lavfi -i testsrc=duration=4:size=352x288:rate=25
//     -f lavfi -i sine=frequency=440:duration=4
//     -c:v mpeg2video -c:a mp2 [-output_ts_offset 47720] -f vob stream.vob     (ffmpeg 5.1)
//   mplex -f 8 -o stream.vob video.m2v audio.mp2   (mjpegtools 2.1, the same two streams)
const struct {
  const char* bytes;
  std::uint64_t base;
  unsigned ext;
} kPacks[] = {{"44 00 04 00 04 01", 0, 0},
              {"44 00 04 00 1c 01", 3, 0},  // ffmpeg
              {"44 00 65 25 fc 01", 402623, 0},
              {"5f ff cd a5 44 01", 4294751400, 0},
              {"5f ff ff 8c 3c 01", 4294963591, 0},  // with an offset,
              {"64 00 2e cb 3c 01", 4295154023, 0},  // past 32 bits
              {"44 00 04 04 94 ab", 146, 85},
              {"44 00 24 f2 4c 55", 138825, 42},  // mplex
              {"44 00 5c ad b6 03", 366006, 257},
              {"7f ff ff ff fe 57", 0x1FFFFFFFF, 299}};  // the most that fits

TEST(Clock, IsDecodedAsMultiplexersWriteIt) {
  for (const auto& pack : kPacks) {
    tag_SCR scr{1, 1};
    GetSCR(Hex(pack.bytes).data(), &scr);
    EXPECT_EQ(+scr.base, static_cast<std::uint32_t>(pack.base)) << pack.bytes;
    EXPECT_EQ(+scr.ext, pack.ext) << pack.bytes;
  }
}

TEST(Clock, IsOrderedAndScaledToMilliseconds) {
  const struct {
    tag_SCR scr;
    unsigned long milliseconds;
  } kClocks[] = {{{0, 0}, 0},
                 {{0, 13499}, 0},
                 {{0, 13500}, 1},
                 {{44, 299}, 0},
                 {{44, 65535}, 2},
                 {{45, 0}, 1},
                 {{135, 0}, 2},
                 {{90000, 0}, 1000},
                 {{0x7FFFFFFF, 0}, 23860929},
                 {{0x80000000, 0}, 23860929},
                 {{4294967250, 299}, 47721858},
                 {{0xFFFFFFFF, 0}, 47721859}};
  for (const auto& a : kClocks) {
    EXPECT_EQ(SCR2Millisecond(&a.scr), a.milliseconds);
    for (const auto& b : kClocks) {
      EXPECT_EQ(V_SCRComp(&a.scr, &b.scr), &a < &b ? -1 : &a > &b ? 1 : 0);
    }
  }
}

/// The five bytes of a recording time.
Bytes Recording(std::uint64_t year, unsigned month, unsigned day, unsigned hour, unsigned minute,
                unsigned second) {
  return Number(year << 26U | month << 22U | day << 17U | hour << 12U | minute << 6U | second, 5);
}

TEST(RecordingTime, AgreesWithTheCalendarOnEveryDay) {
  using std::chrono::sys_days;
  using namespace std::chrono_literals;
  unsigned clock = 0;
  for (sys_days day = 1y / 1 / 1; day <= sys_days(9999y / 12 / 31); day += std::chrono::days(1)) {
    const std::chrono::year_month_day date = day;
    const auto year = static_cast<unsigned>(static_cast<int>(date.year()));
    const unsigned month{date.month()}, of_month{date.day()};
    clock = (clock + 7919) % 86400;
    const unsigned hour = clock / 3600, minute = clock / 60 % 60, second = clock % 60;
    const Bytes bytes = Recording(year, month, of_month, hour, minute, second);
    SYSTEMTIME time;
    std::memset(&time, 0xEE, sizeof time);
    GetWinTime(&time, bytes.data());
    ASSERT_TRUE(time.wYear == year && time.wMonth == month && time.wDay == of_month &&
                time.wHour == hour && time.wMinute == minute && time.wSecond == second &&
                time.wMilliseconds == 0 &&
                time.wDayOfWeek == std::chrono::weekday(day).c_encoding())
        << year << '-' << month << '-' << of_month << ' ' << time.wDayOfWeek;
    time.wMilliseconds = time.wDayOfWeek = 6;  // not used
    Bytes packed(5, 0xEE);
    SetRTRTime(packed.data(), &time);
    ASSERT_EQ(packed, bytes);
  }
}

TEST(RecordingTime, EachFieldKeepsToItsBits) {
  const struct {
    unsigned short SYSTEMTIME::*member;
    unsigned width;
  } kFields[] = {{&SYSTEMTIME::wSecond, 6}, {&SYSTEMTIME::wMinute, 6}, {&SYSTEMTIME::wHour, 5},
                 {&SYSTEMTIME::wDay, 5},    {&SYSTEMTIME::wMonth, 4},  {&SYSTEMTIME::wYear, 14}};
  unsigned shift = 0;
  for (const auto& field : kFields) {
    for (const unsigned value : {1U, 0x1555U, 0x8000U, 0xFFFFU}) {
      SYSTEMTIME time{};
      time.*field.member = static_cast<unsigned short>(value);
      Bytes packed(5, 0xEE);
      SetRTRTime(packed.data(), &time);
      EXPECT_EQ(packed, Number(std::uint64_t{value & ((1U << field.width) - 1)} << shift, 5));
    }
    shift += field.width;
  }
}

TEST(RecordingTime, DayOfTheWeekOutsideTheCalendar) {
  const unsigned kCases[][4] = {{2006, 0, 15, 0},  {2006, 13, 15, 0}, {2006, 15, 1, 0},
                                {0, 1, 1, 0},      {0, 3, 1, 4},      {0, 1, 0, 6},
                                {16383, 12, 31, 6}};
  for (const auto& [year, month, day, expected] : kCases) {
    SYSTEMTIME time;
    GetWinTime(&time, Recording(year, month, day, 0, 0, 0).data());
    EXPECT_EQ(time.wDayOfWeek, expected) << year << '-' << month << '-' << day;
  }
}

}  // namespace
}  // namespace VESKA
