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
  Clear();
  image.Copy(0, header_);
  const std::uint64_t count = header_.IT_TXT_SRP_Ns;
  image.Bytes(sizeof header_, kPointerSize * count);
  image.Spend(items_.BlockSize(header_.IT_TXT_SRP_Ns));
  items_.Reserve(header_.IT_TXT_SRP_Ns);
  for (std::uint64_t i = 0; i < count; ++i) {
    tag_IT_TXT_ITEM* item = items_.Add();
    item->IT_TXT_SA = image.Word(sizeof header_ + kPointerSize * i);
    item->IT_TXT_SZ = image.Word(sizeof header_ + kPointerSize * i + 2);
  }
  for (tag_IT_TXT_ITEM& item : items_) {
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
