#include <veska/CStillAAG.h>

#include "frame/image.h"

namespace VESKA {

CStillAAG::~CStillAAG() = default;

void CStillAAG::Clear() {
  header_ = {};
  entries_.Clear();
}

bool CStillAAG::Parse(unsigned char* const data) { return ParseTable(*this, data); }

void CStillAAG::Read(const ImageReader& image) {
  image.Copy(0, header_);
  image.CopyAll(sizeof header_, header_.AA_ENT_Ns, entries_);
}

void CStillAAG::AutoComplete() { header_.AA_ENT_Ns = static_cast<std::uint8_t>(GetCount()); }

unsigned long CStillAAG::GetDataSize() const {
  return IsEmpty() ? 0 : SizeOf<tag_S_AAG_GI>() + SizeOf<tag_AA_ENT>(header_.AA_ENT_Ns);
}

void CStillAAG::GetData(unsigned char* out) { Write(ImageWriter(out)); }

std::uint64_t CStillAAG::Write(const ImageWriter& out) const {
  if (IsEmpty()) return 0;
  out.Put(0, header_);
  out.PutAll(sizeof header_, entries_);
  return GetDataSize();
}

unsigned long CStillAAG::GetPackCount() const {
  std::uint32_t packs = 0;
  for (const tag_AA_ENT& entry : entries_) packs += entry.PCKs;
  return packs;
}

bool CStillAAG::operator==(const CStillAAG& other) const {
  if (IsEmpty() && other.IsEmpty()) return true;
  return header_ == other.header_ && entries_ == other.entries_;
}

}  // namespace VESKA
