#include "disc_image.h"

#include <veska/workshop/locate.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <system_error>

#include "tool_io.h"

namespace veska_tool {
namespace {

#ifdef _WIN32
int SeekTo(std::FILE* file, std::int64_t offset, int from) {
  return ::_fseeki64(file, offset, from);
}
std::int64_t Position(std::FILE* file) { return ::_ftelli64(file); }
#else
int SeekTo(std::FILE* file, std::int64_t offset, int from) {
  return ::fseeko(file, static_cast<off_t>(offset), from);
}
std::int64_t Position(std::FILE* file) { return ::ftello(file); }
#endif

}  // namespace

DiscImage::DiscImage(const std::filesystem::path& path) : file_(OpenToRead(path)) {
  // Each read is of many sectors, or of one that is asked for: nothing is gained by a buffer.
  std::setvbuf(file_.get(), nullptr, _IONBF, 0);
  if (SeekTo(file_.get(), 0, SEEK_END) != 0) return;
  size_ = static_cast<std::uint64_t>(std::max<std::int64_t>(Position(file_.get()), 0));
}

std::size_t DiscImage::ReadAt(std::uint64_t offset, std::span<unsigned char> to) {
  std::clearerr(file_.get());
  if (SeekTo(file_.get(), static_cast<std::int64_t>(offset), SEEK_SET) != 0) return 0;
  return std::fread(to.data(), 1, to.size(), file_.get());
}

std::size_t DiscImage::Read(std::uint64_t offset, std::span<unsigned char> to) {
  if (size_ != 0) {
    if (offset >= size_) return 0;
    to = to.first(static_cast<std::size_t>(std::min<std::uint64_t>(to.size(), size_ - offset)));
  }
  std::size_t there = ReadAt(offset, to);
  while (there < to.size() && std::ferror(file_.get()) != 0) {
    // Go on behind the sector that cannot be read. Without a known size, an error may be the end.
    constexpr auto kSector = static_cast<std::size_t>(VESKA::workshop::kSectorSize);
    const std::size_t next =
        std::min<std::size_t>(to.size(), there + kSector - (offset + there) % kSector);
    if (size_ == 0) return there;
    std::memset(to.data() + there, 0, next - there);
    ++unreadable_;
    there = next + ReadAt(offset + next, to.subspan(next));
  }
  return there;
}

bool HasVolumeMarks(DiscImage& image) {
  // Sector 16 begins the volume recognition sequence (ECMA-167 2/9): a byte that tells the kind,
  // then an identifier.
  constexpr std::uint64_t kIdentifierAt = 16 * VESKA::workshop::kSectorSize + 1;
  std::array<char, 5> identifier{};
  image.Read(kIdentifierAt,
             {reinterpret_cast<unsigned char*>(identifier.data()), identifier.size()});
  const std::string_view found(identifier.data(), identifier.size());
  return found == "BEA01" || found == "CD001";
}

bool IsDisc(const std::filesystem::path& path) {
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  if (std::filesystem::is_block_file(status)) return true;
  if (!std::filesystem::is_regular_file(status)) return false;
  try {
    DiscImage image(path);
    return HasVolumeMarks(image);
  } catch (const Failure&) {
    return false;  // one that cannot be read may well be written
  }
}

}  // namespace veska_tool
