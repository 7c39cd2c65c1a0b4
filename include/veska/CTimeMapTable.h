/// The time map of a movie VOB.
#pragma once

#include <veska/RecordList.h>
#include <veska/export.h>
#include <veska/records.h>

namespace VESKA {

class ImageReader;
class ImageWriter;

/// The time map (TMAPI): a 10-byte header, 7 bytes for each time entry and 3 bytes for each VOBU
/// entry. The library derives no time entry from the VOBU entries: both lists are kept as they are.
///
/// Pointers to entries stay valid until the entry is deleted or its list is cleared, parsed or
/// assigned to. List operations leave the header as it is; `AutoComplete` brings its counts up to
/// date. A list operation that finds no memory changes nothing and returns what it returns out of
/// range. One thread at a time.
class VESKA_API CTimeMapTable {
 public:
  CTimeMapTable() = default;
  CTimeMapTable(const CTimeMapTable&) = default;
  CTimeMapTable& operator=(const CTimeMapTable&) = default;
  CTimeMapTable(CTimeMapTable&&) noexcept = default;
  CTimeMapTable& operator=(CTimeMapTable&&) noexcept = default;
  virtual ~CTimeMapTable();

  /// Zeroes the header and deletes every entry.
  void Clear();
  ///@{
  /// Delete every entry of one list; the header keeps its counts.
  void ClearTimeEntrys() { times_.Clear(); }
  void ClearVobuEntrys() { vobus_.Clear(); }
  ///@}
  /// True when both lists are empty.
  bool IsEmpty() const { return times_.IsEmpty() && vobus_.IsEmpty(); }
  /// Reads the structure that starts at `data`, and trusts the caller that the image holds all that
  /// the counts and addresses in it say. False when there is no memory.
  bool Parse(unsigned char* const data);

  /// The header, as the last `Parse` or `AutoComplete` left it.
  const tag_TMAP_GI& GetHeader() const { return header_; }
  /// Sets `TM_OSF`, which the library does not interpret.
  void SetTimeOffset(unsigned short value) { header_.TM_OSF = value; }
  /// Sets `VOBU_ADR_OSF` to the low 32 bits of `value`; not interpreted either.
  void SetAddrOffset(unsigned long value) {
    header_.VOBU_ADR_OSF = static_cast<std::uint32_t>(value);
  }

  ///@{
  /// The time entries: their number; the one at `index` (null when out of range); a new one of zero
  /// bytes appended, or placed before the one at `index` (null when out of range or beyond 65,535);
  /// the one at `index` deleted (false when out of range).
  int GetTimeENCount() const { return times_.Count(); }
  tag_TM_ENT* GetTimeENNode(int index) { return times_.Get(index); }
  const tag_TM_ENT* GetTimeENNode(int index) const { return times_.Get(index); }
  tag_TM_ENT* AddTimeENNode() { return times_.Add(); }
  tag_TM_ENT* InsertTimeENNode(int index) { return times_.Insert(index); }
  bool DeleteTimeENNode(int index) { return times_.Delete(index); }
  ///@}

  ///@{
  /// The VOBU entries, in the same way.
  int GetVobuENCount() const { return vobus_.Count(); }
  tag_VOBU_ENT* GetVobuENNode(int index) { return vobus_.Get(index); }
  const tag_VOBU_ENT* GetVobuENNode(int index) const { return vobus_.Get(index); }
  tag_VOBU_ENT* AddVobuENNode() { return vobus_.Add(); }
  tag_VOBU_ENT* InsertVobuENNode(int index) { return vobus_.Insert(index); }
  bool DeleteVobuENNode(int index) { return vobus_.Delete(index); }
  ///@}

  ///@{
  /// The time entries in order, as a range of `tag_TM_ENT&`.
  auto TimeEntries() { return times_.Range(); }
  auto TimeEntries() const { return times_.Range(); }
  ///@}
  ///@{
  /// The VOBU entries in order, as a range of `tag_VOBU_ENT&`.
  auto VobuEntries() { return vobus_.Range(); }
  auto VobuEntries() const { return vobus_.Range(); }
  ///@}

  /// The VOB's size in packs of 2,048 bytes: the sum of `VOBU_SZ` over the VOBU entries.
  unsigned long GetPackCount() const;
  /// The VOB's playback time in video fields: the sum of `VOBU_PB_TM` over the VOBU entries.
  unsigned long GetFieldCount() const;

  /// Sets `TM_ENT_Ns` and `VOBU_ENT_Ns` from the lists.
  void AutoComplete();
  /// The size in the file in bytes, by the counts in the header; 0 when empty.
  unsigned long GetDataSize() const;
  /// Writes the structure as its lists stand in file order at `out`. The counts are those of the
  /// last `AutoComplete`: call it before, so that `GetDataSize()` bytes are enough.
  void GetData(unsigned char* out);

  /// Equal when both would stand the same in a file.
  bool operator==(const CTimeMapTable& other) const;

  ///@{
  /// For the tables of the library. `Write` returns `GetDataSize()`.
  void Read(const ImageReader& image);
  std::uint64_t Write(const ImageWriter& out) const;
  ///@}

 private:
  // There may be tens of thousands of them: what follows a list takes its tail padding.
  [[no_unique_address]] RecordList<tag_TM_ENT, 0xFFFF> times_;
  tag_TMAP_GI header_{};
  [[no_unique_address]] RecordList<tag_VOBU_ENT, 0xFFFF> vobus_;
};

}  // namespace VESKA
