// The image of a disc, or the device that holds it: read where it is asked for, never written.
#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <span>

namespace veska_tool {

class DiscImage {
 public:
  /// Opens it for reading. Throws Failure.
  explicit DiscImage(const std::filesystem::path& path);

  /// In bytes; 0 where a device does not tell.
  std::uint64_t Size() const { return size_; }

  /// Reads the bytes at `offset`, and returns how many: fewer only at the end. Sectors that the
  /// medium does not give are zeros, and are counted.
  std::size_t Read(std::uint64_t offset, std::span<unsigned char> to);

  /// How many sectors could not be read.
  std::uint64_t UnreadableSectors() const { return unreadable_; }

 private:
  std::size_t ReadAt(std::uint64_t offset, std::span<unsigned char> to);

  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  std::unique_ptr<std::FILE, Close> file_;
  std::uint64_t size_ = 0;
  std::uint64_t unreadable_ = 0;
};

/// True when an image has the marks of a disc's file system.
bool HasVolumeMarks(DiscImage& image);

/// True for the device of a disc, and for an image with a file system.
bool IsDisc(const std::filesystem::path& path);

}  // namespace veska_tool
