// The fields of records by name and value, over the layouts of the library.
#pragma once

#include <veska/layouts.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

namespace VESKA::workshop {

/// The fields of a record with the record's bytes in memory (numbers in host order), which are not
/// owned. What reads only may be given the bytes of a constant record.
struct Record {
  std::span<const VESKA::Field> fields;
  unsigned char* bytes;
};

namespace fields_internal {

template <class Type>
unsigned char* BytesOf(const Type& record) {
  return const_cast<unsigned char*>(reinterpret_cast<const unsigned char*>(&record));
}

}  // namespace fields_internal

template <class Type>
Record RecordOf(const Type& record) {
  return {VESKA::kFields<Type>, fields_internal::BytesOf(record)};
}
/// A still VOB entry has the fields of its form.
inline Record RecordOf(const VESKA::tag_S_VOB_ENT& entry) {
  return {VESKA::kStillEntryFields[entry.Form()], fields_internal::BytesOf(entry)};
}

/// The field of that name, which has to be there.
constexpr const VESKA::Field& FieldNamed(std::span<const VESKA::Field> fields,
                                         std::string_view name) {
  return *std::find_if(fields.begin(), fields.end(),
                       [name](const VESKA::Field& field) { return name == field.name; });
}

/// True for kNumber and kDerived.
inline bool IsNumber(const VESKA::Field& field) {
  return field.kind == VESKA::FieldKind::kNumber || field.kind == VESKA::FieldKind::kDerived;
}

/// The bytes of a field as they stand in memory.
inline std::span<unsigned char> FieldBytes(const Record& record, const VESKA::Field& field) {
  return {record.bytes + field.offset, field.width};
}

/// Where the low `width` bytes of a 64-bit number stand in memory.
constexpr unsigned LowBytesAt(unsigned width) {
  return std::endian::native == std::endian::big ? 8 - width : 0;
}

/// The number of 1, 2, 4 or 8 bytes that stands at `from` in host order.
inline std::uint64_t GetNumber(const unsigned char* from, unsigned width) {
  std::uint64_t number = 0;
  std::memcpy(reinterpret_cast<unsigned char*>(&number) + LowBytesAt(width), from, width);
  return number;
}

/// Stores the low `width` bytes of `value` at `to`, in host order.
inline void SetNumber(unsigned char* to, unsigned width, std::uint64_t value) {
  std::memcpy(to, reinterpret_cast<const unsigned char*>(&value) + LowBytesAt(width), width);
}

/// The big-endian number of `width` bytes that stands at `from`.
inline std::uint64_t GetBigEndian(const unsigned char* from, unsigned width) {
  std::uint64_t value = 0;
  for (unsigned i = 0; i < width; ++i) value = value << 8U | from[i];
  return value;
}

/// Stores the low `width` bytes of `value` at `to`, the highest first.
inline void SetBigEndian(unsigned char* to, unsigned width, std::uint64_t value) {
  for (unsigned i = width; i-- > 0; value >>= 8U) to[i] = static_cast<unsigned char>(value);
}

inline std::uint64_t GetNumber(const Record& record, const VESKA::Field& field) {
  return GetNumber(record.bytes + field.offset, field.width);
}
inline void SetNumber(const Record& record, const VESKA::Field& field, std::uint64_t value) {
  SetNumber(record.bytes + field.offset, field.width, value);
}

/// The largest number that fits `width` bytes.
constexpr std::uint64_t LargestNumber(unsigned width) {
  return width >= 8 ? ~std::uint64_t{0} : (std::uint64_t{1} << 8 * width) - 1;
}

}  // namespace VESKA::workshop
