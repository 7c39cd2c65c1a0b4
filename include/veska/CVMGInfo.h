/// The whole management information file.
#pragma once

#include <veska/CMNFInfoTable.h>
#include <veska/CMovieAVFileTable.h>
#include <veska/CPGCInfo.h>
#include <veska/CStillAVFileTable.h>
#include <veska/CTextDataMgr.h>
#include <veska/CUserPGCTable.h>
#include <veska/CVMGI_MAT.h>
#include <veska/export.h>
#include <veska/failure.h>

#include <filesystem>

namespace VESKA {

class ImageReader;
class ImageWriter;

/// One management information file: load it, edit its tables, complete what follows from them, save
/// it.
///
///     VESKA::CVMGInfo info;
///     if (!info.LoadFromFile(path, VESKA::CVMGInfo::kLoadAll)) {
///       throw std::runtime_error(Describe(info.GetFailure()));
///     }
///     info.GetOriginalPGC().GetPGNode(0)->C_Ns = 3;
///     info.AutoComplete();
///     return info.SaveToFile(path);
///
/// The object owns its tables; copies are deep, share nothing, and throw `std::bad_alloc` where
/// there is no memory. The cells of a copy have no addresses until `AutoComplete`, which a copy
/// therefore needs before it is written. References to the tables stay valid as long as the object.
/// It keeps no pointer into the data that it was loaded from. Moving and swapping leaves every
/// record where it is; what was moved from holds none, and is to be cleared or loaded before other
/// use. Failures are results: no exception leaves loading, saving or writing, nothing is printed,
/// and `GetFailure` tells the reason. One thread at a time.
class VESKA_API CVMGInfo {
 public:
  /// Which tables a load reads. The header, the play lists and the original program chain are
  /// always read. A table that is left out stays empty, as if the file had none. Other bits have no
  /// effect.
  enum LoadFlags : unsigned char {
    kLoadMovie = 0x01,
    kLoadStill = 0x02,
    kLoadUserChains = 0x08,
    kLoadTexts = 0x10,
    kLoadManufacturers = 0x20,
    kLoadAll = 0x3B
  };

  /// A bounded load of an image of n bytes builds at most `kBytesPerImageByte` * n bytes of memory,
  /// each record counted at its size there and each block of records at what is asked of the heap
  /// for it, and fails when it would need more. Since every record
  /// that is read is paid for, this bounds the time as well: search pointers that all point at the
  /// same large structure run out of budget, however small the image. The largest honest ratio is
  /// that of a text data manager whose items hold no texts: 4 bytes each in the file, 48 in memory.
  /// With the buffer of a load by path the memory in use stays below 16 times the image.
  static constexpr unsigned kBytesPerImageByte = 14;

  CVMGInfo() = default;
  CVMGInfo(const CVMGInfo&) = default;
  CVMGInfo& operator=(const CVMGInfo&) = default;
  CVMGInfo(CVMGInfo&&) noexcept = default;
  CVMGInfo& operator=(CVMGInfo&&) noexcept = default;
  virtual ~CVMGInfo();

  /// Clears every table.
  void Clear();

  /// Loads the image of a file, which is read and not retained. Trusts the caller that the image
  /// holds all that the counts and addresses in it say. False, leaving the object as it is, when
  /// `data` is null; false when the image does not begin with "DVD_RTR_VMG0" or there is no memory:
  /// the object then holds the tables read before, and is to be cleared or loaded again before use.
  bool LoadFromMemory(unsigned char* data, unsigned char flags);

  /// Loads an image of `size` bytes and reads nothing outside them. False as above, and also when a
  /// table would reach past the end or needs more memory than its share (see `kBytesPerImageByte`).
  bool LoadFromMemory(unsigned char* data, unsigned long size, unsigned char flags);

  /// Loads a regular file of less than 4 GiB by its zero-terminated UTF-16 name, in one read.
  /// False, leaving the object as it is, when the path is null or, where names are bytes, not
  /// UTF-16, or the file cannot be read; false as with the image of the file otherwise.
  bool LoadFromFile(const unsigned short* path, unsigned char flags);
  /// The same by the platform's own form of name.
  bool LoadFromFile(const std::filesystem::path& path, unsigned char flags);

  /// Writes the image to the file named by a zero-terminated UTF-16 path, as the tables stand: call
  /// `AutoComplete` before. An existing file keeps its permissions and is replaced in one step by a
  /// complete new one that was flushed to the disk; through a symbolic link, what the link names is
  /// replaced. A device is written directly.
  ///
  /// False, leaving an existing file byte for byte as it was, when the path is null or, where names
  /// are bytes, not UTF-16; when the image would not read back equal to this object, so that
  /// something would be lost (counts or addresses that do not fit the lists, items without entries,
  /// texts past their 16-bit addresses, a file of 4 GiB or more); when end addresses claim more
  /// than 32 KiB beyond what the tables take; when the file is read-only or another writer holds it
  /// (an advisory lock on POSIX); when writing fails or there is no memory. A missing identifier is
  /// saved as it stands.
  bool SaveToFile(const unsigned short* path);
  /// The same by the platform's own form of name.
  bool SaveToFile(const std::filesystem::path& path);

