/// The user-defined program chain table.
#pragma once

#include <veska/CPGCInfo.h>
#include <veska/RecordList.h>
#include <veska/export.h>
#include <veska/records.h>

namespace VESKA {

class ImageReader;
class ImageWriter;

/// One user-defined program chain of the table. It owns the chain.
struct tag_UD_PGCI_ITEM {
  std::uint32_t UD_PGCI_SA = 0;  ///< start address from the table's first byte; derived
  CPGCInfo UD_PGCI;

  bool operator==(const tag_UD_PGCI_ITEM&) const = default;
};

/// The user-defined program chains (UD_PGCIT): a 6-byte header, 4 bytes for each chain's address,
/// then the chains. The positions of the cell points in their programs stay in file order.
///
/// Pointers to items stay valid until the item is deleted or the table is cleared, parsed or
/// assigned to. List operations leave the header as it is; `AutoComplete` brings it up to date. A
/// list operation that finds no memory changes nothing and returns what it returns out of range.
/// One thread at a time.
class VESKA_API CUserPGCTable {
 public:
  CUserPGCTable() = default;
  CUserPGCTable(const CUserPGCTable&) = default;
  CUserPGCTable& operator=(const CUserPGCTable&) = default;
  CUserPGCTable(CUserPGCTable&&) noexcept = default;
  CUserPGCTable& operator=(CUserPGCTable&&) noexcept = default;
  virtual ~CUserPGCTable();

  /// Zeroes the header and deletes every chain.
  void Clear();
  /// True when there are no chains; such a table takes no bytes in the file.
  bool IsEmpty() const { return items_.IsEmpty(); }
  /// Reads the structure that starts at `data`, and trusts the caller that the image holds all that
  /// the counts and addresses in it say. False when there is no memory.
  bool Parse(unsigned char* const data);

  /// The header, as the last `Parse` or `AutoComplete` left it.
  const tag_UD_PGCITI& GetHeader() const { return header_; }

  /// The number of chains.
  int GetCount() const { return items_.Count(); }
  ///@{
  /// The chain at position `index`, null when out of range.
  tag_UD_PGCI_ITEM* GetNode(int index) { return items_.Get(index); }
  const tag_UD_PGCI_ITEM* GetNode(int index) const { return items_.Get(index); }
  tag_UD_PGCI_ITEM* operator[](int index) { return items_.Get(index); }
  const tag_UD_PGCI_ITEM* operator[](int index) const { return items_.Get(index); }
  ///@}
  ///@{
  /// The chains in order, as a range of `tag_UD_PGCI_ITEM&`.
  auto Items() { return items_.Range(); }
  auto Items() const { return items_.Range(); }
  ///@}
  /// Appends an empty chain with address 0; null beyond 255.
  tag_UD_PGCI_ITEM* AddNode() { return items_.Add(); }
  /// Places such a chain before position `index`, which must be a chain's; null otherwise.
  tag_UD_PGCI_ITEM* InsertNode(int index) { return items_.Insert(index); }
  /// False when out of range.
  bool DeleteNode(int index) { return items_.Delete(index); }

  /// Completes every chain, then the count, the addresses and the end address.
  void AutoComplete();
  /// The size in the file in bytes: `UD_PGCIT_EA` + 1; 0 when empty.
  unsigned long GetDataSize() const { return IsEmpty() ? 0 : header_.UD_PGCIT_EA + 1UL; }
  /// Writes the structure as its lists stand in file order at `out`. The addresses are those of the
  /// last `AutoComplete`: call it before, so that `GetDataSize()` bytes are enough.
  void GetData(unsigned char* out);

  /// Equal when both would stand the same in a file.
  bool operator==(const CUserPGCTable& other) const;

  ///@{
  /// For the tables of the library.
  void Read(const ImageReader& image);
  void Write(const ImageWriter& out) const;
  ///@}

 private:
  tag_UD_PGCITI header_{};
  RecordList<tag_UD_PGCI_ITEM, 0xFF> items_;
};

}  // namespace VESKA
