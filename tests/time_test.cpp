// Clock values and recording times.
#include <chrono>
#include <cstring>

#include "image_builder.h"

namespace VESKA {
namespace {

// The clock references of pack headers as two multiplexers wrote them into program streams, and
// what the bits say by the table of ISO/IEC 13818-1, 2.5.3.3 (bits picked out one by one by a
// script, not by this library). The streams, of four seconds each:
//
//   ffmpeg -f lavfi -i testsrc=duration=4:size=352x288:rate=25
//     -f lavfi -i sine=frequency=440:duration=4
//     -c:v mpeg2video -c:a mp2 [-output_ts_offset 47720] -f vob stream.vob     (ffmpeg 5.1)
//   mplex -f 8 -o stream.vob video.m2v audio.mp2   (mjpegtools 2.1, the same two streams)
const struct {
  const char* bytes;
  std::uint64_t base;
  unsigned ext;
} kPacks[] = {
    {"44 00 04 00 04 01", 0, 0},          {"44 00 04 00 1c 01", 3, 0},  // ffmpeg
    {"44 00 1d d9 44 01", 113448, 0},     {"44 00 65 25 fc 01", 402623, 0},
    {"5f ff cd a5 44 01", 4294751400, 0}, {"5f ff ff 8c 3c 01", 4294963591, 0},  // with an offset,
    {"64 00 04 1f 2c 01", 4294968293, 0}, {"64 00 2e cb 3c 01", 4295154023, 0},  // past 32 bits
    {"44 00 04 04 94 ab", 146, 85},       {"44 00 04 09 25 57", 292, 171},       // mplex
    {"44 00 24 f2 4c 55", 138825, 42},    {"44 00 5c ad b6 03", 366006, 257}};

TEST(Clock, IsDecodedAsMultiplexersWriteIt) {
  for (const auto& pack : kPacks) {
    tag_SCR scr{1, 1};
    GetSCR(Hex(pack.bytes).data(), &scr);
    EXPECT_EQ(+scr.base, static_cast<std::uint32_t>(pack.base)) << pack.bytes;
    EXPECT_EQ(+scr.ext, pack.ext) << pack.bytes;
  }
}

TEST(Clock, IsDecodedBitByBit) {
  // The bits of the base, then of the extension, from the most significant one: byte and bit.
  std::string places;
  for (const char* run : {"0:543", "0:10", "1:76543210", "2:76543", "2:10", "3:76543210", "4:76543",
                          "4:10", "5:7654321"}) {
    for (const char* bit = run + 2; *bit != 0; ++bit) places += {run[0], *bit};
  }
  ASSERT_EQ(places.size(), 2U * (33 + 9));
  for (unsigned i = 0; i < 42; ++i) {
    Bytes pack = Zeros(6);
    pack[static_cast<std::size_t>(places[2 * i] - '0')] =
        static_cast<unsigned char>(1U << static_cast<unsigned>(places[2 * i + 1] - '0'));
    tag_SCR scr{};
    GetSCR(pack.data(), &scr);
    EXPECT_EQ(+scr.base, i == 0 || i > 32 ? 0 : std::uint32_t{1} << (32 - i)) << i;
    EXPECT_EQ(+scr.ext, i > 32 ? 1U << (41 - i) : 0U) << i;
  }
}

TEST(Clock, IsScaledToMillisecondsAsUnsigned) {
  const struct {
    std::uint32_t base;
    std::uint16_t ext;
    unsigned long milliseconds;
  } kCases[] = {{0, 0, 0},
                {44, 299, 0},
                {45, 0, 1},
                {134, 0, 1},
                {135, 0, 2},
                {90000, 0, 1000},
                {0, 13499, 0},
                {0, 13500, 1},
                {44, 65535, 2},
                {0x7FFFFFFF, 0, 23860929},
                {0x80000000, 0, 23860929},
                {0xFFFFFFFF, 0, 47721859},
                {4294967250, 299, 47721858}};
  for (const auto& c : kCases) {
    const tag_SCR scr{c.base, c.ext};
    EXPECT_EQ(SCR2Millisecond(&scr), c.milliseconds) << c.base << ' ' << c.ext;
  }
}

TEST(Clock, IsOrderedByBaseThenExtension) {
  const tag_SCR kOrder[] = {{0, 0},  {4, 299},        {5, 0},          {5, 9},
                            {5, 10}, {0x80000000, 0}, {0xFFFFFFFF, 0}, {0xFFFFFFFF, 0x8000}};
  for (const tag_SCR& a : kOrder) {
    for (const tag_SCR& b : kOrder) {
      EXPECT_EQ(V_SCRComp(&a, &b), &a < &b ? -1 : &a > &b ? 1 : 0);
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
    const auto year = static_cast<unsigned short>(static_cast<int>(date.year()));
    const auto month = static_cast<unsigned short>(static_cast<unsigned>(date.month()));
    const auto of_month = static_cast<unsigned short>(static_cast<unsigned>(date.day()));
    clock = (clock + 7919) % 86400;
    const unsigned hour = clock / 3600, minute = clock / 60 % 60, second = clock % 60;
    const Bytes bytes = Recording(year, month, of_month, hour, minute, second);
    SYSTEMTIME time;
    std::memset(&time, 0xEE, sizeof time);
    GetWinTime(&time, bytes.data());
    ASSERT_TRUE(time.wYear == year && time.wMonth == month && time.wDay == of_month &&
                time.wHour == hour && time.wMinute == minute && time.wSecond == second &&
                time.wMilliseconds == 0)
        << year << '-' << month << '-' << of_month;
    ASSERT_EQ(time.wDayOfWeek, std::chrono::weekday(day).c_encoding())
        << year << '-' << month << '-' << of_month;
    time.wMilliseconds = 999;
    time.wDayOfWeek = 6;
    Bytes packed(5, 0xEE);
    SetRTRTime(packed.data(), &time);
    ASSERT_EQ(packed, bytes);
  }
}

TEST(RecordingTime, EachFieldKeepsToItsBits) {
  SYSTEMTIME time{};
  unsigned short SYSTEMTIME::*const kFields[] = {&SYSTEMTIME::wSecond, &SYSTEMTIME::wMinute,
                                                 &SYSTEMTIME::wHour,   &SYSTEMTIME::wDay,
                                                 &SYSTEMTIME::wMonth,  &SYSTEMTIME::wYear};
  const unsigned kWidths[] = {6, 6, 5, 5, 4, 14};
  unsigned shift = 0;
  for (int i = 0; i < 6; ++i) {
    for (const unsigned value : {1U, 0x1555U, 0xFFFFU, 0x8000U}) {
      Bytes packed(5, 0xEE);
      time.*kFields[i] = static_cast<unsigned short>(value);
      SetRTRTime(packed.data(), &time);
      const std::uint64_t kept = value & ((1U << kWidths[i]) - 1);
      EXPECT_EQ(packed, Number(kept << shift, 5)) << i << ' ' << value;
      SYSTEMTIME back;
      GetWinTime(&back, packed.data());
      EXPECT_EQ(back.*kFields[i], kept);
    }
    time = {};
    shift += kWidths[i];
  }
}

TEST(RecordingTime, DayOfTheWeekOutsideTheCalendar) {
  const struct {
    unsigned year, month, day, expected;
  } kCases[] = {{2006, 0, 15, 0}, {2006, 13, 15, 0}, {2006, 15, 1, 0},  {0, 1, 1, 0},
                {0, 3, 1, 4},     {0, 1, 0, 6},      {16383, 12, 31, 6}};
  for (const auto& c : kCases) {
    SYSTEMTIME time;
    GetWinTime(&time, Recording(c.year, c.month, c.day, 0, 0, 0).data());
    EXPECT_EQ(time.wDayOfWeek, c.expected) << c.year << '-' << c.month << '-' << c.day;
  }
}

}  // namespace
}  // namespace VESKA
