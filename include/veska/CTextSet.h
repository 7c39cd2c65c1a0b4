/// The texts of one item.
#pragma once

#include <veska/BlockList.h>
#include <veska/export.h>
#include <veska/records.h>

#include <span>

namespace VESKA {

class ImageReader;
class ImageWriter;

/// An item text set: texts one behind the other, each a code, a length and that many bytes in the
/// character set that the text data manager names. The set stores neither its size nor a count: its
/// size stands in the manager.
///
/// Pointers to records stay valid until the record is deleted or the set is cleared, parsed or
/// assigned to. A list operation that finds no memory changes nothing and returns what it returns
/// out of range. One thread at a time.
class VESKA_API CTextSet {
 public:
  CTextSet() = default;
  CTextSet(const CTextSet&) = default;
  CTextSet& operator=(const CTextSet&) = default;
  CTextSet(CTextSet&&) noexcept = default;
  CTextSet& operator=(CTextSet&&) noexcept = default;
  virtual ~CTextSet();

  /// Deletes every text.
  void Clear() { records_.Clear(); }
  /// True when there are no texts.
  bool IsEmpty() const { return records_.IsEmpty(); }
  /// Reads texts from `data` until `size` bytes are consumed; the last one is read whole even if it
  /// runs past them. False when there is no memory or there are more than 65,535 texts.
  bool Parse(unsigned char* const data, unsigned long size);

  /// The number of texts.
  int GetCount() const { return records_.Count(); }
  ///@{
  /// The text at position `i`, null when out of range.
  tag_IT_TXT* GetNode(int i) { return records_.Get(i); }
  const tag_IT_TXT* GetNode(int i) const { return records_.Get(i); }
  tag_IT_TXT* operator[](int i) { return records_.Get(i); }
  const tag_IT_TXT* operator[](int i) const { return records_.Get(i); }
  ///@}
  ///@{
  /// The texts in order, as a range of `tag_IT_TXT&`.
  auto Texts() { return records_.Range(); }
  auto Texts() const { return records_.Range(); }
  ///@}
  /// Appends an empty text with code 0; null beyond 65,535.
  tag_IT_TXT* AddNode() { return records_.Add(); }
  /// Places such a text before position `i`, which must be a text's; null otherwise.
  tag_IT_TXT* InsertNode(int i) { return records_.Insert(i); }
  /// False when out of range.
  bool DeleteNode(int i) { return records_.Delete(i); }
  /// Makes text `i` a copy of `from`, whose text may be its own; a null text counts
  /// as none. Does nothing when `i` is out of range or there is no memory.
  void SetNode(int i, const tag_IT_TXT& from);

  /// Does nothing: `SetNode` sets the lengths.
  void AutoComplete() {}
  /// The size in the file in bytes: 2 and the length of the text for each.
  unsigned long GetDataSize() const;
  /// Writes the texts at `out`, which holds at least `GetDataSize()` bytes.
  void GetData(unsigned char* out);

  bool operator==(const CTextSet&) const = default;

  ///@{
  /// For the tables of the library.
  void Read(const ImageReader& image, std::uint64_t size);
  void Write(const ImageWriter& out) const;
  ///@}

 private:
  /// The bytes that were read, where the texts would be written just so; none otherwise.
  std::span<const unsigned char> AsRead() const;

  BlockList<tag_IT_TXT, 0xFFFF> records_;
};

}  // namespace VESKA
