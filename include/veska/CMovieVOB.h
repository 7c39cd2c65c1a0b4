/// The information of one movie VOB.
#pragma once

#include <veska/CTimeMapTable.h>
#include <veska/export.h>
#include <veska/records.h>

namespace VESKA {

class ImageReader;
class ImageWriter;

/// One recorded movie VOB (M_VOBI): general information of 23 bytes, a seamless block of 12 bytes
/// and an audio gap block of 16 bytes where `VOB_TY` says so, and the time map.
///
/// Both blocks are kept in memory whether or not the file has them; `VOB_TY` is looked at whenever
/// it matters, so changing it changes size and layout at once. One thread at a time.
class VESKA_API CMovieVOB {
 public:
  CMovieVOB() = default;
  CMovieVOB(const CMovieVOB&) = default;
  CMovieVOB& operator=(const CMovieVOB&) = default;
  CMovieVOB(CMovieVOB&&) noexcept = default;
  CMovieVOB& operator=(CMovieVOB&&) noexcept = default;
  virtual ~CMovieVOB();

  /// Zeroes the three records and clears the time map.
  void Clear();
  /// True when the time map has no entry; such a VOB takes no bytes in the file.
  bool IsEmpty() const { return time_map_.IsEmpty(); }
  /// Reads the structure that starts at `data`, and trusts the caller that the image holds all that
  /// the counts and addresses in it say. False when there is no memory.
  bool Parse(unsigned char* const data);

  ///@{
  /// The four parts, which the host sets.
  tag_M_VOB_GI& GetHeader() { return header_; }
  const tag_M_VOB_GI& GetHeader() const { return header_; }
  tag_SMLI& GetSeamlessInfo() { return seamless_; }
  const tag_SMLI& GetSeamlessInfo() const { return seamless_; }
  tag_AGAPI& GetAudioGaps() { return audio_gaps_; }
  const tag_AGAPI& GetAudioGaps() const { return audio_gaps_; }
  CTimeMapTable& GetTimeMapTable() { return time_map_; }
  const CTimeMapTable& GetTimeMapTable() const { return time_map_; }
  ///@}

  /// Completes the time map.
  void AutoComplete() { time_map_.AutoComplete(); }
  /// The size in the file in bytes, 0 when empty.
  unsigned long GetDataSize() const;
  /// Writes the structure as its lists stand in file order at `out`. The counts are those of the
  /// last `AutoComplete`: call it before, so that `GetDataSize()` bytes are enough.
  void GetData(unsigned char* out);

  /// Equal when both would stand the same in a file.
  bool operator==(const CMovieVOB& other) const;

  ///@{
  /// For the tables of the library. `Write` returns `GetDataSize()`.
  void Read(const ImageReader& image);
  std::uint64_t Write(const ImageWriter& out) const;
  ///@}

 private:
  [[no_unique_address]] CTimeMapTable time_map_;  // the header takes its tail padding
  tag_M_VOB_GI header_{};
  tag_SMLI seamless_{};
  tag_AGAPI audio_gaps_{};
};

}  // namespace VESKA
