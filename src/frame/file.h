/// Whole files by path. One implementation for each platform.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>

namespace VESKA {

/// A file must be shorter than this: addresses and sizes in it have 32 bits.
inline constexpr std::uint64_t kFileSizeLimit = std::uint64_t{1} << 32U;

struct FileBytes {
  std::unique_ptr<unsigned char[]> bytes;
  std::size_t size = 0;
};

/// Takes a zero-terminated UTF-16 name. False when it is null or, where names are bytes, not
/// UTF-16.
bool PathFromUtf16(const unsigned short* name, std::filesystem::path* path);

/// Reads a regular, non-empty file of less than 4 GiB; waits for nothing. False on any failure.
/// Throws `std::bad_alloc`.
bool ReadWholeFile(const std::filesystem::path& path, FileBytes* file);

/// Replaces or creates a file in one step, so that it is either wholly the new one or as it was.
/// Throws `std::bad_alloc`.
bool WriteWholeFile(const std::filesystem::path& path, const unsigned char* bytes,
                    std::size_t size);

}  // namespace VESKA
