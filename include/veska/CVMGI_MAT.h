/// The header of the management information file.
#pragma once

#include <veska/CPlayListSRPTable.h>
#include <veska/export.h>
#include <veska/records.h>

namespace VESKA {

class ImageReader;
class ImageWriter;

/// The 512-byte header of the file and the play list table that stands right behind it.
///
/// The host sets the header's fields through `GetHeader`; all but the addresses are carried through
/// load and save unchanged. `AutoComplete` sets `VMGI_MAT_EA`; `CVMGInfo` sets the other addresses.
/// One thread at a time.
class VESKA_API CVMGI_MAT {
 public:
  CVMGI_MAT() = default;
  CVMGI_MAT(const CVMGI_MAT&) = default;
  CVMGI_MAT& operator=(const CVMGI_MAT&) = default;
  CVMGI_MAT(CVMGI_MAT&&) noexcept = default;
  CVMGI_MAT& operator=(CVMGI_MAT&&) noexcept = default;
  virtual ~CVMGI_MAT();

  /// Zeroes the header and clears the play list table.
  void Clear();
  /// Reads the structure that starts at `data`, and trusts the caller that the image holds all that
  /// the counts and addresses in it say. False when there is no memory.
  bool Parse(unsigned char* const data);

  ///@{
  /// The header of the file.
  tag_VMGI_MAT_HEADER& GetHeader() { return header_; }
  const tag_VMGI_MAT_HEADER& GetHeader() const { return header_; }
  ///@}
  ///@{
  /// The table of the play lists.
  CPlayListSRPTable& GetPlayListTable() { return play_lists_; }
  const CPlayListSRPTable& GetPlayListTable() const { return play_lists_; }
  ///@}

  /// Completes the play list table, then `VMGI_MAT_EA`.
  void AutoComplete();
  /// The size in the file in bytes: 512 and the play list table's.
  unsigned long GetDataSize() const;
  /// Writes the structure as its lists stand in file order at `out`. The addresses are those of the
  /// last `AutoComplete`: call it before, so that `GetDataSize()` bytes are enough.
  void GetData(unsigned char* out);

  bool operator==(const CVMGI_MAT&) const = default;

  ///@{
  /// For the tables of the library.
  void Read(const ImageReader& image);
  void Write(const ImageWriter& out) const;
  ///@}

 private:
  tag_VMGI_MAT_HEADER header_{};
  CPlayListSRPTable play_lists_;
};

}  // namespace VESKA
