#include <veska/CStillVOG.h>

#include "frame/image.h"

namespace VESKA {

CStillVOG::~CStillVOG() = default;

void CStillVOG::Clear() {
  header_ = {};
  entries_.Clear();
}

bool CStillVOG::Parse(unsigned char* const data) { return ParseTable(*this, data); }

void CStillVOG::Read(const ImageReader& image) {
  Clear();
  image.Copy(0, header_);
  image.Spend(entries_.BlockSize(header_.S_VOB_Ns));
  entries_.Reserve(header_.S_VOB_Ns);
  std::uint64_t position = sizeof header_;
  for (int i = 0; i < header_.S_VOB_Ns; ++i) {
    tag_S_VOB_ENT* entry = entries_.Add();
    entry->S_VOB_ENT_TY = image.Byte(position);
    CopyStillEntry(reinterpret_cast<unsigned char*>(entry), image.Bytes(position, entry->Size()));
    position += entry->Size();
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

std::uint64_t CStillVOG::Write(const ImageWriter& out) const {
  if (IsEmpty()) return 0;
  out.Put(0, header_);
  std::uint64_t position = sizeof header_;
  for (const tag_S_VOB_ENT& entry : entries_) {
    if (unsigned char* to = out.Room(position, entry.Size())) {
      CopyStillEntry(to, reinterpret_cast<const unsigned char*>(&entry));
    }
    position += entry.Size();
  }
  return entries_.Count() == header_.S_VOB_Ns ? position : GetDataSize();
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
