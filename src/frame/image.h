/// The image of a file as the tables read and write it, with every access checked in one place.
#pragma once

#include <veska/RecordList.h>
#include <veska/failure.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>

#include "frame/byte_order.h"

namespace VESKA {

/// Thrown where an image would be read past its end, or asks for more than its size justifies.
/// It never leaves the library.
struct ImageError {
  FailureKind kind;
  std::uint64_t offset;  // in the image
};

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
      : data_(data), left_(size), budget_(budget) {}

  bool IsBounded() const { return budget_ != nullptr; }

  /// The view from `offset` on, of nothing when that lies past the end.
  ImageReader At(std::uint64_t offset) const {
    const std::uint64_t skipped = std::min(offset, left_);
    return {data_ + static_cast<std::size_t>(skipped), left_ - skipped, start_ + offset, budget_};
  }

  /// Whether there are `size` bytes at `offset`.
  bool Holds(std::uint64_t offset, std::uint64_t size) const { return Within(offset, size, left_); }

  /// The `size` bytes at `offset`.
  const unsigned char* Bytes(std::uint64_t offset, std::uint64_t size) const {
    if (!Within(offset, size, left_)) Fail(FailureKind::kEndsWithinTable, offset);
    return data_ + static_cast<std::size_t>(offset);
  }

  std::uint8_t Byte(std::uint64_t offset) const { return *Bytes(offset, 1); }
  std::uint16_t Word(std::uint64_t offset) const {
    return FromFile<std::uint16_t>(Bytes(offset, 2));
  }
  std::uint32_t Long(std::uint64_t offset) const {
    return FromFile<std::uint32_t>(Bytes(offset, 4));
  }

  /// Reads one record in host order: the part of it that stands in the file. Returns the offset
  /// behind it.
  template <class Record>
  std::uint64_t Copy(std::uint64_t offset, Record& record) const {
    auto* to = reinterpret_cast<unsigned char*>(&record);
    CopyFields<kFields<Record>>(to, Bytes(offset, kFileSize<Record>));
    return offset + kFileSize<Record>;
  }

  /// Makes `list` the `count` records that stand packed at `offset`. Returns the offset behind
  /// them.
  template <class Record, int Limit>
  std::uint64_t CopyAll(std::uint64_t offset, int count, RecordList<Record, Limit>& list) const {
    static_assert(kFileSize<Record> == sizeof(Record));
    const auto records = static_cast<std::size_t>(count);
    const std::uint64_t size = std::uint64_t{records} * sizeof(Record);
    const unsigned char* from = Bytes(offset, size);
    Spend(list.BlockSize(count));
    CopyRecords<Record>(reinterpret_cast<unsigned char*>(list.Load(count)), from, records);
    return offset + size;
  }

  /// Accounts for `bytes` of memory that what is read takes. Called before they are allocated.
  void Spend(std::uint64_t bytes) const {
    if (budget_ == nullptr) return;
    if (bytes > *budget_) Fail(FailureKind::kOverBudget, 0);
    *budget_ -= bytes;
  }

  /// Gives up on the image for what stands at `offset`.
  [[noreturn]] void Fail(FailureKind kind, std::uint64_t offset) const {
    throw ImageError{kind, start_ + offset};
  }

 private:
  ImageReader(const unsigned char* data, std::uint64_t left, std::uint64_t start,
              std::uint64_t* budget)
      : data_(data), left_(left), start_(start), budget_(budget) {}

  const unsigned char* data_;
  std::uint64_t left_ = std::numeric_limits<std::uint64_t>::max();
  std::uint64_t start_ = 0;  // where the view begins in the image, which may be past its end
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
      : out_(out), left_(size), refused_(refused) {}

  /// The view from `offset` on, of nothing when that lies past the end.
  ImageWriter At(std::uint64_t offset) const {
    const std::uint64_t skipped = std::min(offset, left_);
    return {out_ + static_cast<std::size_t>(skipped), left_ - skipped, refused_};
  }

  /// Whether there is room for `size` bytes at `offset`.
  bool Holds(std::uint64_t offset, std::uint64_t size) const { return Within(offset, size, left_); }

  /// Where `size` bytes at `offset` are to be written; null when they would pass the end.
  unsigned char* Room(std::uint64_t offset, std::uint64_t size) const {
    if (Within(offset, size, left_)) return out_ + static_cast<std::size_t>(offset);
    Refuse();
    return nullptr;
  }

  ///@{
  /// Writes a number at `offset`.
  void PutWord(std::uint64_t offset, std::uint16_t value) const { PutNumber(offset, value); }
  void PutLong(std::uint64_t offset, std::uint32_t value) const { PutNumber(offset, value); }
  ///@}

  /// Each writes something at `offset` and returns the offset behind it.
  std::uint64_t PutBytes(std::uint64_t offset, const void* bytes, std::size_t size) const {
    unsigned char* to = Room(offset, size);
    if (to != nullptr && size != 0) std::memcpy(to, bytes, size);
    return offset + size;
  }
  /// The part of a record that stands in the file.
  template <class Record>
  std::uint64_t Put(std::uint64_t offset, const Record& record) const {
    if (unsigned char* to = Room(offset, kFileSize<Record>)) {
      CopyFields<kFields<Record>>(to, reinterpret_cast<const unsigned char*>(&record));
    }
    return offset + kFileSize<Record>;
  }

  /// The records of a list, packed.
  template <class Record, int Limit>
  std::uint64_t PutAll(std::uint64_t offset, const RecordList<Record, Limit>& list) const {
    static_assert(kFileSize<Record> == sizeof(Record));
    const std::uint64_t size = std::uint64_t{sizeof(Record)} * static_cast<unsigned>(list.Count());
    unsigned char* to = Room(offset, size);
    if (to == nullptr) return offset + size;
    if (const Record* records = list.Contiguous()) {
      CopyRecords<Record>(to, reinterpret_cast<const unsigned char*>(records),
                          static_cast<std::size_t>(list.Count()));
    } else {
      for (const Record& record : list) {
        CopyFields<kFields<Record>>(to, reinterpret_cast<const unsigned char*>(&record));
        to += sizeof(Record);
      }
    }
    return offset + size;
  }

  /// Remembers that the image cannot be read back as what is being written.
  void Refuse() const {
    if (refused_ != nullptr) *refused_ = true;
  }

 private:
  template <class Number>
  void PutNumber(std::uint64_t offset, Number value) const {
    if (unsigned char* to = Room(offset, sizeof value)) ToFile(to, value);
  }

  unsigned char* out_;
  std::uint64_t left_ = std::numeric_limits<std::uint64_t>::max();
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
