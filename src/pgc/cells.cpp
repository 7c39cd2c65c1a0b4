#include "pgc/cells.h"

#include <algorithm>

#include "frame/image.h"

namespace VESKA {
namespace {

constexpr std::uint8_t kLongEntry = 0x40;  // the lowest EP_TY of an entry point with a block
constexpr unsigned kStillKind = 0x20;      // in the bits of C_TY that hold the kind: 001

/// The bytes that an entry point takes in the file.
template <class Entry>
constexpr unsigned long EntrySize(std::uint8_t EP_TY) {
  return kFileSize<Entry> + (IsLongEntry(EP_TY) ? kEntryBlockSize : 0);
}

}  // namespace

std::vector<unsigned char> BytesOf(CBaseCell& cell) {
  // Every entry point is written, however many the header counts.
  const std::size_t all = sizeof(tag_M_C_GI) + static_cast<std::size_t>(cell.GetCount()) *
                                                   EntrySize<tag_M_C_EPI>(kLongEntry);
  std::vector<unsigned char> bytes(std::max<std::size_t>(cell.GetDataSize(), all));
  cell.GetData(bytes.data());
  bytes.resize(cell.GetDataSize());
  return bytes;
}

bool StandTheSame(CBaseCell& a, CBaseCell& b) {
  if (a.GetType() != b.GetType()) return false;
  return WithItsClass(a, [&]<class Cell>(Cell& cell) {
    if constexpr (!std::is_same_v<Cell, CBaseCell>) {
      if (const Cell* other = As<Cell>(b)) return cell == *other;
    }
    try {
      return a.GetCount() == b.GetCount() && BytesOf(a) == BytesOf(b);
    } catch (const std::bad_alloc&) {
      return false;
    }
  });
}

CBaseCell::~CBaseCell() = default;

// A host's cell trusts what it parses. One of the library's finds out whether all of it is there.
void CBaseCell::Read(const ImageReader& image) {
  const auto parse = [&](auto&& cell) {
    cell.Read(image);
    if (!Parse(BytesOf(cell).data())) throw std::bad_alloc();
  };
  if (GetType() == CELL_MOVIE) return parse(CMovieCell());
  parse(CStillCell());
}

std::uint64_t CBaseCell::Write(const ImageWriter& out) const {
  try {
    // For a host, writing an object is not const.
    const std::vector<unsigned char> bytes = BytesOf(const_cast<CBaseCell&>(*this));
    return out.PutBytes(0, bytes.data(), bytes.size());
  } catch (const std::bad_alloc&) {
    out.Refuse();
    return GetDataSize();
  }
}

CMovieCell::~CMovieCell() = default;
CStillCell::~CStillCell() = default;

template <class Header, class Entry, tag_CELL_TYPE Type>
bool CellOf<Header, Entry, Type>::Parse(unsigned char* const data) {
  return ParseTable(*this, data);
}

template <class Header, class Entry, tag_CELL_TYPE Type>
void CellOf<Header, Entry, Type>::Clear() {
  header_ = {};
  entries_.Clear();
}

template <class Header, class Entry, tag_CELL_TYPE Type>
void CellOf<Header, Entry, Type>::Read(const ImageReader& image) {
  image.Copy(0, header_);
  const int count = header_.C_EPI_Ns;
  if (count == 0) return entries_.Clear();

  std::uint64_t end = sizeof header_;
  std::uint64_t blocks = 0;
  for (int i = 0; i < count; ++i) {
    const std::uint8_t type = image.Byte(end);
    end += EntrySize<Entry>(type);
    if (IsLongEntry(type)) blocks += kEntryBlockSize;
  }
  const unsigned char* from = image.Bytes(0, end) + sizeof header_;
  image.Spend(entries_.BlockSize(count, blocks));

  unsigned char* room = entries_.Load(count, blocks);
  for (Entry& entry : entries_) {
    CopyFields<kFields<Entry>>(reinterpret_cast<unsigned char*>(&entry), from);
    from += kFileSize<Entry>;
    entry.block = nullptr;
    if (!IsLongEntry(entry.EP_TY)) continue;
    entries_.SetFirstBlock(entry, from, kEntryBlockSize, room);
    from += kEntryBlockSize;
  }
}

template <class Header, class Entry, tag_CELL_TYPE Type>
Entry* CellOf<Header, Entry, Type>::WithBlock(Entry* entry, int i, tag_CELL_ENTRY_TYPE type) {
  if (entry == nullptr || type != CELL_ENTRY_LONG) return entry;
  if (entries_.SetBlock(*entry, nullptr, kEntryBlockSize)) return entry;
  entries_.Delete(i);
  return nullptr;
}

template <class Header, class Entry, tag_CELL_TYPE Type>
void CellOf<Header, Entry, Type>::AutoComplete() {
  header_.C_EPI_Ns = static_cast<std::uint16_t>(GetCount());
  const unsigned rest = header_.C_TY & ~kCellKindBits;
  header_.C_TY = static_cast<std::uint8_t>(rest | (Type == CELL_STILL ? kStillKind : 0));
}

template <class Header, class Entry, tag_CELL_TYPE Type>
unsigned long CellOf<Header, Entry, Type>::GetDataSize() const {
  unsigned long size = sizeof header_;
  int left = header_.C_EPI_Ns;
  for (const Entry& entry : entries_) {
    if (left-- == 0) break;
    size += EntrySize<Entry>(entry.EP_TY);
  }
  return size;
}

template <class Header, class Entry, tag_CELL_TYPE Type>
void CellOf<Header, Entry, Type>::GetData(unsigned char* out) {
  WriteFirst(GetCount(), ImageWriter(out));
}

template <class Header, class Entry, tag_CELL_TYPE Type>
std::uint64_t CellOf<Header, Entry, Type>::Write(const ImageWriter& out) const {
  return WriteFirst(header_.C_EPI_Ns, out);
}

template <class Header, class Entry, tag_CELL_TYPE Type>
std::uint64_t CellOf<Header, Entry, Type>::WriteFirst(int count, const ImageWriter& out) const {
  static constexpr unsigned char kNoBlock[kEntryBlockSize] = {};
  std::uint64_t position = out.Put(0, header_);
  for (auto entry = entries_.begin(); count != 0 && entry != entries_.end(); --count, ++entry) {
    position = out.Put(position, *entry);
    if (!IsLongEntry(entry->EP_TY)) continue;
    const unsigned char* block = entry->block;
    position = out.PutBytes(position, block != nullptr ? block : kNoBlock, kEntryBlockSize);
  }
  return position;
}

template class CellOf<tag_M_C_GI, tag_M_C_EPI, CELL_MOVIE>;
template class CellOf<tag_S_C_GI, tag_S_C_EPI, CELL_STILL>;

}  // namespace VESKA