  /// The image that `SaveToFile` writes, in a buffer that the caller returns with `FreeData`, and
  /// its size in bytes in `*size`. Null where `SaveToFile` refuses the image or there is no memory.
  unsigned char* SaveToMemory(unsigned long* size);

  /// Why the last load or save, `SaveToMemory` included, returned false or null; of kind `kNone`
  /// after one that did not. Is copied with the object, and takes no part in comparing objects.
  const Failure& GetFailure() const { return failure_; }

  /// The size of the image in bytes: the sum of the tables', which wraps where `unsigned long` has
  /// 32 bits and end addresses claim more; `SaveToFile` refuses such an image.
  unsigned long GetDataSize() const;
  /// A buffer of `GetDataSize()` zero bytes, which the caller returns with `FreeData`. Null when
  /// there is no memory.
  unsigned char* AllocData();
  /// Frees a buffer from `AllocData`; null is none.
  void FreeData(unsigned char* data);

  /// Completes every table, then lays out the file: the header and the play lists, the movie table,
  /// the still table, the original program chain, and behind them the user-defined chains, the
  /// texts and the manufacturer table as far as they are not empty. Sets every start address and
  /// `VMG_EA`.
  void AutoComplete();

  /// Writes the image into the `GetDataSize()` bytes at `out`, each table at the start address that
  /// the header holds. What would pass the end, since the addresses are stale, is left out.
  void GetData(unsigned char* out);

  ///@{
  /// The tables of the file.
  CVMGI_MAT& GetMAT() { return mat_; }
  const CVMGI_MAT& GetMAT() const { return mat_; }
  CMovieAVFileTable& GetMovieAVFileTable() { return movie_; }
  const CMovieAVFileTable& GetMovieAVFileTable() const { return movie_; }
  CStillAVFileTable& GetStillAVFileTable() { return still_; }
  const CStillAVFileTable& GetStillAVFileTable() const { return still_; }
  CPGCInfo& GetOriginalPGC() { return original_; }
  const CPGCInfo& GetOriginalPGC() const { return original_; }
  CUserPGCTable& GetUserPGCTable() { return user_chains_; }
  const CUserPGCTable& GetUserPGCTable() const { return user_chains_; }
  CTextDataMgr& GetTextDataMgr() { return texts_; }
  const CTextDataMgr& GetTextDataMgr() const { return texts_; }
  CMNFInfoTable& GetMNFInfoTable() { return manufacturers_; }
  const CMNFInfoTable& GetMNFInfoTable() const { return manufacturers_; }
  ///@}

  ///@{
  /// True when the table is not empty, whatever the addresses in the header say.
  bool HasMovieAVFileTable() const { return !movie_.IsEmpty(); }
  bool HasStillAVFileTable() const { return !still_.IsEmpty(); }
  bool HasOriginalPGC() const { return !original_.IsEmpty(); }
  bool HasUserPGCTable() const { return !user_chains_.IsEmpty(); }
  bool HasTextDataMgr() const { return !texts_.IsEmpty(); }
  bool HasMNFInfoTable() const { return !manufacturers_.IsEmpty(); }
  ///@}

  /// True when both would stand the same in a file.
  bool operator==(const CVMGInfo& other) const;

 private:
  bool Load(const ImageReader& image, unsigned char flags);
  void ReadTables(const ImageReader& image, unsigned char flags, FailureTable* now);
  bool MakeImage(unsigned char* image, unsigned long size);
  bool ReadBack(const unsigned char* image, unsigned long size);
  void BlameRecord(const unsigned char* image, unsigned long size);
  void BlamePadding(const CVMGInfo& completed);
  void ConvertCellPoints(const CPGCInfo& chain);
  void ClearFrom(FailureTable first);
  unsigned long SizeOfOthers() const;  // of all but the original chain
  void Write(const ImageWriter& out);
  void WriteMaterial(const ImageWriter& out);
  void WriteRest(const ImageWriter& out);
  void WriteCellPoints(const ImageWriter& out);

  CVMGI_MAT mat_;
  CMovieAVFileTable movie_;
  CStillAVFileTable still_;
  CPGCInfo original_;
  CUserPGCTable user_chains_;
  CTextDataMgr texts_;
  CMNFInfoTable manufacturers_;
  Failure failure_;
};

}  // namespace VESKA
