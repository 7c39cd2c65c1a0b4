/// The play list search pointer table.
#pragma once

#include <veska/RecordList.h>
#include <veska/export.h>
#include <veska/records.h>

namespace VESKA {

class ImageReader;
class ImageWriter;

/// The play lists of the disc: an 8-byte header, then 146 bytes for each play list. In the file it
/// stands at offset 512, right behind the header of the file.
///
/// Pointers to records stay valid until the record is deleted or the table is cleared, parsed or
/// assigned to. List operations leave the header as it is; `AutoComplete` brings it up to date. A
/// list operation that finds no memory changes nothing and returns what it returns out of range.
/// One thread at a time.
class VESKA_API CPlayListSRPTable {
 public:
  CPlayListSRPTable() = default;
  CPlayListSRPTable(const CPlayListSRPTable&) = default;
  CPlayListSRPTable& operator=(const CPlayListSRPTable&) = default;
  CPlayListSRPTable(CPlayListSRPTable&&) noexcept = default;
  CPlayListSRPTable& operator=(CPlayListSRPTable&&) noexcept = default;
  virtual ~CPlayListSRPTable();

  /// Deletes every play list and zeroes the header.
  void Clear();
  /// True when there are no play lists.
  bool IsEmpty() const { return records_.IsEmpty(); }
  /// Reads the structure that starts at `data`, and trusts the caller that the image holds all that
  /// the counts and addresses in it say. False when there is no memory.
  bool Parse(unsigned char* const data);

  /// The header, as the last `Parse` or `AutoComplete` left it.
  const tag_PL_SRPTI& GetHeader() const { return header_; }

  /// The number of play lists.
  int GetCount() const { return records_.Count(); }
  ///@{
  /// The play list at position `index`, null when out of range.
  tag_PL_SRP* GetNode(int index) { return records_.Get(index); }
  const tag_PL_SRP* GetNode(int index) const { return records_.Get(index); }
  tag_PL_SRP* operator[](int index) { return records_.Get(index); }
  const tag_PL_SRP* operator[](int index) const { return records_.Get(index); }
  ///@}
  ///@{
  /// The play lists in order, as a range of `tag_PL_SRP&`.
  auto PlayLists() { return records_.Range(); }
  auto PlayLists() const { return records_.Range(); }
  ///@}
  /// Appends a play list of zero bytes; null beyond 255.
  tag_PL_SRP* AddNode() { return records_.Add(); }
  /// Places such a play list before position `index`, which must be one's; null otherwise.
  tag_PL_SRP* InsertNode(int index) { return records_.Insert(index); }
  /// False when out of range.
  bool DeleteNode(int index) { return records_.Delete(index); }
  /// Deletes the play lists at positions `first` to `last`, both included. False, deleting nothing,
  /// when one of them is out of range or first > last.
  bool DeleteNodes(int first, int last) { return records_.Delete(first, last); }
  /// Exchanges the positions of two play lists; false when one is out of range.
  bool SwapNode(int a, int b) { return records_.Swap(a, b); }

  /// Sets `PL_SRP_Ns` and `PL_SRPT_EA` from the list.
  void AutoComplete();
  /// The size in the file in bytes: `PL_SRPT_EA` + 1.
  unsigned long GetDataSize() const;
  /// Writes the structure as its lists stand in file order at `out`. The counts are those of the
  /// last `AutoComplete`: call it before, so that `GetDataSize()` bytes are enough.
  void GetData(unsigned char* out);

  bool operator==(const CPlayListSRPTable&) const = default;

  ///@{
  /// For the tables of the library.
  void Read(const ImageReader& image);
  void Write(const ImageWriter& out) const;
  ///@}

 private:
  tag_PL_SRPTI header_{};
  RecordList<tag_PL_SRP, 0xFF> records_;
};

}  // namespace VESKA
