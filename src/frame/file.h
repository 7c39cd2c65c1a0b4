/// Whole files by path. One implementation for each platform.
#pragma once

#include <veska/failure.h>

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

// Each returns false and says why in `*why`, unless that is null.

/// Takes a zero-terminated UTF-16 name. False when it is null or, where names are bytes, not
/// UTF-16.
bool PathFromUtf16(const unsigned short* name, std::filesystem::path* path, Failure* why);

/// Reads a regular, non-empty file of less than 4 GiB; waits for nothing. False on any failure.
/// Throws `std::bad_alloc`.
bool ReadWholeFile(const std::filesystem::path& path, FileBytes* file, Failure* why);

/// Replaces or creates a file in one step, so that it is either wholly the new one or as it was.
/// Throws `std::bad_alloc`.
bool WriteWholeFile(const std::filesystem::path& path, const unsigned char* bytes, std::size_t size,
                    Failure* why = nullptr);

/// Says why, with the system's number for it.
inline bool Fail(Failure* why, FailureKind kind, std::int32_t system_error = 0) {
  if (why != nullptr) {
    why->kind = kind;
    why->system_error = system_error;
  }
  return false;
}

}  // namespace VESKA
