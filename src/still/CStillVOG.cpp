#include <veska/CStillVOG.h>

#include "frame/image.h"

namespace VESKA {
namespace {

unsigned char* BytesOf(tag_S_VOB_ENT& entry) { return reinterpret_cast<unsigned char*>(&entry); }

/// Converts the numbers of the entry's form; its own inverse.
void SwapEntry(tag_S_VOB_ENT& entry) {
  for (const Field& field : kStillEntryFields[entry.Form()]) SwapField(field, BytesOf(entry));
}

}  // namespace

CStillVOG::~CStillVOG() = default;

void CStillVOG::Clear() {
  header_ = {};
  entries_.Clear();
}

bool CStillVOG::Parse(unsigned char* const data) { return ParseTable(*this, data); }

void CStillVOG::Read(const ImageReader& image) {
  Clear();
  image.Copy(0, header_);
  image.Spend(sizeof(tag_S_VOB_ENT) * header_.S_VOB_Ns);
  entries_.Reserve(header_.S_VOB_Ns);
  std::uint64_t position = sizeof header_;
  for (int i = 0; i < header_.S_VOB_Ns; ++i) {
    tag_S_VOB_ENT entry{};
    entry.S_VOB_ENT_TY = image.Byte(position);
    std::memcpy(&entry, image.Bytes(position, entry.Size()), entry.Size());
    SwapEntry(entry);
    position += entry.Size();
    entries_.Add(entry);
  }
}

void CStillVOG::AutoComplete() { header_.S_VOB_Ns = static_cast<std::uint8_t>(GetCount()); }

unsigned long CStillVOG::GetDataSize() const {
  if (IsEmpty()) return 0;
  unsigned long size = sizeof header_;
  int left = header_.S_VOB_Ns;
  for (const tag_S_VOB_ENT& entry : entries_) {
    if (left-- == 0) break;
    size += entry.Size();
  }
  return size;
}

void CStillVOG::GetData(unsigned char* out) { Write(ImageWriter(out)); }

void CStillVOG::Write(const ImageWriter& out) const {
  if (IsEmpty()) return;
  out.Put(0, header_);
  std::uint64_t position = sizeof header_;
  for (tag_S_VOB_ENT entry : entries_) {
    const unsigned size = entry.Size();
    SwapEntry(entry);
    out.PutBytes(position, &entry, size);
    position += size;
  }
}

unsigned long CStillVOG::GetPackCount() {
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
