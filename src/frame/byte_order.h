/// Conversion between file order (big-endian) and host order, driven by the layouts of the records.
#pragma once

#include <veska/layouts.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
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

/// How the eight bytes behind the type of a still VOB entry are converted in one form: which stay,
/// and which begin a number of two bytes. The others are not of that form.
struct StillForm {
  std::uint64_t stay = 0;
  std::uint64_t begin = 0;
};

/// The number that has these bytes in memory; not every standard library has std::bit_cast.
consteval std::uint64_t InMemory(const std::array<unsigned char, 8>& bytes) {
  std::uint64_t number = 0;
  for (unsigned i = 0; i < 8; ++i) {
    const unsigned at = std::endian::native == std::endian::big ? 7 - i : i;
    number |= std::uint64_t{bytes[i]} << 8 * at;
  }
  return number;
}

consteval std::array<StillForm, 4> StillForms() {
  std::array<StillForm, 4> forms{};
  for (std::size_t i = 0; i < forms.size(); ++i) {
    std::array<unsigned char, 8> stay{}, begin{};
    for (const Field& field : kStillEntryFields[i].subspan(1)) {
      const bool swaps = field.width == 2 && std::endian::native != std::endian::big;
      if (swaps) begin[field.offset - 1] = 0xFF;
      for (unsigned j = 0; !swaps && j < field.width; ++j) stay[field.offset - 1 + j] = 0xFF;
    }
    forms[i] = {InMemory(stay), InMemory(begin)};
  }
  return forms;
}
inline constexpr std::array<StillForm, 4> kStillForms = StillForms();

/// The same for a still VOB entry, whose type names its form. Reads and writes the bytes of the
/// longest form: those beyond the entry's own become 0. Forms come in any order, so a branch for
/// each would be foreseen by no processor.
inline void CopyStillEntry(unsigned char* to, const unsigned char* from) {
  const StillForm& form = kStillForms[from[offsetof(tag_S_VOB_ENT, S_VOB_ENT_TY)] >> 6U];
  std::uint64_t rest = 0;
  std::memcpy(&rest, from + 1, sizeof rest);
  rest = (rest & form.stay) | ((rest & form.begin) << 8U) | ((rest >> 8U) & form.begin);
  *to = *from;
  std::memcpy(to + 1, &rest, sizeof rest);
}
static_assert(sizeof(tag_S_VOB_ENT) == 1 + sizeof(std::uint64_t));

/// The size in the file of an entry of each form.
inline constexpr std::array<unsigned char, 4> kStillEntrySizes{
    kStillEntryForm0.back().offset + kStillEntryForm0.back().width,
    kStillEntryForm1.back().offset + kStillEntryForm1.back().width,
    kStillEntryForm2.back().offset + kStillEntryForm2.back().width,
    kStillEntryForm3.back().offset + kStillEntryForm3.back().width};
constexpr unsigned StillEntrySize(std::uint8_t S_VOB_ENT_TY) {
  return kStillEntrySizes[S_VOB_ENT_TY >> 6U];
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

/// How whole records are converted by moving bytes within a vector: for each of its bytes, the one
/// that takes its place, counted from the start of its half.
struct Shuffle {
  static constexpr std::size_t kVector = 32;
  static constexpr std::size_t kHalf = kVector / 2;

  alignas(kVector) std::array<unsigned char, kVector> bytes{};
  std::size_t step = 0;       // the bytes of the records that are whole in a vector
  std::size_t half_step = 0;  // and in its first half
};

/// That of a short record. What is behind the last whole one is converted with the next vector. The
/// steps are 0 where a number would lie in both halves.
template <class Record>
consteval Shuffle ShuffleOf() {
  constexpr std::size_t kSize = kFileSize<Record>;
  constexpr std::size_t kHalf = Shuffle::kHalf;
  Shuffle shuffle{{}, Shuffle::kVector / kSize * kSize, kHalf / kSize * kSize};
  const std::size_t end = shuffle.step;
  for (std::size_t i = 0; i < Shuffle::kVector; ++i) shuffle.bytes[i] = i % kHalf;
  const auto reverse = [&shuffle](std::size_t first, unsigned width) {
    for (std::size_t i = 0; i < width; ++i) {
      const std::size_t from = first + width - 1 - i;
      if ((first + i) / kHalf != from / kHalf) shuffle.step = shuffle.half_step = 0;
      shuffle.bytes[first + i] = from % kHalf;
    }
  };
  for (std::size_t start = 0; start < end; start += kSize) {
    for (const Field& field : kFields<Record>) {
      const Numbers numbers = NumbersOf(field);
      reverse(start + field.offset, numbers.first);
      reverse(start + field.offset + numbers.first, numbers.second);
    }
  }
  return shuffle;
}

/// Whether records of a kind are shuffled when there are many: short ones with numbers.
template <class Record>
inline constexpr bool kIsShuffled = [] {
  if constexpr (kFileSize<Record> <= Shuffle::kHalf && WidestNumber<Record>() != 1) {
    return std::endian::native != std::endian::big && ShuffleOf<Record>().step != 0;
  }
  return false;
}();

/// The ways to convert many short records at once.
enum class CopyForm : unsigned char {
  kPlain,      ///< one by one, on any machine
  kShuffle16,  ///< vectors of 16 bytes: SSSE3, NEON
  kShuffle32   ///< vectors of 32 bytes: AVX2
};

/// Whether this machine can convert in that form.
bool MachineHas(CopyForm form);

/// The form that the library converts in: the widest that the machine has. It has a source of its
/// own, so that a test program can take its place and choose.
CopyForm ChosenCopyForm();

/// Converts the first of the short records in `size` bytes, as many as whole vectors reach. Returns
/// their size. The two areas do not overlap.
std::size_t CopyShuffled(CopyForm form, const Shuffle& shuffle, unsigned char* to,
                         const unsigned char* from, std::size_t size);

/// Copies so many short records that vectors pay.
template <class Record>
void CopyManyRecords(unsigned char* to, const unsigned char* from, std::size_t size) {
  static constexpr Shuffle kShuffle = ShuffleOf<Record>();
  std::size_t done = CopyShuffled(ChosenCopyForm(), kShuffle, to, from, size);
  for (; done < size; done += kFileSize<Record>) {
    CopyFields<kFields<Record>>(to + done, from + done);
  }
}

/// Copies `count` records between the file and memory, converting them on the way. The two areas do
/// not overlap.
template <class Record>
void CopyRecords(unsigned char* to, const unsigned char* from, std::size_t count) {
  constexpr std::size_t kSize = kFileSize<Record>;
  const std::size_t size = count * kSize;
  if constexpr (std::endian::native == std::endian::big || WidestNumber<Record>() == 1) {
    if (size != 0) std::memcpy(to, from, size);
  } else {
    if constexpr (kIsShuffled<Record>) {
      if (size >= Shuffle::kVector) return CopyManyRecords<Record>(to, from, size);
    }
    for (std::size_t done = 0; done < size; done += kSize) {
      CopyFields<kFields<Record>>(to + done, from + done);
    }
  }
}

}  // namespace VESKA
