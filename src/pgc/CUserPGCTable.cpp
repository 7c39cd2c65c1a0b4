#include <veska/CUserPGCTable.h>

#include "frame/image.h"
#include "frame/items.h"

namespace VESKA {

using Item = tag_UD_PGCI_ITEM;

CUserPGCTable::~CUserPGCTable() = default;

void CUserPGCTable::Clear() {
  header_ = {};
  items_.Clear();
}

bool CUserPGCTable::Parse(unsigned char* const data) { return ParseTable(*this, data); }

void CUserPGCTable::Read(const ImageReader& image) {
  image.Copy(0, header_);
  ReadItems<&Item::UD_PGCI_SA, &Item::UD_PGCI>(image, sizeof header_, header_.UD_PGCI_Ns, items_);
}

void CUserPGCTable::AutoComplete() {
  header_.UD_PGCI_Ns = static_cast<std::uint8_t>(GetCount());
  const auto end = CompleteItems<&Item::UD_PGCI_SA, &Item::UD_PGCI>(sizeof header_, items_);
  header_.UD_PGCIT_EA = static_cast<std::uint32_t>(end - 1);
}

void CUserPGCTable::GetData(unsigned char* out) { Write(ImageWriter(out)); }

void CUserPGCTable::Write(const ImageWriter& out) const {
  if (IsEmpty()) return;
  out.Put(0, header_);
  WriteItems<&Item::UD_PGCI_SA, &Item::UD_PGCI>(out, sizeof header_, items_);
}

bool CUserPGCTable::operator==(const CUserPGCTable& other) const {
  if (IsEmpty() && other.IsEmpty()) return true;
  return header_ == other.header_ && items_ == other.items_;
}

}  // namespace VESKA
