/// The still picture AV file information table.
#pragma once

#include <veska/CAdditionalAFile.h>
#include <veska/CStillAVFile.h>
#include <veska/RecordList.h>
#include <veska/export.h>
#include <veska/records.h>

namespace VESKA {

class ImageReader;
class ImageWriter;

/// There is one list of these in a file, in a table that a host may move without them.
template <>
inline constexpr bool kLiesWithinList<tag_S_A_ATR> = false;

/// The table of the recorded still pictures (S_AVFIT): an 8-byte header, 54 bytes for each stream,
/// the index of the still VOB groups when there are any, 2 bytes for each additional audio stream,
/// and the index of the additional audio groups when there are any.
///
/// Pointers to records stay valid until the record is deleted or the table is cleared, parsed or
/// assigned to. List operations leave the header as it is; `AutoComplete` brings it up to date. A
/// list operation that finds no memory changes nothing and returns what it returns out of range.
/// One thread at a time.
class VESKA_API CStillAVFileTable {
 public:
  CStillAVFileTable() = default;
  CStillAVFileTable(const CStillAVFileTable&) = default;
  CStillAVFileTable& operator=(const CStillAVFileTable&) = default;
  CStillAVFileTable(CStillAVFileTable&&) noexcept = default;
  CStillAVFileTable& operator=(CStillAVFileTable&&) noexcept = default;
  virtual ~CStillAVFileTable();

  /// Zeroes the header, deletes every record and clears both files.
  void Clear();
  /// True when there are no still stream records, whatever else the table holds.
  bool IsEmpty() const { return streams_.IsEmpty(); }
  /// Reads the structure that starts at `data`, and trusts the caller that the image holds all that
  /// the counts and addresses in it say. False when there is no memory.
  bool Parse(unsigned char* const data);

  /// The header, as the last `Parse` or `AutoComplete` left it.
  const tag_S_AVFITI& GetHeader() const { return header_; }
  /// True when `S_AVFI_Ns` was 1 at the last `Parse` or `AutoComplete`.
  bool HasStillAVFile() const { return header_.S_AVFI_Ns == 1; }
  /// True when `S_AAFI_Ns` was 1 at the last `Parse` or `AutoComplete`.
  bool HasAdditionalAFile() const { return header_.S_AAFI_Ns == 1; }
  ///@{
  /// The index of the still VOB groups.
  CStillAVFile& GetStillAVFile() { return av_file_; }
  const CStillAVFile& GetStillAVFile() const { return av_file_; }
  ///@}
  ///@{
  /// The index of the additional audio groups.
  CAdditionalAFile& GetAdditionalAFile() { return audio_file_; }
  const CAdditionalAFile& GetAdditionalAFile() const { return audio_file_; }
  ///@}

  ///@{
  /// The still stream records: their number; the one at `index` (null when out of range); a new one
  /// of zero bytes appended, or placed before the one at `index` (null when out of range or beyond
  /// 255); the one at `index` deleted (false when out of range).
  int GetVOBStreamCount() const { return streams_.Count(); }
  tag_S_VOB_STI* GetVOBStreamNode(int index) { return streams_.Get(index); }
  const tag_S_VOB_STI* GetVOBStreamNode(int index) const { return streams_.Get(index); }
  tag_S_VOB_STI* AddVOBStreamNode() { return streams_.Add(); }
  tag_S_VOB_STI* InsertVOBStreamNode(int index) { return streams_.Insert(index); }
  bool DeleteVOBStreamNode(int index) { return streams_.Delete(index); }
  ///@}

  ///@{
  /// The additional audio stream records, in the same way.
  int GetAAStreamCount() const { return audio_streams_.Count(); }
  tag_S_A_ATR* GetAAStreamNode(int index) { return audio_streams_.Get(index); }
  const tag_S_A_ATR* GetAAStreamNode(int index) const { return audio_streams_.Get(index); }
  tag_S_A_ATR* AddAAStreamNode() { return audio_streams_.Add(); }
  tag_S_A_ATR* InsertAAStreamNode(int index) { return audio_streams_.Insert(index); }
  bool DeleteAAStreamNode(int index) { return audio_streams_.Delete(index); }
  ///@}

  ///@{
  /// The still stream records in order, as a range of `tag_S_VOB_STI&`.
  auto VOBStreams() { return streams_.Range(); }
  auto VOBStreams() const { return streams_.Range(); }
  ///@}
  ///@{
  /// The additional audio stream records, as a range of `tag_S_A_ATR&`.
  auto AAStreams() { return audio_streams_.Range(); }
  auto AAStreams() const { return audio_streams_.Range(); }
  ///@}

  /// Completes both files, then the counts and the end address.
  void AutoComplete();
  /// The size in the file in bytes: `S_AVFIT_EA` + 1.
  unsigned long GetDataSize() const { return header_.S_AVFIT_EA + 1UL; }
  /// Writes the structure as its lists stand in file order at `out`. The addresses are those of the
  /// last `AutoComplete`: call it before, so that `GetDataSize()` bytes are enough.
  void GetData(unsigned char* out);

  bool operator==(const CStillAVFileTable&) const = default;

  ///@{
  /// For the tables of the library.
  void Read(const ImageReader& image);
  void Write(const ImageWriter& out) const;
  ///@}

 private:
  tag_S_AVFITI header_{};
  RecordList<tag_S_VOB_STI, 0xFF> streams_;
  CStillAVFile av_file_;
  RecordList<tag_S_A_ATR, 0xFF> audio_streams_;
  CAdditionalAFile audio_file_;
};

}  // namespace VESKA
