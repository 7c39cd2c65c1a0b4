#include <veska/CMNFInfoTable.h>

#include "frame/image.h"

namespace VESKA {
namespace {

constexpr std::uint64_t kPointerSize = 2;
constexpr std::uint32_t kFixedSize = kFileSize<tag_A_MNFI>;

/// The length of the data block of the item at `address`, whose successor (or the table's end)
/// starts at `next`. A negative one fails a bounded read and counts as 0 in another.
std::uint32_t DataSize(const ImageReader& image, std::uint64_t address, std::uint64_t next) {
  if (next >= address + kFixedSize) return static_cast<std::uint32_t>(next - address - kFixedSize);
  if (image.IsBounded()) image.Fail(FailureKind::kNegativeLength, address);
  return 0;
}

}  // namespace

CMNFInfoTable::~CMNFInfoTable() = default;

void CMNFInfoTable::Clear() {
  header_ = {};
  items_.Clear();
}

bool CMNFInfoTable::Parse(unsigned char* const data) { return ParseTable(*this, data); }

void CMNFInfoTable::Read(const ImageReader& image) {
  Clear();
  image.Copy(0, header_);
  const int count = header_.MNFI_Ns;
  const auto address_of = [&](int i) {
    return image.Word(sizeof header_ + kPointerSize * static_cast<std::uint64_t>(i));
  };
  const auto size_of = [&](int i) {
    const std::uint64_t end = std::uint64_t{header_.MNFIT_EA} + 1;
    return DataSize(image, address_of(i), i + 1 < count ? address_of(i + 1) : end);
  };

  std::uint64_t bytes = 0;
  for (int i = 0; i < count; ++i) {
    image.Bytes(address_of(i), std::uint64_t{kFixedSize} + size_of(i));
    bytes += size_of(i);
  }
  image.Spend(items_.BlockSize(count, bytes));

  unsigned char* room = items_.Reserve(count, bytes);
  for (int i = 0; i < count; ++i) {
    tag_A_MNFI_ITEM* item = items_.Add();
    item->MNFI_SA = address_of(i);
    const std::uint64_t data = image.Copy(item->MNFI_SA, item->A_MNFI);
    items_.SetFirstBlock(*item, image.Bytes(data, size_of(i)), size_of(i), room);
  }
}

void CMNFInfoTable::SetLastMNFID(unsigned char* const id) {
  std::memcpy(header_.LAST_MNF_ID, id, sizeof header_.LAST_MNF_ID);
}

void CMNFInfoTable::SetNode(int index, const tag_A_MNFI& value) {
  tag_A_MNFI_ITEM* item = GetNode(index);
  if (item == nullptr) return;
  const tag_A_MNFI from = value;
  const std::size_t size = from.MNF_DATA != nullptr ? from.MNF_DATA_SZ : 0;
  if (!items_.SetBlock(*item, from.MNF_DATA, size)) return;
  std::memcpy(&item->A_MNFI, &from, kFixedSize);
}

void CMNFInfoTable::AutoComplete() {
  header_.MNFI_Ns = static_cast<std::uint16_t>(GetCount());
  std::uint64_t address = sizeof header_ + kPointerSize * header_.MNFI_Ns;
  for (tag_A_MNFI_ITEM& item : items_) {
    item.MNFI_SA = static_cast<std::uint16_t>(address);
    address += std::uint64_t{kFixedSize} + item.A_MNFI.MNF_DATA_SZ;
  }
  header_.MNFIT_EA = static_cast<std::uint32_t>(address - 1);
}

void CMNFInfoTable::GetData(unsigned char* out) { Write(ImageWriter(out)); }

void CMNFInfoTable::Write(const ImageWriter& out) const {
  if (IsEmpty()) return;
  out.Put(0, header_);
  std::uint64_t pointer = sizeof header_;
  std::uint64_t position = pointer + kPointerSize * static_cast<std::uint64_t>(GetCount());
  for (const tag_A_MNFI_ITEM& item : items_) {
    out.PutWord(pointer, item.MNFI_SA);
    out.Put(position, item.A_MNFI);
    pointer += kPointerSize;
    position += kFixedSize;
    if (item.A_MNFI.MNF_DATA == nullptr) continue;
    out.PutBytes(position, item.A_MNFI.MNF_DATA, item.A_MNFI.MNF_DATA_SZ);
    position += item.A_MNFI.MNF_DATA_SZ;
  }
}

bool CMNFInfoTable::operator==(const CMNFInfoTable& other) const {
  if (IsEmpty() && other.IsEmpty()) return true;
  return header_ == other.header_ && items_ == other.items_;
}

}  // namespace VESKA
