#include <veska/CTextDataMgr.h>

#include "frame/image.h"

namespace VESKA {
namespace {

constexpr std::uint64_t kPointerSize = 4;  // a 16-bit address, a 16-bit size

}  // namespace

CTextDataMgr::~CTextDataMgr() = default;

void CTextDataMgr::Clear() {
  header_ = {};
  items_.Clear();
}

bool CTextDataMgr::Parse(unsigned char* const data) { return ParseTable(*this, data); }

void CTextDataMgr::Read(const ImageReader& image) {
  image.Copy(0, header_);
  const int count = header_.IT_TXT_SRP_Ns;
  const std::uint64_t size = kPointerSize * static_cast<std::uint64_t>(count);
  const unsigned char* pointer = image.Bytes(sizeof header_, size);
  image.Spend(items_.BlockSize(count));
  items_.Renew(count);
  const int renewed = items_.Count();
  for (int i = 0; i < count; ++i, pointer += kPointerSize) {
    tag_IT_TXT_ITEM& item = i < renewed ? *items_.Get(i) : items_.AddReserved();
    item.IT_TXT_SA = FromFile<std::uint16_t>(pointer);
    item.IT_TXT_SZ = FromFile<std::uint16_t>(pointer + 2);
    item.IT_TXT.Read(image.At(item.IT_TXT_SA), item.IT_TXT_SZ);
  }
}

void CTextDataMgr::AutoComplete() {
  header_.IT_TXT_SRP_Ns = static_cast<std::uint16_t>(GetCount());
  std::uint32_t position =
      sizeof header_ + static_cast<std::uint32_t>(kPointerSize) * header_.IT_TXT_SRP_Ns;
  for (tag_IT_TXT_ITEM& item : items_) {
    item.IT_TXT_SZ = static_cast<std::uint16_t>(item.IT_TXT.GetDataSize());
    item.IT_TXT_SA = static_cast<std::uint16_t>(position);
    position += item.IT_TXT_SZ;
  }
  header_.TXTDT_MG_EA = position - 1;
}

void CTextDataMgr::GetData(unsigned char* out) { Write(ImageWriter(out)); }

void CTextDataMgr::Write(const ImageWriter& out) const {
  if (IsEmpty()) return;
  out.Put(0, header_);
  std::uint64_t pointer = sizeof header_;
  for (const tag_IT_TXT_ITEM& item : items_) {
    out.PutWord(pointer, item.IT_TXT_SA);
    out.PutWord(pointer + 2, item.IT_TXT_SZ);
    pointer += kPointerSize;
    item.IT_TXT.Write(out.At(item.IT_TXT_SA));
  }
}

bool CTextDataMgr::operator==(const CTextDataMgr& other) const {
  if (IsEmpty() && other.IsEmpty()) return true;
  return header_ == other.header_ && items_ == other.items_;
}

}  // namespace VESKA
