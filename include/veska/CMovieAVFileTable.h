/// The movie AV file information table.
#pragma once

#include <veska/CMovieAVFile.h>
#include <veska/RecordList.h>
#include <veska/export.h>
#include <veska/records.h>

namespace VESKA {

class ImageReader;
class ImageWriter;

/// The table of the recorded movie material (M_AVFIT): an 8-byte header, 60 bytes for each stream,
/// and the index of the movie VOBs when there are any.
///
/// Pointers to stream records stay valid until the record is deleted or the table is cleared,
/// parsed or assigned to. List operations leave the header as it is; `AutoComplete` brings it up to
/// date. A list operation that finds no memory changes nothing and returns what it returns out of
/// range. One thread at a time.
class VESKA_API CMovieAVFileTable {
 public:
  CMovieAVFileTable() = default;
  CMovieAVFileTable(const CMovieAVFileTable&) = default;
  CMovieAVFileTable& operator=(const CMovieAVFileTable&) = default;
  CMovieAVFileTable(CMovieAVFileTable&&) noexcept = default;
  CMovieAVFileTable& operator=(CMovieAVFileTable&&) noexcept = default;
  virtual ~CMovieAVFileTable();

  /// Zeroes the header, deletes every stream record and clears the AV file.
  void Clear();
  /// True when there are no stream records, whatever the AV file holds.
  bool IsEmpty() const { return streams_.IsEmpty(); }
  /// Reads the structure that starts at `data`, and trusts the caller that the image holds all that
  /// the counts and addresses in it say. False when there is no memory.
  bool Parse(unsigned char* const data);

  /// The header, as the last `Parse` or `AutoComplete` left it.
  const tag_M_AVFITI& GetHeader() const { return header_; }
  /// True when `M_AVFI_Ns` was 1 at the last `Parse` or `AutoComplete`.
  bool HasMovieAVFile() const { return header_.M_AVFI_Ns == 1; }
  ///@{
  /// The index of the movie VOBs.
  CMovieAVFile& GetMovieAVFile() { return av_file_; }
  const CMovieAVFile& GetMovieAVFile() const { return av_file_; }
  ///@}

  ///@{
  /// The stream records: their number; the one at `index` (null when out of range); a new one of
  /// zero bytes appended, or placed before the one at `index` (null when out of range or beyond
  /// 255); the one at `index` deleted (false when out of range).
  int GetStreamCount() const { return streams_.Count(); }
  tag_M_VOB_STI* GetStreamNode(int index) { return streams_.Get(index); }
  const tag_M_VOB_STI* GetStreamNode(int index) const { return streams_.Get(index); }
  tag_M_VOB_STI* AddStreamNode() { return streams_.Add(); }
  tag_M_VOB_STI* InsertStreamNode(int index) { return streams_.Insert(index); }
  bool DeleteStreamNode(int index) { return streams_.Delete(index); }
  ///@}

  ///@{
  /// The stream records in order, as a range of `tag_M_VOB_STI&`.
  auto Streams() { return streams_.Range(); }
  auto Streams() const { return streams_.Range(); }
  ///@}

  /// Completes the AV file, then the counts and the end address.
  void AutoComplete();
  /// The size in the file in bytes: `M_AVFIT_EA` + 1.
  unsigned long GetDataSize() const { return header_.M_AVFIT_EA + 1UL; }
  /// Writes the structure as its lists stand in file order at `out`. The addresses are those of the
  /// last `AutoComplete`: call it before, so that `GetDataSize()` bytes are enough.
  void GetData(unsigned char* out);

  bool operator==(const CMovieAVFileTable&) const = default;

  ///@{
  /// For the tables of the library.
  void Read(const ImageReader& image);
  void Write(const ImageWriter& out) const;
  ///@}

 private:
  tag_M_AVFITI header_{};
  RecordList<tag_M_VOB_STI, 0xFF> streams_;
  CMovieAVFile av_file_;
};

}  // namespace VESKA
