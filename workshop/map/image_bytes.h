// The bytes of a file that nobody vouches for: whatever is read, nothing outside them is touched.
#pragma once

#include <veska/layouts.h>

#include <algorithm>
#include <cstdint>
#include <span>
#include <string_view>

#include "basis/fields.h"

namespace VESKA::workshop {

/// What a management file begins with.
inline constexpr std::string_view kFileIdentifier = "DVD_RTR_VMG0";

/// A view of the bytes of a file. What lies behind its end reads as zero.
class ImageBytes {
 public:
  explicit ImageBytes(std::span<const unsigned char> bytes) : bytes_(bytes) {}

  std::uint64_t Size() const { return bytes_.size(); }
  bool Holds(std::uint64_t offset, std::uint64_t size) const {
    return offset <= Size() && size <= Size() - offset;
  }

  /// The part of the `size` bytes at `offset` that lies in the file.
  std::span<const unsigned char> At(std::uint64_t offset, std::uint64_t size) const {
    if (offset >= Size()) return {};
    const std::uint64_t left = Size() - offset;
    return bytes_.subspan(static_cast<std::size_t>(offset),
                          static_cast<std::size_t>(size < left ? size : left));
  }

  /// The big-endian number of `width` bytes at `offset`.
  std::uint64_t Number(std::uint64_t offset, unsigned width) const {
    unsigned char number[sizeof(std::uint64_t)] = {};
    const auto bytes = At(offset, width);
    std::copy(bytes.begin(), bytes.end(), number);
    return GetBigEndian(number, width);
  }

  std::uint8_t Byte(std::uint64_t offset) const {
    return offset < Size() ? bytes_[static_cast<std::size_t>(offset)] : std::uint8_t{0};
  }

  bool IsZero(std::uint64_t offset, std::uint64_t size) const {
    const auto bytes = At(offset, size);
    return std::all_of(bytes.begin(), bytes.end(), [](unsigned char byte) { return byte == 0; });
  }

 private:
  std::span<const unsigned char> bytes_;
};

}  // namespace VESKA::workshop
