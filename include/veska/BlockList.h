/// The list of records that own a separate block of bytes.
#pragma once

#include <veska/RecordList.h>
#include <veska/records.h>

#include <functional>
#include <limits>

namespace VESKA {

/// How a record holds its block: what gives the block (null for none), its size in bytes (0 for
/// none), and what sets both.
template <class Record>
struct BlockOf;

/// @cond the same three for each record
template <class Entry>
struct EntryBlock {
  static unsigned char* Get(const Entry& entry) { return entry.block; }
  static std::size_t Size(const Entry& entry) {
    return entry.block != nullptr ? kEntryBlockSize : 0;
  }
  static void Set(Entry& entry, unsigned char* block, std::size_t) { entry.block = block; }
};
template <>
struct BlockOf<tag_M_C_EPI> : EntryBlock<tag_M_C_EPI> {};
template <>
struct BlockOf<tag_S_C_EPI> : EntryBlock<tag_S_C_EPI> {};

template <>
struct BlockOf<tag_IT_TXT> {
  static unsigned char* Get(const tag_IT_TXT& record) { return record.text; }
  static std::size_t Size(const tag_IT_TXT& record) {
    return record.text != nullptr ? record.length : 0;
  }
  static void Set(tag_IT_TXT& record, unsigned char* text, std::size_t size) {
    record.text = text;
    record.length = static_cast<std::uint8_t>(size);
  }
};

template <>
struct BlockOf<tag_A_MNFI_ITEM> {
  static unsigned char* Get(const tag_A_MNFI_ITEM& item) { return item.A_MNFI.MNF_DATA; }
  static std::size_t Size(const tag_A_MNFI_ITEM& item) {
    return item.A_MNFI.MNF_DATA != nullptr ? item.A_MNFI.MNF_DATA_SZ : 0;
  }
  static void Set(tag_A_MNFI_ITEM& item, unsigned char* data, std::size_t size) {
    item.A_MNFI.MNF_DATA = data;
    item.A_MNFI.MNF_DATA_SZ = static_cast<std::uint32_t>(size);
  }
};
/// @endcond

/// A record list that owns its records' blocks as well. Those of a list that was loaded or copied
/// lie together behind the records, in the same allocation; those set later are allocated one by
/// one.
template <class Record, int Limit>
class BlockList : private RecordList<Record, Limit> {
  using Base = RecordList<Record, Limit>;
  using Block = BlockOf<Record>;

 public:
  ///@{
  /// As in `RecordList`.
  using Base::Add;
  using Base::begin;
  using Base::BlockSize;
  using Base::Count;
  using Base::end;
  using Base::Get;
  using Base::Insert;
  using Base::IsEmpty;
  using Base::Range;
  using Base::Spare;
  ///@}

  BlockList() = default;
  /// Copies the records and their blocks into one allocation. Throws `std::bad_alloc`.
  BlockList(const BlockList& other) : BlockList() {
    std::uint64_t bytes = 0;
    for (const Record& record : other) bytes += Block::Size(record);
    unsigned char* room = Load(other.Count(), bytes);
    auto from = other.begin();
    for (Record& record : *this) {
      record = *from;
      SetFirstBlock(record, Block::Get(*from), Block::Size(*from), room);
      ++from;
    }
  }
  /// As by copying; the list stays as it is where that throws.
  BlockList& operator=(const BlockList& other) {
    if (this != &other) *this = BlockList(other);
    return *this;
  }
  BlockList(BlockList&&) noexcept = default;
  BlockList& operator=(BlockList&& other) noexcept {
    if (this != &other) {
      Clear();
      Base::operator=(std::move(other));
    }
    return *this;
  }
  ~BlockList() { Clear(); }

  /// Deletes every record and its block.
  void Clear() {
    ReleaseAll();
    Base::Clear();
  }

  /// Deletes the record at position `i` and its block. False, changing nothing, when out of range
  /// or without memory.
  bool Delete(int i) {
    const Record* record = Get(i);
    if (record == nullptr) return false;
    unsigned char* block = Block::Get(*record);
    if (!Base::Delete(i)) return false;
    Release(block);
    return true;
  }

  /// On an empty list: makes room for `count` records with blocks of `bytes` in all, which are then
  /// added and given their blocks. Returns the room for the blocks. Throws `std::bad_alloc`.
  unsigned char* Reserve(int count, std::uint64_t bytes) {
    Base::Reserve(count, SpareOf(bytes));
    return Base::Spare().data();
  }

  /// Makes the list `count` records whose bytes the caller sets next, with blocks of `bytes` in
  /// all.
  unsigned char* Load(int count, std::uint64_t bytes) {
    const std::uint32_t spare = SpareOf(bytes);
    ReleaseAll();
    Base::Load(count, spare);
    return Base::Spare().data();
  }

  /// Gives a new record a copy of the `size` bytes at `bytes`, which takes up that much of `room`.
  static void SetFirstBlock(Record& record, const unsigned char* bytes, std::size_t size,
                            unsigned char*& room) {
    if (size != 0) std::memcpy(room, bytes, size);
    Block::Set(record, size != 0 ? room : nullptr, size);
    room += size;
  }

  /// Gives a record of the list a block of `size` bytes, copied from `bytes` (zero bytes when
  /// null), which may lie in its present block. A block of the same size is reused. False, changing
  /// nothing, when there is no memory.
  bool SetBlock(Record& record, const unsigned char* bytes, std::size_t size) {
    unsigned char* block = Block::Get(record);
    if (size == 0 || size != Block::Size(record)) {
      block = size != 0 ? new (std::nothrow) unsigned char[size]() : nullptr;
      if (size != 0 && block == nullptr) return false;
    }
    if (size != 0 && bytes != nullptr) std::memmove(block, bytes, size);
    if (block != Block::Get(record)) Release(Block::Get(record));
    Block::Set(record, block, size);
    return true;
  }

  /// Equal when the records are, in order.
  bool operator==(const BlockList& other) const {
    return static_cast<const Base&>(*this) == static_cast<const Base&>(other);
  }

 private:
  static std::uint32_t SpareOf(std::uint64_t bytes) {
    if (bytes > std::numeric_limits<std::uint32_t>::max()) throw std::bad_alloc();
    return static_cast<std::uint32_t>(bytes);
  }

  void ReleaseAll() {
    for (Record& record : *this) Release(Block::Get(record));
  }

  void Release(unsigned char* block) {
    if (block == nullptr) return;
    const std::less<unsigned char*> before;
    const std::span<unsigned char> loaded = Base::Spare();
    const bool is_loaded =
        !before(block, loaded.data()) && before(block, loaded.data() + loaded.size());
    if (!is_loaded) delete[] block;
  }
};

}  // namespace VESKA
