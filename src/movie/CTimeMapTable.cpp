#include <veska/CTimeMapTable.h>

#include "frame/image.h"

namespace VESKA {

CTimeMapTable::~CTimeMapTable() = default;

void CTimeMapTable::Clear() {
  header_ = {};
  ClearTimeEntrys();
  ClearVobuEntrys();
}

bool CTimeMapTable::Parse(unsigned char* const data) { return ParseTable(*this, data); }

void CTimeMapTable::Read(const ImageReader& image) {
  std::uint64_t end = image.Copy(0, header_);
  end = image.CopyAll(end, header_.TM_ENT_Ns, times_);
  image.CopyAll(end, header_.VOBU_ENT_Ns, vobus_);
}

unsigned long CTimeMapTable::GetPackCount() const {
  std::uint32_t packs = 0;
  for (const tag_VOBU_ENT& vobu : vobus_) packs += vobu.VOBU_SZ();
  return packs;
}

unsigned long CTimeMapTable::GetFieldCount() const {
  std::uint32_t fields = 0;
  for (const tag_VOBU_ENT& vobu : vobus_) fields += vobu.VOBU_PB_TM();
  return fields;
}

void CTimeMapTable::AutoComplete() {
  header_.TM_ENT_Ns = static_cast<std::uint16_t>(GetTimeENCount());
  header_.VOBU_ENT_Ns = static_cast<std::uint16_t>(GetVobuENCount());
}

unsigned long CTimeMapTable::GetDataSize() const {
  if (IsEmpty()) return 0;
  return SizeOf<tag_TMAP_GI>() + SizeOf<tag_TM_ENT>(header_.TM_ENT_Ns) +
         SizeOf<tag_VOBU_ENT>(header_.VOBU_ENT_Ns);
}

void CTimeMapTable::GetData(unsigned char* out) { Write(ImageWriter(out)); }

std::uint64_t CTimeMapTable::Write(const ImageWriter& out) const {
  if (IsEmpty()) return 0;
  std::uint64_t end = out.Put(0, header_);
  end = out.PutAll(end, times_);
  out.PutAll(end, vobus_);
  return GetDataSize();
}

bool CTimeMapTable::operator==(const CTimeMapTable& other) const {
  if (IsEmpty() && other.IsEmpty()) return true;
  return header_ == other.header_ && times_ == other.times_ && vobus_ == other.vobus_;
}

}  // namespace VESKA
