/// The text data manager.
#pragma once

#include <veska/CTextSet.h>
#include <veska/RecordList.h>
#include <veska/export.h>
#include <veska/records.h>

namespace VESKA {

class ImageReader;
class ImageWriter;

/// One item of the text data manager. It owns its texts.
struct tag_IT_TXT_ITEM {
  std::uint16_t IT_TXT_SA = 0;  ///< start address from the manager's first byte; derived
  std::uint16_t IT_TXT_SZ = 0;  ///< size of the texts in bytes; derived
  CTextSet IT_TXT;

  bool operator==(const tag_IT_TXT_ITEM&) const = default;
};

/// The text data of the disc (TXTDT_MG): an 8-byte header with the character set code, 4 bytes for
/// each item's address and size, then the items' texts. Addresses and sizes have 16 bits: a manager
/// whose items need more is kept in memory, and `CVMGInfo::SaveToFile` refuses to save it.
///
/// Pointers to items stay valid until the item is deleted or the manager is cleared, parsed or
/// assigned to. List operations leave the header as it is; `AutoComplete` brings it up to date. A
/// list operation that finds no memory changes nothing and returns what it returns out of range.
/// One thread at a time.
class VESKA_API CTextDataMgr {
 public:
  CTextDataMgr() = default;
  CTextDataMgr(const CTextDataMgr&) = default;
  CTextDataMgr& operator=(const CTextDataMgr&) = default;
  CTextDataMgr(CTextDataMgr&&) noexcept = default;
  CTextDataMgr& operator=(CTextDataMgr&&) noexcept = default;
  virtual ~CTextDataMgr();

  /// Zeroes the header, `CHRS` included, and deletes every item.
  void Clear();
  /// True when there are no items; such a manager takes no bytes in the file.
  bool IsEmpty() const { return items_.IsEmpty(); }
  /// Reads the structure that starts at `data`, and trusts the caller that the image holds all that
  /// the counts and addresses in it say. False when there is no memory.
  bool Parse(unsigned char* const data);

  /// The header, as the last `Parse` or `AutoComplete` left it.
  const tag_TXTDITI& GetHeader() const { return header_; }
  /// Sets `CHRS`, the character set code of the texts.
  void SetCharSet(unsigned char code) { header_.CHRS = code; }

  /// The number of items.
  int GetCount() const { return items_.Count(); }
  ///@{
  /// The item at position `index`, null when out of range.
  tag_IT_TXT_ITEM* GetNode(int index) { return items_.Get(index); }
  const tag_IT_TXT_ITEM* GetNode(int index) const { return items_.Get(index); }
  tag_IT_TXT_ITEM* operator[](int index) { return items_.Get(index); }
  const tag_IT_TXT_ITEM* operator[](int index) const { return items_.Get(index); }
  ///@}
  ///@{
  /// The items in order, as a range of `tag_IT_TXT_ITEM&`.
  auto Items() { return items_.Range(); }
  auto Items() const { return items_.Range(); }
  ///@}
  /// Appends an item without texts; null beyond 65,535.
  tag_IT_TXT_ITEM* AddNode() { return items_.Add(); }
  /// Places such an item before position `index`, which must be an item's; null otherwise.
  tag_IT_TXT_ITEM* InsertNode(int index) { return items_.Insert(index); }
  /// False when out of range.
  bool DeleteNode(int index) { return items_.Delete(index); }

  /// Sets the count, the items' addresses and sizes (their low 16 bits) and the end address.
  void AutoComplete();
  /// The size in the file in bytes: `TXTDT_MG_EA` + 1; 0 when empty.
  unsigned long GetDataSize() const { return IsEmpty() ? 0 : header_.TXTDT_MG_EA + 1UL; }
  /// Writes the manager in file order at `out`, each item's texts at the address stored for it;
  /// nothing when empty. `out` holds at least `GetDataSize()` bytes.
  void GetData(unsigned char* out);

  /// Equal when both would stand the same in a file.
  bool operator==(const CTextDataMgr& other) const;

  ///@{
  /// For the tables of the library.
  void Read(const ImageReader& image);
  void Write(const ImageWriter& out) const;
  ///@}

 private:
  tag_TXTDITI header_{};
  RecordList<tag_IT_TXT_ITEM, 0xFFFF> items_;
};

}  // namespace VESKA
