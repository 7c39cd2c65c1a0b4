/// The abstract cell.
#pragma once

#include <veska/export.h>
#include <veska/records.h>

namespace VESKA {

class ImageReader;
class ImageWriter;

/// What a program chain knows of its cells. Of a cell that the library made, `GetType` names the
/// class, `CMovieCell` or `CStillCell`, to which a pointer to it can be converted.
///
/// A host may derive a class of its own from this one: it implements the nine operations below, and
/// puts its cells into a chain (see `tag_C_ITEM`).
class VESKA_API CBaseCell {
 public:
  CBaseCell() = default;
  CBaseCell(const CBaseCell&) = default;
  CBaseCell& operator=(const CBaseCell&) = default;
  CBaseCell(CBaseCell&&) noexcept = default;
  CBaseCell& operator=(CBaseCell&&) noexcept = default;
  virtual ~CBaseCell();

  /// `CELL_MOVIE` or `CELL_STILL`, by the class, whatever the header says.
  virtual tag_CELL_TYPE GetType() = 0;
  /// Reads the cell that starts at `data`, and trusts the caller that the image holds all that the
  /// counts in it say. False when there is no memory.
  virtual bool Parse(unsigned char* const data) = 0;
  /// Zeroes the header and deletes every entry point.
  virtual void Clear() = 0;
  /// True when there are no entry points.
  virtual bool IsEmpty() const = 0;
  /// The number of entry points.
  virtual int GetCount() const = 0;
  /// Sets `C_EPI_Ns` from the list, and bits 7 to 5 of `C_TY`.
  virtual void AutoComplete() = 0;
  /// The size in the file in bytes: the header and the first entry points as the header counts
  /// them.
  virtual unsigned long GetDataSize() const = 0;
  /// Writes the cell with all its entry points in file order at `out`. Call `AutoComplete` before,
  /// so that `GetDataSize()` bytes are enough.
  virtual void GetData(unsigned char* out) = 0;

  ///@{
  /// For the tables of the library. `Write` returns `GetDataSize()`. A host's class has no need of
  /// its own: these use `Parse` and `GetData`.
  virtual void Read(const ImageReader& image);
  virtual std::uint64_t Write(const ImageWriter& out) const;
  ///@}
};

}  // namespace VESKA
