/// Conversion between file order (big-endian) and host order, driven by the layouts of the records.
#pragma once

#include <veska/layouts.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <numeric>
#include <utility>

namespace VESKA {

constexpr std::uint8_t Reversed(std::uint8_t value) { return value; }
constexpr std::uint16_t Reversed(std::uint16_t value) {
  return static_cast<std::uint16_t>((value >> 8U) | (value << 8U));
}
constexpr std::uint32_t Reversed(std::uint32_t value) {
  return (value >> 24U) | ((value >> 8U) & 0xFF00U) | ((value << 8U) & 0xFF0000U) | (value << 24U);
}
constexpr std::uint64_t Reversed(std::uint64_t value) {
  return (std::uint64_t{Reversed(static_cast<std::uint32_t>(value))} << 32U) |
         Reversed(static_cast<std::uint32_t>(value >> 32U));
}

/// The number at `bytes`, in file order.
template <class Number>
Number FromFile(const unsigned char* bytes) {
  Number number;
  std::memcpy(&number, bytes, sizeof number);
  return std::endian::native == std::endian::big ? number : Reversed(number);
}

template <class Number>
void ToFile(unsigned char* bytes, Number number) {
  if constexpr (std::endian::native != std::endian::big) number = Reversed(number);
  std::memcpy(bytes, &number, sizeof number);
}

/// The bytes of a field that are reversed as numbers: at most two runs.
struct Numbers {
  unsigned first = 0;   // width of the number that the field begins with, 0 for none
  unsigned second = 0;  // width of the number behind it
};

constexpr Numbers NumbersOf(const Field& field) {
  switch (field.kind) {
    case FieldKind::kNumber:
    case FieldKind::kDerived:
      return {field.width, 0};
    case FieldKind::kClock:
      return {4, 2};
    case FieldKind::kCellPoint:
      return {2, 0};
    default:
      return {};
  }
}

/// From file to host order or back.
template <class Number>
void ConvertInPlace(unsigned char* bytes) {
  const Number number = FromFile<Number>(bytes);
  std::memcpy(bytes, &number, sizeof number);
}

inline void SwapNumber(unsigned char* bytes, unsigned width) {
  if (width == 2) ConvertInPlace<std::uint16_t>(bytes);
  if (width == 4) ConvertInPlace<std::uint32_t>(bytes);
  if (width == 8) ConvertInPlace<std::uint64_t>(bytes);
}

/// Converts one field in place; its own inverse. Does nothing on a big-endian machine.
inline void SwapField(const Field& field, unsigned char* record) {
  const Numbers numbers = NumbersOf(field);
  SwapNumber(record + field.offset, numbers.first);
  SwapNumber(record + field.offset + numbers.first, numbers.second);
}

/// Converts the numbers of one record in place; its own inverse.
template <class Record>
void SwapRecord(unsigned char* record) {
  [record]<std::size_t... I>(std::index_sequence<I...>) {
    (SwapField(kFields<Record>[I], record), ...);
  }
  (std::make_index_sequence<kFields<Record>.size()>());
}

/// The width of the widest number of a record.
template <class Record>
consteval unsigned WidestNumber() {
  unsigned widest = 1;
  for (const Field& field : kFields<Record>) {
    widest = std::max({widest, NumbersOf(field).first, NumbersOf(field).second});
  }
  return widest;
}

/// For records whose numbers have at most 16 bits: which bytes stay, and which take the place of
/// the one before or behind them, over a run of records that fills whole vectors of the machine.
template <class Record>
struct PairMasks {
  static constexpr std::size_t kRun = std::lcm(kFileSize<Record>, std::size_t{16});

  std::array<unsigned char, kRun> stay{};
  std::array<unsigned char, kRun> from_next{};
  std::array<unsigned char, kRun> from_previous{};

  consteval PairMasks() {
    stay.fill(0xFF);
    for (std::size_t start = 0; start < kRun; start += kFileSize<Record>) {
      for (const Field& field : kFields<Record>) {
        if (NumbersOf(field).first != 2) continue;
        const std::size_t at = start + field.offset;
        stay[at] = stay[at + 1] = 0;
        from_next[at] = from_previous[at + 1] = 0xFF;
      }
    }
  }
};

/// Copies `count` records between the file and memory, converting them on the way.
template <class Record>
void SwapCopy(unsigned char* to, const unsigned char* from, std::size_t count) {
  constexpr std::size_t kSize = kFileSize<Record>;
  const std::size_t size = count * kSize;
  std::size_t done = 0;
  const auto copy_by_record = [&](std::size_t end) {
    std::memcpy(to + done, from + done, end - done);
    for (; done < end; done += kSize) SwapRecord<Record>(to + done);
  };
  if (count == 0) return;
  if constexpr (std::endian::native == std::endian::big || WidestNumber<Record>() == 1) {
    std::memcpy(to, from, size);
  } else {
    if constexpr (WidestNumber<Record>() == 2) {
      static constexpr PairMasks<Record> kMasks;
      copy_by_record(kSize);  // a run looks one byte before and one behind itself
      for (; size - done > kMasks.kRun; done += kMasks.kRun) {
        const unsigned char* here = from + done;
        for (std::size_t i = 0; i < kMasks.kRun; ++i) {
          to[done + i] = static_cast<unsigned char>((here[i] & kMasks.stay[i]) |
                                                    (here[i + 1] & kMasks.from_next[i]) |
                                                    (*(here + i - 1) & kMasks.from_previous[i]));
        }
      }
    }
    // By chunks, so that the second pass finds its bytes in the cache.
    constexpr std::size_t kChunk = std::max<std::size_t>(1, 8192 / kSize) * kSize;
    while (done < size) copy_by_record(std::min(size, done + kChunk));
  }
}

}  // namespace VESKA
