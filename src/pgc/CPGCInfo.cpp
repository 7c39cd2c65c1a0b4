#include <veska/CPGCInfo.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <type_traits>

#include "frame/image.h"
#include "frame/items.h"
#include "pgc/cells.h"

namespace VESKA {
namespace {

constexpr std::uint64_t kKindOffset = offsetof(tag_M_C_GI, C_TY);
static_assert(kKindOffset == offsetof(tag_S_C_GI, C_TY));

}  // namespace

CPGCInfo::CellItem::CellItem(tag_CELL_TYPE type) { Place(type); }

void CPGCInfo::CellItem::Place(tag_CELL_TYPE type) {
  if (type == CELL_MOVIE) {
    CI = ::new (own_) CMovieCell;
  } else {
    CI = ::new (own_) CStillCell;
  }
}

// A copy does not take over the address: the copied chain is laid out anew. Of a host's own cell it
// takes the content.
// NOLINTNEXTLINE(bugprone-copy-constructor-init)
CPGCInfo::CellItem::CellItem(const CellItem& other) : tag_C_ITEM() {
  WithItsClass(*other.CI, [this]<class Cell>(Cell& cell) {
    if constexpr (!std::is_same_v<Cell, CBaseCell>) {
      CI = ::new (own_) Cell(cell);
    } else {
      std::vector<unsigned char> bytes = BytesOf(cell);
      Place(cell.GetType());
      if (CI->Parse(bytes.data())) return;
      std::destroy_at(CI);
      throw std::bad_alloc();
    }
  });
}

CPGCInfo::CellItem::~CellItem() {
  if (CI != Own()) delete CI;
  std::destroy_at(Own());
}

void CPGCInfo::CellItem::Become(tag_CELL_TYPE type) {
  if (CI == Own() && CI->GetType() == type) return;
  std::destroy_at(this);
  std::construct_at(this, type);
}

void CPGCInfo::CellItem::Read(tag_CELL_TYPE type, const ImageReader& image) {
  if (type == CELL_MOVIE) return static_cast<CMovieCell*>(Own())->CMovieCell::Read(image);
  static_cast<CStillCell*>(Own())->CStillCell::Read(image);
}

bool CPGCInfo::CellItem::operator==(const CellItem& other) const {
  return StandTheSame(static_cast<const tag_C_ITEM&>(*this), other);
}

CPGCInfo::~CPGCInfo() = default;

void CPGCInfo::Clear() {
  header_ = {};
  programs_.Clear();
  cells_.Clear();
}

bool CPGCInfo::Parse(unsigned char* const data) { return ParseTable(*this, data); }

void CPGCInfo::Read(const ImageReader& image) {
  image.Copy(0, header_);
  image.CopyAll(sizeof header_, header_.PG_Ns, programs_);

  const std::uint64_t pointers = sizeof header_ + sizeof(tag_PGI) * header_.PG_Ns;
  const std::uint64_t size = kAddressSize * std::uint64_t{header_.CI_SRP_Ns};
  const unsigned char* pointer = image.Bytes(pointers, size);
  image.Spend(cells_.BlockSize(header_.CI_SRP_Ns));
  cells_.Renew(header_.CI_SRP_Ns);
  const int renewed = cells_.Count();
  for (int i = 0; i < header_.CI_SRP_Ns; ++i, pointer += kAddressSize) {
    const auto address = FromFile<std::uint32_t>(pointer);
    const tag_CELL_TYPE kind = CellKind(image.Byte(address + kKindOffset));
    CellItem& item = i < renewed ? *cells_.Get(i) : cells_.AddReserved(kind);
    if (i < renewed) item.Become(kind);
    item.CI_SA = address;
    item.Read(kind, image.At(address));
  }
}

int CPGCInfo::GetPGStartCellID(int pg) const {
  int cells = 0;
  const int end = pg >= 0 && pg < GetPGCount() ? pg : GetPGCount();
  for (int i = 0; i < end; ++i) cells += GetPGNode(i)->C_Ns;
  return cells;
}

CPGCInfo::PG_VOB_TYPE CPGCInfo::GetProgramVOBType(int pg) const {
  const tag_PGI* program = GetPGNode(pg);
  if (program == nullptr) return PG_VOB_INVALID;
  const int first = GetPGStartCellID(pg);
  const int end = std::min(first + program->C_Ns, GetCellCount());
  bool has_movie = false;
  bool has_still = false;
  for (int i = first; i < end; ++i) {
    (GetCellNode(i)->CI->GetType() == CELL_MOVIE ? has_movie : has_still) = true;
  }
  if (!has_movie) return PG_VOB_STILL;
  return has_still ? PG_VOB_MIXED : PG_VOB_MOVIE;
}

void CPGCInfo::AutoComplete() {
  header_.PG_Ns = static_cast<std::uint8_t>(GetPGCount());
  header_.CI_SRP_Ns = static_cast<std::uint16_t>(GetCellCount());
  unsigned long address =
      SizeOf<tag_PGC_GI>() + SizeOf<tag_PGI>(header_.PG_Ns) + kAddressSize * header_.CI_SRP_Ns;
  for (CellItem& item : cells_) {
    item.CI->AutoComplete();
    item.CI_SA = static_cast<std::uint32_t>(address);
    address += item.CI->GetDataSize();
  }
}

unsigned long CPGCInfo::GetDataSize() const {
  unsigned long size = SizeOf<tag_PGC_GI>() + SizeOf<tag_PGI>(GetPGCount()) +
                       kAddressSize * static_cast<unsigned long>(GetCellCount());
  for (const CellItem& item : cells_) size += item.CI->GetDataSize();
  return size;
}

void CPGCInfo::GetData(unsigned char* out) { Write(ImageWriter(out)); }

std::uint64_t CPGCInfo::Write(const ImageWriter& out) const {
  out.Put(0, header_);
  out.PutAll(sizeof header_, programs_);
  std::uint64_t pointer =
      sizeof header_ + sizeof(tag_PGI) * static_cast<std::uint64_t>(GetPGCount());
  std::uint64_t position = pointer + kAddressSize * static_cast<std::uint64_t>(GetCellCount());
  for (const CellItem& item : cells_) {
    out.PutLong(pointer, item.CI_SA);
    pointer += kAddressSize;
    position += item.CI->Write(out.At(position));
  }
  return position;
}

}  // namespace VESKA
