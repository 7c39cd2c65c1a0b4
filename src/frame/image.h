/// The image of a file as the tables read and write it, with every access checked in one place.
#pragma once

#include <veska/RecordList.h>

#include <cstdint>
#include <limits>
#include <new>

#include "frame/byte_order.h"

namespace VESKA {

/// Thrown where an image would be read past its end, or asks for more than its size justifies.
/// It never leaves the library.
struct ImageError {};

/// Whether `size` bytes at `offset` lie within `limit`; in this form nothing can overflow.
constexpr bool Within(std::uint64_t offset, std::uint64_t size, std::uint64_t limit) {
  return offset <= limit && size <= limit - offset;
}

/// What `count` records of a kind take in an image, in the type that the public sizes have.
template <class Record>
constexpr unsigned long SizeOf(int count = 1) {
  return static_cast<unsigned long>(sizeof(Record)) * static_cast<unsigned long>(count);
}

/// A view of an image from some offset on. Offsets count from there, and may lie anywhere: what is
/// read is checked. Copies are cheap and share one budget.
class ImageReader {
 public:
  /// An image without a known end: the caller vouches for what is in it.
  explicit ImageReader(const unsigned char* data) : data_(data) {}

  /// An image of `size` bytes, from which at most `*budget` bytes of memory are built.
  ImageReader(const unsigned char* data, std::uint64_t size, std::uint64_t* budget)
      : data_(data), size_(size), budget_(budget) {}

  bool IsBounded() const { return budget_ != nullptr; }

  ImageReader At(std::uint64_t offset) const {
    ImageReader there = *this;
    there.start_ += offset;
    return there;
  }

  /// The `size` bytes at `offset`.
  const unsigned char* Bytes(std::uint64_t offset, std::uint64_t size) const {
    if (!Within(start_ + offset, size, size_)) throw ImageError();
    return data_ + static_cast<std::size_t>(start_ + offset);
  }

  std::uint8_t Byte(std::uint64_t offset) const { return *Bytes(offset, 1); }
  std::uint16_t Word(std::uint64_t offset) const {
    return FromFile<std::uint16_t>(Bytes(offset, 2));
  }
  std::uint32_t Long(std::uint64_t offset) const {
    return FromFile<std::uint32_t>(Bytes(offset, 4));
  }

  /// Reads one record in host order: the part of it that stands in the file.
  template <class Record>
  void Copy(std::uint64_t offset, Record& record) const {
    auto* to = reinterpret_cast<unsigned char*>(&record);
    SwapCopy<Record>(to, Bytes(offset, kFileSize<Record>), 1);
  }

  /// Makes `list` the `count` records that stand packed at `offset`.
  template <class Record, int Limit>
  void CopyAll(std::uint64_t offset, int count, RecordList<Record, Limit>& list) const {
    static_assert(kFileSize<Record> == sizeof(Record));
    const auto records = static_cast<std::size_t>(count);
    const unsigned char* from = Bytes(offset, std::uint64_t{records} * sizeof(Record));
    Spend(std::uint64_t{records} * sizeof(Record));
    SwapCopy<Record>(reinterpret_cast<unsigned char*>(list.Load(count)), from, records);
  }

  /// Accounts for `bytes` of memory that what is read takes. Called before they are allocated.
  void Spend(std::uint64_t bytes) const {
    if (budget_ == nullptr) return;
    if (bytes > *budget_) throw ImageError();
    *budget_ -= bytes;
  }

 private:
  const unsigned char* data_;
  std::uint64_t start_ = 0;  // a sum of few 32-bit addresses, so it cannot overflow
  std::uint64_t size_ = std::numeric_limits<std::uint64_t>::max();
  std::uint64_t* budget_ = nullptr;
};

/// The twin: a view of an image that is being written. A write that would pass the end is not made,
/// and remembered.
class ImageWriter {
 public:
  /// A buffer without a known end: the caller vouches for its size.
  explicit ImageWriter(unsigned char* out) : out_(out) {}

  /// A buffer of `size` bytes. `*refused`, if not null, becomes true when the image cannot be read
  /// back.
  ImageWriter(unsigned char* out, std::uint64_t size, bool* refused)
      : out_(out), size_(size), refused_(refused) {}

  ImageWriter At(std::uint64_t offset) const {
    ImageWriter there = *this;
    there.start_ += offset;
    return there;
  }

  void PutBytes(std::uint64_t offset, const void* bytes, std::size_t size) const {
    unsigned char* to = Room(offset, size);
    if (to != nullptr && size != 0) std::memcpy(to, bytes, size);
  }
  void PutWord(std::uint64_t offset, std::uint16_t value) const { PutNumber(offset, value); }
  void PutLong(std::uint64_t offset, std::uint32_t value) const { PutNumber(offset, value); }

  /// Writes the part of a record that stands in the file.
  template <class Record>
  void Put(std::uint64_t offset, const Record& record) const {
    unsigned char* to = Room(offset, kFileSize<Record>);
    if (to == nullptr) return;
    SwapCopy<Record>(to, reinterpret_cast<const unsigned char*>(&record), 1);
  }

  /// Writes the records of a list packed at `offset`.
  template <class Record, int Limit>
  void PutAll(std::uint64_t offset, const RecordList<Record, Limit>& list) const {
    static_assert(kFileSize<Record> == sizeof(Record));
    const auto count = static_cast<std::size_t>(list.Count());
    unsigned char* to = Room(offset, std::uint64_t{count} * sizeof(Record));
    if (to == nullptr || count == 0) return;
    if (const Record* records = list.Contiguous()) {
      SwapCopy<Record>(to, reinterpret_cast<const unsigned char*>(records), count);
      return;
    }
    for (const Record& record : list) {
      SwapCopy<Record>(to, reinterpret_cast<const unsigned char*>(&record), 1);
      to += sizeof(Record);
    }
  }

  /// Remembers that the image cannot be read back as what is being written.
  void Refuse() const {
    if (refused_ != nullptr) *refused_ = true;
  }

 private:
  unsigned char* Room(std::uint64_t offset, std::uint64_t size) const {
    if (Within(start_ + offset, size, size_))
      return out_ + static_cast<std::size_t>(start_ + offset);
    Refuse();
    return nullptr;
  }

  template <class Number>
  void PutNumber(std::uint64_t offset, Number value) const {
    if (unsigned char* to = Room(offset, sizeof value)) ToFile(to, value);
  }

  unsigned char* out_;
  std::uint64_t start_ = 0;
  std::uint64_t size_ = std::numeric_limits<std::uint64_t>::max();
  bool* refused_ = nullptr;
};

/// What the public `Parse` of every table does: the caller vouches for the data, so only memory can
/// be short.
template <class Table, class... Arguments>
bool ParseTable(Table& table, const unsigned char* data, Arguments... arguments) {
  try {
    table.Read(ImageReader(data), arguments...);
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

}  // namespace VESKA
