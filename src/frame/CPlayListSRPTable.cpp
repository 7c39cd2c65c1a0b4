#include <veska/CPlayListSRPTable.h>

#include "frame/image.h"

namespace VESKA {

CPlayListSRPTable::~CPlayListSRPTable() = default;

void CPlayListSRPTable::Clear() {
  header_ = {};
  records_.Clear();
}

bool CPlayListSRPTable::Parse(unsigned char* const data) { return ParseTable(*this, data); }

void CPlayListSRPTable::Read(const ImageReader& image) {
  image.Copy(0, header_);
  image.CopyAll(sizeof header_, header_.PL_SRP_Ns, records_);
}

void CPlayListSRPTable::AutoComplete() {
  header_.PL_SRP_Ns = static_cast<std::uint8_t>(GetCount());
  header_.PL_SRPT_EA =
      static_cast<std::uint32_t>(sizeof header_ + sizeof(tag_PL_SRP) * header_.PL_SRP_Ns - 1);
}

unsigned long CPlayListSRPTable::GetDataSize() const { return header_.PL_SRPT_EA + 1UL; }

void CPlayListSRPTable::GetData(unsigned char* out) { Write(ImageWriter(out)); }

void CPlayListSRPTable::Write(const ImageWriter& out) const {
  out.Put(0, header_);
  out.PutAll(sizeof header_, records_);
}

}  // namespace VESKA
