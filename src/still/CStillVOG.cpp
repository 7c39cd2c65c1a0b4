#include <veska/CStillVOG.h>

#include "frame/image.h"

namespace VESKA {
namespace {

constexpr std::size_t kLongest = sizeof(tag_S_VOB_ENT);

/// As many entries take the bytes that the longest form has beyond the shortest. An entry that is
/// followed by so many can be copied in the longest form, wherever the list ends.
constexpr int kLast = (kLongest - 2 + 1) / 2;

/// The size of `count` entries at `offset`.
std::uint64_t EntriesSize(const ImageReader& image, std::uint64_t offset, int count) {
  std::uint64_t size = 0;
  for (; count != 0; --count) size += StillEntrySize(image.Byte(offset + size));
  return size;
}

}  // namespace

CStillVOG::~CStillVOG() = default;

void CStillVOG::Clear() {
  header_ = {};
  entries_.Clear();
}

bool CStillVOG::Parse(unsigned char* const data) { return ParseTable(*this, data); }

void CStillVOG::Read(const ImageReader& image) {
  image.Copy(0, header_);
  const int count = header_.S_VOB_Ns;
  std::uint64_t size = kLongest * static_cast<std::uint64_t>(count);
  if (!image.Holds(sizeof header_, size)) size = EntriesSize(image, sizeof header_, count);
  const unsigned char* from = image.Bytes(sizeof header_, size);
  image.Spend(entries_.BlockSize(count));

  auto* to = reinterpret_cast<unsigned char*>(entries_.Load(count));
  for (int left = count; left != 0; --left, to += kLongest) {
    const unsigned entry_size = StillEntrySize(*from);
    if (left > kLast) {
      CopyStillEntry(to, from);
    } else {
      unsigned char entry[kLongest] = {};
      std::memcpy(entry, from, entry_size);
      CopyStillEntry(to, entry);
    }
    from += entry_size;
  }
}

void CStillVOG::AutoComplete() { header_.S_VOB_Ns = static_cast<std::uint8_t>(GetCount()); }

unsigned long CStillVOG::GetDataSize() const {
  if (IsEmpty()) return 0;
  unsigned long size = sizeof header_;
  int left = header_.S_VOB_Ns;
  for (const tag_S_VOB_ENT& entry : entries_) {
    if (left-- == 0) break;
    size += StillEntrySize(entry.S_VOB_ENT_TY);
  }
  return size;
}

void CStillVOG::GetData(unsigned char* out) { Write(ImageWriter(out)); }

std::uint64_t CStillVOG::Write(const ImageWriter& out) const {
  if (IsEmpty()) return 0;
  out.Put(0, header_);
  std::uint64_t position = sizeof header_;
  int left = entries_.Count();
  const bool has_room = out.Holds(position, kLongest * static_cast<std::uint64_t>(left));
  for (const tag_S_VOB_ENT& record : entries_) {
    const auto* from = reinterpret_cast<const unsigned char*>(&record);
    const unsigned size = StillEntrySize(record.S_VOB_ENT_TY);
    if (has_room && left > kLast) {
      CopyStillEntry(out.Room(position, kLongest), from);
    } else {
      unsigned char entry[kLongest];
      CopyStillEntry(entry, from);
      out.PutBytes(position, entry, size);
    }
    position += size;
    --left;
  }
  return entries_.Count() == header_.S_VOB_Ns ? position : GetDataSize();
}

unsigned long CStillVOG::GetPackCount() const {
  std::uint32_t packs = 0;
  for (const tag_S_VOB_ENT& entry : entries_) {
    packs += entry.PCKs;
    if ((entry.Form() & 1U) != 0) packs += entry.form1.EXT1_PCKs;
  }
  return packs;
}

bool CStillVOG::operator==(const CStillVOG& other) const {
  if (IsEmpty() && other.IsEmpty()) return true;
  return header_ == other.header_ && entries_ == other.entries_;
}

}  // namespace VESKA
