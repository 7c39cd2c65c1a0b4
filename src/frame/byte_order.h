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

/// Copies a number from file to host order or back; `to` and `from` may be the same.
template <class Number>
void Convert(unsigned char* to, const unsigned char* from) {
  const Number number = FromFile<Number>(from);
  std::memcpy(to, &number, sizeof number);
}

/// The numbers that a field begins with: at most two, one behind the other.
struct Numbers {
  unsigned first = 0;   // width of the first, 0 for none
  unsigned second = 0;  // width of the other
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

template <unsigned width>
void ConvertWidth(unsigned char* to, const unsigned char* from) {
  if constexpr (width == 1) *to = *from;
  if constexpr (width == 2) Convert<std::uint16_t>(to, from);
  if constexpr (width == 4) Convert<std::uint32_t>(to, from);
  if constexpr (width == 8) Convert<std::uint64_t>(to, from);
}

template <const auto& fields, std::size_t i>
void CopyField(unsigned char* to, const unsigned char* from) {
  constexpr Field kField = fields[i];
  constexpr Numbers kNumbers = NumbersOf(kField);
  constexpr unsigned kBytes = kField.width - kNumbers.first - kNumbers.second;
  to += kField.offset;
  from += kField.offset;
  ConvertWidth<kNumbers.first>(to, from);
  ConvertWidth<kNumbers.second>(to + kNumbers.first, from + kNumbers.first);
  if constexpr (kBytes != 0)
    std::memcpy(to + kField.width - kBytes, from + kField.width - kBytes, kBytes);
}

/// Copies what a table of fields describes from file to host order or back.
template <const auto& fields>
void CopyFields(unsigned char* to, const unsigned char* from) {
  [=]<std::size_t... i>(std::index_sequence<i...>) { (CopyField<fields, i>(to, from), ...); }
  (std::make_index_sequence<fields.size()>());
}

/// The same for a still VOB entry, in the form that its type names.
inline void CopyStillEntry(unsigned char* to, const unsigned char* from) {
  switch (from[offsetof(tag_S_VOB_ENT, S_VOB_ENT_TY)] >> 6U) {
    case 0:
      return CopyFields<kStillEntryForm0>(to, from);
    case 1:
      return CopyFields<kStillEntryForm1>(to, from);
    case 2:
      return CopyFields<kStillEntryForm2>(to, from);
    default:
      return CopyFields<kStillEntryForm3>(to, from);
  }
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

/// The bytes that compilers convert at once, on machines that have vectors of that size.
inline constexpr std::size_t kVector = 16;

/// For short records whose numbers have at most 16 bits: which bytes stay, and which take the place
/// of the one before or behind them, over a run of records that fills whole vectors.
template <class Record>
struct PairMasks {
  static constexpr bool kApply = WidestNumber<Record>() == 2 && kFileSize<Record> < kVector;
  static constexpr std::size_t kRun = std::lcm(kFileSize<Record>, kVector);

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

template <class Record>
inline constexpr PairMasks<Record> kPairMasks;

/// Converts the part of a run that starts at `start`. A loop of constant length over memory that
/// does not overlap becomes a few instructions on vectors.
template <class Record, std::size_t start>
void CopyVector(unsigned char* __restrict to, const unsigned char* __restrict from) {
  constexpr const PairMasks<Record>& kMasks = kPairMasks<Record>;
  const unsigned char* next = from + 1;
  const unsigned char* previous = from - 1;
  for (std::size_t i = start; i < start + kVector; ++i) {
    to[i] =
        static_cast<unsigned char>((from[i] & kMasks.stay[i]) | (next[i] & kMasks.from_next[i]) |
                                   (previous[i] & kMasks.from_previous[i]));
  }
}

/// Converts a run of records. Looks at the byte before it and at the one behind.
template <class Record>
void CopyRun(unsigned char* to, const unsigned char* from) {
  [=]<std::size_t... i>(std::index_sequence<i...>) {
    (CopyVector<Record, i * kVector>(to, from), ...);
  }
  (std::make_index_sequence<PairMasks<Record>::kRun / kVector>());
}

/// Copies `count` records between the file and memory, converting them on the way.
template <class Record>
void CopyRecords(unsigned char* to, const unsigned char* from, std::size_t count) {
  constexpr std::size_t kSize = kFileSize<Record>;
  const std::size_t size = count * kSize;
  if (count == 0) return;
  if constexpr (std::endian::native == std::endian::big || WidestNumber<Record>() == 1) {
    std::memcpy(to, from, size);
  } else {
    std::size_t done = 0;
    if constexpr (PairMasks<Record>::kApply) {
      constexpr std::size_t kRun = PairMasks<Record>::kRun;
      CopyFields<kFields<Record>>(to, from);
      for (done = kSize; size - done > kRun; done += kRun) CopyRun<Record>(to + done, from + done);
    }
    for (; done < size; done += kSize) CopyFields<kFields<Record>>(to + done, from + done);
  }
}

}  // namespace VESKA
