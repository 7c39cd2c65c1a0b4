/// The abstract cell.
#pragma once

#include <veska/export.h>
#include <veska/records.h>

namespace VESKA {

class ImageReader;
class ImageWriter;

/// What a program chain knows of its cells. `GetType` names the class, `CMovieCell` or
/// `CStillCell`, to which a pointer to a cell can be converted. The operations are those of
/// `CellOf`.
class VESKA_API CBaseCell {
 public:
  CBaseCell() = default;
  CBaseCell(const CBaseCell&) = default;
  CBaseCell& operator=(const CBaseCell&) = default;
  virtual ~CBaseCell();

  virtual tag_CELL_TYPE GetType() = 0;
  virtual bool Parse(unsigned char* const data) = 0;
  virtual void Clear() = 0;
  virtual bool IsEmpty() const = 0;
  virtual int GetCount() const = 0;
  virtual void AutoComplete() = 0;
  virtual unsigned long GetDataSize() const = 0;
  virtual void GetData(unsigned char* out) = 0;

  /// For the tables of the library. `Write` returns `GetDataSize()`.
  virtual void Read(const ImageReader& image) = 0;
  virtual std::uint64_t Write(const ImageWriter& out) const = 0;
};

}  // namespace VESKA
