/// The index of structures that are found by start addresses: a count, the addresses, the
/// structures.
#pragma once

#include <veska/RecordList.h>
#include <veska/export.h>

namespace VESKA {

class ImageReader;
class ImageWriter;

/// What `CMovieAVFile`, `CStillAVFile` and `CAdditionalAFile` have in common: in the file, a header
/// with a 16-bit count, one 32-bit start address per item and the items' tables. `Address` and
/// `Table` name the members of `Item` that hold its start address and the table that it owns. Start
/// addresses count from the first byte of the enclosing top-level table, not from the index.
///
/// List operations change neither the count in the header nor an address; `AutoComplete` does.
/// An item whose table is empty takes no bytes in the file and so cannot be read back: it is kept
/// in memory and here, and `CVMGInfo::SaveToFile` refuses to save it.
///
/// Accessors hand out pointers that stay valid until the item is deleted or the index is cleared,
/// parsed or assigned to. A list operation that finds no memory changes nothing and returns what it
/// returns out of range. One thread at a time.
template <class Header, class Item, auto Address, auto Table>
class ItemIndex {
 public:
  ItemIndex() = default;
  ItemIndex(const ItemIndex&) = default;
  ItemIndex& operator=(const ItemIndex&) = default;
  ItemIndex(ItemIndex&&) noexcept = default;
  ItemIndex& operator=(ItemIndex&&) noexcept = default;
  virtual ~ItemIndex() = default;

  /// Zeroes the header and deletes every item.
  void Clear();
  /// True when there are no items.
  bool IsEmpty() const { return items_.IsEmpty(); }

  /// Reads the index that stands `offset` bytes behind `table`, the first byte of the enclosing
  /// table. Trusts the caller that the image holds all that the counts and addresses in it say.
  /// False when there is no memory.
  bool Parse(unsigned char* const table, unsigned long offset);

  /// The header: the number of items as of the last `Parse` or `AutoComplete`.
  const Header& GetHeader() const { return header_; }

  /// The number of items.
  int GetCount() const { return items_.Count(); }
  ///@{
  /// The item at position `index`, null when out of range.
  Item* GetNode(int index) { return items_.Get(index); }
  const Item* GetNode(int index) const { return items_.Get(index); }
  Item* operator[](int index) { return items_.Get(index); }
  const Item* operator[](int index) const { return items_.Get(index); }
  ///@}
  ///@{
  /// The items in order, as a range of `Item&`.
  auto Items() { return items_.Range(); }
  auto Items() const { return items_.Range(); }
  ///@}
  /// Appends an item with address 0 and an empty table; null beyond 65,535 items.
  Item* AddNode() { return items_.Add(); }
  /// Places such an item before position `index`, which must be an item's; null otherwise.
  Item* InsertNode(int index) { return items_.Insert(index); }
  /// Deletes the item and its table; false when out of range.
  bool DeleteNode(int index) { return items_.Delete(index); }

  /// Completes every item's table and sets the count and the start addresses, for an index that
  /// will stand `base` bytes behind the first byte of the enclosing table.
  void AutoComplete(unsigned long base);

  /// The size in the file in bytes, 0 when empty: that of the first items as the header counts
  /// them.
  unsigned long GetDataSize() const;
  /// Writes the index and its tables back to back at `out`; nothing when empty. Call `AutoComplete`
  /// before, so that `GetDataSize()` bytes are enough.
  void GetData(unsigned char* out);

  /// Equal when both would stand the same in a file.
  bool operator==(const ItemIndex& other) const;

  ///@{
  /// For the tables of the library. `Write` returns `GetDataSize()`.
  void Read(const ImageReader& table, unsigned long offset);
  std::uint64_t Write(const ImageWriter& out) const;
  ///@}

 private:
  Header header_{};
  RecordList<Item, 0xFFFF> items_;
};

}  // namespace VESKA
