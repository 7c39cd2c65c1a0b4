#include "veska/workshop/locate.h"

#include <algorithm>
#include <functional>
#include <string_view>

#include "map/image_bytes.h"
#include "veska/workshop/check.h"
#include "veska/workshop/salvage.h"

namespace VESKA::workshop {
namespace {

constexpr std::size_t kChunk = std::size_t{1} << 22U;

/// An end address beyond this is damaged: the counts of an honest file come to a few MB.
constexpr std::uint64_t kLargestCredible = std::uint64_t{1} << 26U;
/// What is looked at of a file whose end address is not credible.
constexpr std::uint64_t kLookedAt = std::uint64_t{1} << 20U;

constexpr std::uint64_t kHeaderSize = kFileSize<tag_VMGI_MAT_HEADER>;

/// The size of the management file whose header is given, by its end address.
std::uint64_t SizeBy(std::span<const unsigned char> header) {
  constexpr std::uint64_t kEnd = offsetof(tag_VMGI_MAT_HEADER, VMG_EA);
  const std::uint64_t size =
      ImageBytes(header).Number(kEnd, sizeof(tag_VMGI_MAT_HEADER::VMG_EA)) + 1;
  return size < kHeaderSize || size > kLargestCredible ? kLookedAt : size;
}

std::size_t HashOf(const Bytes& bytes) {
  return std::hash<std::string_view>()({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

void Examine(const Bytes& bytes, Located& located) {
  const Examination check = Check(bytes, 1);
  located.size = bytes.size();
  located.loads = check.loads;
  located.is_sound = check.loads && check.errors == 0;
  located.can_be_salvaged = located.loads || Salvage(bytes).info != nullptr;
}

class Search {
 public:
  explicit Search(const ReadBytes& read) : read_(read) {}

  std::vector<Located> Run(const std::function<bool(std::uint64_t)>& went) {
    Bytes chunk(kChunk);
    for (std::uint64_t at = 0;;) {
      const std::size_t there = read_(at, chunk);
      for (std::size_t i = 0; i < there; i += kSectorSize) {
        const auto sector =
            std::span(chunk).subspan(i, std::min<std::size_t>(kSectorSize, there - i));
        if (BeginsLikeOne(sector)) Found(at + i, SizeBy(sector));
      }
      at += there;
      const bool goes_on = !went || went(at);
      if (there < chunk.size() || !goes_on) return std::move(found_);
    }
  }

 private:
  void Found(std::uint64_t offset, std::uint64_t size) {
    Located located{.offset = offset, .size = size};
    const Bytes bytes = ReadLocated(read_, located);
    Examine(bytes, located);
    const std::size_t hash = HashOf(bytes);
    for (std::size_t i = 0; i < found_.size() && located.same_as == 0; ++i) {
      const bool may_be = found_[i].size == located.size && hashes_[i] == hash;
      if (may_be && ReadLocated(read_, found_[i]) == bytes) located.same_as = i + 1;
    }
    found_.push_back(located);
    hashes_.push_back(hash);
  }

  const ReadBytes& read_;
  std::vector<Located> found_;
  std::vector<std::size_t> hashes_;
};

}  // namespace

std::vector<Located> Locate(const ReadBytes& read,
                            const std::function<bool(std::uint64_t bytes)>& went) {
  return Search(read).Run(went);
}

Located LocatedAt(const ReadBytes& read, std::uint64_t offset) {
  Located located{.offset = offset};
  Bytes header(kHeaderSize);
  header.resize(read(offset, header));
  if (!BeginsLikeOne(header)) return located;
  located.size = SizeBy(header);
  Examine(ReadLocated(read, located), located);
  return located;
}

bool BeginsLikeOne(std::span<const unsigned char> bytes) {
  return bytes.size() >= kFileIdentifier.size() &&
         std::equal(kFileIdentifier.begin(), kFileIdentifier.end(), bytes.begin());
}

Bytes ReadLocated(const ReadBytes& read, const Located& located) {
  Bytes bytes(static_cast<std::size_t>(located.size));
  bytes.resize(read(located.offset, bytes));
  return bytes;
}

}  // namespace VESKA::workshop
