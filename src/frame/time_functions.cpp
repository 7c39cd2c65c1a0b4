#include <veska/time_functions.h>

#include <cstdint>

namespace {

/// `value` * `numerator` / `denominator`, rounded to nearest, halves up.
std::uint32_t Scale(std::uint64_t value, std::uint64_t numerator, std::uint64_t denominator) {
  return static_cast<std::uint32_t>((value * numerator + denominator / 2) / denominator);
}

/// The bits `first` down to `last` of a number, moved down to bit 0.
constexpr std::uint64_t Bits(std::uint64_t number, unsigned first, unsigned last) {
  return (number >> last) & ((std::uint64_t{1} << (first - last + 1)) - 1);
}

std::uint64_t BigEndian(const unsigned char* bytes, int count) {
  std::uint64_t number = 0;
  for (int i = 0; i < count; ++i) number = number << 8U | bytes[i];
  return number;
}

bool IsLeapYear(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

int DayOfWeek(int year, int month, int day) {
  static constexpr int kDaysBefore[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
  if (month < 1 || month > 12) return 0;
  const int leap_day = month > 2 && IsLeapYear(year) ? 1 : 0;
  const int past = year - 1;
  return (year + past / 4 - past / 100 + past / 400 + kDaysBefore[month - 1] + leap_day + day + 6) %
         7;  // one day less is six more, so that nothing is ever below 0
}

// The fields of a recording time, a number of 40 bits: where each begins, and its width.
struct TimeField {
  unsigned short SYSTEMTIME::*member;
  unsigned shift;
  unsigned width;
};
constexpr TimeField kTimeFields[] = {{&SYSTEMTIME::wYear, 26, 14}, {&SYSTEMTIME::wMonth, 22, 4},
                                     {&SYSTEMTIME::wDay, 17, 5},   {&SYSTEMTIME::wHour, 12, 5},
                                     {&SYSTEMTIME::wMinute, 6, 6}, {&SYSTEMTIME::wSecond, 0, 6}};
constexpr int kTimeSize = 5;

}  // namespace

extern "C" {

void GetSCR(const unsigned char* pack, VESKA::tag_SCR* scr) {
  const std::uint64_t field = BigEndian(pack, 6);
  const std::uint64_t base =
      Bits(field, 45, 43) << 30U | Bits(field, 41, 27) << 15U | Bits(field, 25, 11);
  scr->base = static_cast<std::uint32_t>(base);
  scr->ext = static_cast<std::uint16_t>(Bits(field, 9, 1));
}

unsigned long SCR2Millisecond(const VESKA::tag_SCR* scr) {
  return Scale(scr->ext, 1000, 27000000) + Scale(scr->base, 1000, 90000);
}

int V_SCRComp(const VESKA::tag_SCR* a, const VESKA::tag_SCR* b) {
  const auto order = [](const VESKA::tag_SCR* scr) {
    return std::uint64_t{scr->base} << 16U | scr->ext;
  };
  if (order(a) == order(b)) return 0;
  return order(a) > order(b) ? 1 : -1;
}

void GetWinTime(SYSTEMTIME* st, const unsigned char* rec) {
  const std::uint64_t time = BigEndian(rec, kTimeSize);
  *st = {};
  for (const TimeField& field : kTimeFields) {
    st->*field.member =
        static_cast<unsigned short>(Bits(time, field.shift + field.width - 1, field.shift));
  }
  st->wDayOfWeek = static_cast<unsigned short>(DayOfWeek(st->wYear, st->wMonth, st->wDay));
}

void SetRTRTime(unsigned char* rec, const SYSTEMTIME* st) {
  std::uint64_t time = 0;
  for (const TimeField& field : kTimeFields) {
    time |= Bits(st->*field.member, field.width - 1, 0) << field.shift;
  }
  for (int i = 0; i < kTimeSize; ++i) {
    rec[i] = static_cast<unsigned char>(time >> (8U * static_cast<unsigned>(kTimeSize - 1 - i)));
  }
}
}
