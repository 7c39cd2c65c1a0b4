/// The information of one still VOB group.
#pragma once

#include <veska/RecordList.h>
#include <veska/export.h>
#include <veska/records.h>

namespace VESKA {

class ImageReader;
class ImageWriter;

/// A group of still VOBs (S_VOGI): general information of 18 bytes, then 2, 6, 5 or 9 bytes for
/// each entry, by the form that its type names. The form is looked at whenever it matters, so
/// changing an entry's type changes its size and layout at once.
///
/// Pointers to entries stay valid until the entry is deleted or the group is cleared, parsed or
/// assigned to. List operations leave the header as it is; `AutoComplete` brings its count up to
/// date. A list operation that finds no memory changes nothing and returns what it returns out of
/// range. One thread at a time.
class VESKA_API CStillVOG {
 public:
  CStillVOG() = default;
  CStillVOG(const CStillVOG&) = default;
  CStillVOG& operator=(const CStillVOG&) = default;
  CStillVOG(CStillVOG&&) noexcept = default;
  CStillVOG& operator=(CStillVOG&&) noexcept = default;
  virtual ~CStillVOG();

  /// Zeroes the header and deletes every entry.
  void Clear();
  /// True when there are no entries; such a group takes no bytes in the file.
  bool IsEmpty() const { return entries_.IsEmpty(); }
  /// Reads the structure that starts at `data`, and trusts the caller that the image holds all that
  /// the counts and addresses in it say. False when there is no memory.
  bool Parse(unsigned char* const data);

  ///@{
  /// The general information, which the host sets but for the count.
  tag_S_VOG_GI& GetHeader() { return header_; }
  const tag_S_VOG_GI& GetHeader() const { return header_; }
  ///@}

  /// The number of entries.
  int GetCount() const { return entries_.Count(); }
  ///@{
  /// The entry at position `index`, null when out of range.
  tag_S_VOB_ENT* GetNode(int index) { return entries_.Get(index); }
  const tag_S_VOB_ENT* GetNode(int index) const { return entries_.Get(index); }
  tag_S_VOB_ENT* operator[](int index) { return entries_.Get(index); }
  const tag_S_VOB_ENT* operator[](int index) const { return entries_.Get(index); }
  ///@}
  ///@{
  /// The entries in order, as a range of `tag_S_VOB_ENT&`.
  auto Entries() { return entries_.Range(); }
  auto Entries() const { return entries_.Range(); }
  ///@}
  /// Appends an entry of nine zero bytes (form 0); null beyond 255.
  tag_S_VOB_ENT* AddNode() { return entries_.Add(); }
  /// Places such an entry before position `index`, which must be an entry's; null otherwise.
  tag_S_VOB_ENT* InsertNode(int index) { return entries_.Insert(index); }
  /// False when out of range.
  bool DeleteNode(int index) { return entries_.Delete(index); }

  /// Sets `S_VOB_Ns` from the list.
  void AutoComplete();
  /// The size in the file in bytes, 0 when empty: that of the first entries as the header counts
  /// them.
  unsigned long GetDataSize() const;
  /// Writes the structure as its lists stand in file order at `out`. The counts are those of the
  /// last `AutoComplete`: call it before, so that `GetDataSize()` bytes are enough.
  void GetData(unsigned char* out);
  /// The sum of `PCKs` over all entries and of `EXT1_PCKs` over those that have it.
  unsigned long GetPackCount() const;

  /// Equal when both would stand the same in a file.
  bool operator==(const CStillVOG& other) const;

  ///@{
  /// For the tables of the library. `Write` returns `GetDataSize()`.
  void Read(const ImageReader& image);
  std::uint64_t Write(const ImageWriter& out) const;
  ///@}

 private:
  tag_S_VOG_GI header_{};
  RecordList<tag_S_VOB_ENT, 0xFF> entries_;
};

}  // namespace VESKA
