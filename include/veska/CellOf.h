/// What the two kinds of cell have in common.
#pragma once

#include <veska/BlockList.h>
#include <veska/CBaseCell.h>
#include <veska/export.h>
#include <veska/records.h>

namespace VESKA {

/// A cell: a header, then the entry points one behind the other, each with its 128-byte block when
/// its `EP_TY` calls it long. Size and bytes of an entry both follow `EP_TY`: a long one without
/// block is written with 128 zero bytes; the block of a short one is not written, and
/// `CVMGInfo::SaveToFile` refuses such a cell since the block would be lost.
///
/// The host sets the header's fields through `GetHeader`; `AutoComplete` sets the number of entry
/// points and the kind of the cell. Pointers to entry points stay valid until the entry point is
/// deleted or the cell is cleared, parsed or assigned to. A list operation that finds no memory
/// changes nothing and returns what it returns out of range. One thread at a time.
template <class Header, class Entry, tag_CELL_TYPE Type>
class CellOf : public CBaseCell {
 public:
  CellOf() = default;
  CellOf(const CellOf&) = default;
  CellOf& operator=(const CellOf&) = default;
  CellOf(CellOf&&) noexcept = default;
  CellOf& operator=(CellOf&&) noexcept = default;

  tag_CELL_TYPE GetType() override { return Type; }
  bool Parse(unsigned char* const data) override;
  void Clear() override;
  bool IsEmpty() const override { return entries_.IsEmpty(); }
  int GetCount() const override { return entries_.Count(); }
  void AutoComplete() override;
  unsigned long GetDataSize() const override;
  void GetData(unsigned char* out) override;

  ///@{
  /// The header.
  Header& GetHeader() { return header_; }
  const Header& GetHeader() const { return header_; }
  ///@}
  ///@{
  /// The entry point at position `i`, null when out of range.
  Entry* GetNode(int i) { return entries_.Get(i); }
  const Entry* GetNode(int i) const { return entries_.Get(i); }
  Entry* operator[](int i) { return entries_.Get(i); }
  const Entry* operator[](int i) const { return entries_.Get(i); }
  ///@}
  ///@{
  /// The entry points in order, as a range of `Entry&`.
  auto EntryPoints() { return entries_.Range(); }
  auto EntryPoints() const { return entries_.Range(); }
  ///@}
  /// Appends an entry point of zero bytes, with a block of zero bytes for `CELL_ENTRY_LONG`; the
  /// host then sets its `EP_TY`. Null beyond 65,535.
  Entry* AddNode(tag_CELL_ENTRY_TYPE type) {
    Entry* entry = entries_.Add();
    return WithBlock(entry, GetCount() - 1, type);
  }
  /// Places such an entry point before position `i`, which must be one's; null otherwise.
  Entry* InsertNode(int i, tag_CELL_ENTRY_TYPE type) {
    return WithBlock(entries_.Insert(i), i, type);
  }
  /// Deletes the entry point and its block; false when out of range.
  bool DeleteNode(int i) { return entries_.Delete(i); }

  /// Equal when both would stand the same in a file.
  bool operator==(const CellOf& other) const {
    return header_ == other.header_ && entries_ == other.entries_;
  }

  void Read(const ImageReader& image) override;
  std::uint64_t Write(const ImageWriter& out) const override;

 private:
  Entry* WithBlock(Entry* entry, int i, tag_CELL_ENTRY_TYPE type);
  std::uint64_t WriteFirst(int count, const ImageWriter& out) const;

  VESKA_NO_UNIQUE_ADDRESS BlockList<Entry, 0xFFFF> entries_;  // the header takes its tail padding
  Header header_{};
};

extern template class VESKA_API CellOf<tag_M_C_GI, tag_M_C_EPI, CELL_MOVIE>;
extern template class VESKA_API CellOf<tag_S_C_GI, tag_S_C_EPI, CELL_STILL>;

}  // namespace VESKA
