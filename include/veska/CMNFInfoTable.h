/// The manufacturer information table.
#pragma once

#include <veska/BlockList.h>
#include <veska/export.h>
#include <veska/records.h>

namespace VESKA {

class ImageReader;
class ImageWriter;

/// The manufacturer records of the disc (MNFIT): a 38-byte header, 2 bytes for each one's
/// address, then the records, 37 bytes and a data block of any length each. The file stores no
/// length: it follows from the addresses. These have 16 bits: a table whose items would start
/// beyond 65,535 is kept in memory, and `CVMGInfo::SaveToFile` refuses to save it.
///
/// Pointers to items stay valid until the item is deleted or the table is cleared, parsed or
/// assigned to. List operations leave the header as it is; `AutoComplete` brings it up to date. A
/// list operation that finds no memory changes nothing and returns what it returns out of range.
/// One thread at a time.
class VESKA_API CMNFInfoTable {
 public:
  CMNFInfoTable() = default;
  CMNFInfoTable(const CMNFInfoTable&) = default;
  CMNFInfoTable& operator=(const CMNFInfoTable&) = default;
  CMNFInfoTable(CMNFInfoTable&&) noexcept = default;
  CMNFInfoTable& operator=(CMNFInfoTable&&) noexcept = default;
  virtual ~CMNFInfoTable();

  /// Zeroes the header and deletes every item.
  void Clear();
  /// True when there are no items; such a table takes no bytes in the file.
  bool IsEmpty() const { return items_.IsEmpty(); }
  /// Reads the table that starts at `data`, and trusts the caller that the image holds all that the
  /// counts and addresses in it say. An item whose length would be negative gets an empty data
  /// block. False when there is no memory.
  bool Parse(unsigned char* const data);

  /// The header, as the last `Parse` or `AutoComplete` left it.
  const tag_MNFITI& GetHeader() const { return header_; }
  /// Sets `LAST_MNF_ID` to the 32 bytes at `id`.
  void SetLastMNFID(unsigned char* const id);

  /// The number of items.
  int GetCount() const { return items_.Count(); }
  ///@{
  /// The item at position `index`, null when out of range.
  tag_A_MNFI_ITEM* GetNode(int index) { return items_.Get(index); }
  const tag_A_MNFI_ITEM* GetNode(int index) const { return items_.Get(index); }
  tag_A_MNFI_ITEM* operator[](int index) { return items_.Get(index); }
  const tag_A_MNFI_ITEM* operator[](int index) const { return items_.Get(index); }
  ///@}
  ///@{
  /// The items in order, as a range of `tag_A_MNFI_ITEM&`.
  auto Items() { return items_.Range(); }
  auto Items() const { return items_.Range(); }
  ///@}
  /// Appends an item of zero bytes without data block; null beyond 65,535.
  tag_A_MNFI_ITEM* AddNode() { return items_.Add(); }
  /// Places such an item before position `index`, which must be an item's; null otherwise.
  tag_A_MNFI_ITEM* InsertNode(int index) { return items_.Insert(index); }
  /// Deletes the item and its data block; false when out of range.
  bool DeleteNode(int index) { return items_.Delete(index); }
  /// Makes the content of item `index` a copy of `value`, whose data may be the item's own and
  /// stays the host's otherwise; null data count as none. The address stays. Does nothing when out
  /// of range or without memory.
  void SetNode(int index, const tag_A_MNFI& value);

  /// Sets the count, the addresses (their low 16 bits) and the end address.
  void AutoComplete();
  /// The size in the file in bytes: `MNFIT_EA` + 1; 0 when empty.
  unsigned long GetDataSize() const { return IsEmpty() ? 0 : header_.MNFIT_EA + 1UL; }
  /// Writes the table in file order at `out`, the items back to back; nothing when empty. `out`
  /// holds at least `GetDataSize()` bytes.
  void GetData(unsigned char* out);

  /// Equal when both would stand the same in a file.
  bool operator==(const CMNFInfoTable& other) const;

  ///@{
  /// For the tables of the library.
  void Read(const ImageReader& image);
  void Write(const ImageWriter& out) const;
  ///@}

 private:
  tag_MNFITI header_{};
  BlockList<tag_A_MNFI_ITEM, 0xFFFF> items_;
};

}  // namespace VESKA
