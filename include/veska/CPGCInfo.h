/// The program chain.
#pragma once

#include <veska/CMovieCell.h>
#include <veska/CStillCell.h>
#include <veska/RecordList.h>
#include <veska/export.h>
#include <veska/records.h>

#include <new>

namespace VESKA {

class ImageReader;
class ImageWriter;

/// One cell of a program chain.
struct tag_C_ITEM {
  std::uint32_t CI_SA = 0;  ///< start address from the chain's first byte; derived
  CBaseCell* CI = nullptr;  ///< the cell, owned by the chain; not the host's to delete. A cell of
                            ///< the host's own, made with `new`, that is put here belongs to the
                            ///< chain. A copy of the chain holds the content of a cell of a host's
                            ///< class in one of the library's.
};

/// A program chain information (PGCI): a 4-byte header, 142 bytes for each program, 4 bytes for
/// each cell's address, then the cells. A program is the next `C_Ns` cells of the cell list.
///
/// Programs and cells are two independent lists. No operation renumbers anything or keeps them in
/// step: that is the host's. Pointers to programs and cells stay valid, also when they are moved,
/// until they are deleted or the chain is cleared, parsed or assigned to. List operations leave the
/// header as it is; `AutoComplete` brings it up to date. A list operation that finds no memory
/// changes nothing and returns what it returns out of range. One thread at a time.
class VESKA_API CPGCInfo {
 public:
  /// The kinds of cell that a program holds.
  enum PG_VOB_TYPE : int {
    PG_VOB_MOVIE = 0,   ///< movie cells only
    PG_VOB_STILL = 1,   ///< no movie cell; also a program without cells
    PG_VOB_MIXED = 2,   ///< both kinds
    PG_VOB_INVALID = 3  ///< no such program
  };

  CPGCInfo() = default;
  CPGCInfo(const CPGCInfo&) = default;
  CPGCInfo& operator=(const CPGCInfo&) = default;
  CPGCInfo(CPGCInfo&&) noexcept = default;
  CPGCInfo& operator=(CPGCInfo&&) noexcept = default;
  virtual ~CPGCInfo();

  /// Zeroes the header and deletes every program and cell.
  void Clear();
  /// True when there are no cells, whatever the programs.
  bool IsEmpty() const { return cells_.IsEmpty(); }
  /// Reads the structure that starts at `data`, and trusts the caller that the image holds all that
  /// the counts and addresses in it say. False when there is no memory.
  bool Parse(unsigned char* const data);

  /// The header, as the last `Parse` or `AutoComplete` left it.
  const tag_PGC_GI& GetHeader() const { return header_; }

  ///@{
  /// The programs: their number; the one at `pg` (null when out of range); a new one of zero bytes
  /// appended, or placed before the one at `pg` (null when out of range or beyond 255); the one at
  /// `pg` deleted (false when out of range). A new program's cell point names cell 0, which is
  /// none: set it to a 1-based cell number, or to 0xFFFF.
  int GetPGCount() const { return programs_.Count(); }
  tag_PGI* GetPGNode(int pg) { return programs_.Get(pg); }
  const tag_PGI* GetPGNode(int pg) const { return programs_.Get(pg); }
  tag_PGI* AddPGNode() { return programs_.Add(); }
  tag_PGI* InsertPGNode(int pg) { return programs_.Insert(pg); }
  bool DeletePGNode(int pg) { return programs_.Delete(pg); }
  ///@}
  /// Moves the programs at `first` to `last`, both included, to positions `first + shift` to
  /// `last + shift`. False, changing nothing, when one of these is out of range or first > last +
  /// 1; first = last + 1 moves nothing and is true.
  bool MovePGNodes(int first, int last, int shift) { return programs_.Move(first, last, shift); }

  ///@{
  /// The cells, in the same way, up to 65,535: `CELL_MOVIE` makes a `CMovieCell`, any other type a
  /// `CStillCell`.
  int GetCellCount() const { return cells_.Count(); }
  tag_C_ITEM* GetCellNode(int cell) { return cells_.Get(cell); }
  const tag_C_ITEM* GetCellNode(int cell) const { return cells_.Get(cell); }
  tag_C_ITEM* AddCellNode(tag_CELL_TYPE type) { return cells_.Add(type); }
  tag_C_ITEM* InsertCellNode(int cell, tag_CELL_TYPE type) { return cells_.Insert(cell, type); }
  bool DeleteCellNode(int cell) { return cells_.Delete(cell); }
  bool MoveCellNodes(int first, int last, int shift) { return cells_.Move(first, last, shift); }
  ///@}

  ///@{
  /// The programs in order, as a range of `tag_PGI&`.
  auto Programs() { return programs_.Range(); }
  auto Programs() const { return programs_.Range(); }
  ///@}
  ///@{
  /// The cells in order, as a range of `tag_C_ITEM&`. Only `MoveCellNodes` changes their order:
  /// items must not be exchanged, as sorting does.
  auto Cells() { return cells_.Range<tag_C_ITEM>(); }
  auto Cells() const { return cells_.Range<tag_C_ITEM>(); }
  ///@}

  /// The 0-based position of the first cell of program `pg`: the sum of `C_Ns` over the programs
  /// before it; over all programs when `pg` is out of range.
  int GetPGStartCellID(int pg) const;
  /// The kinds of cell of program `pg`. Cells that its `C_Ns` counts past the cell list do not
  /// matter.
  PG_VOB_TYPE GetProgramVOBType(int pg) const;

  /// Completes every cell, then the counts and the cells' addresses.
  void AutoComplete();
  /// The size in the file in bytes, by the lists.
  unsigned long GetDataSize() const;
  /// Writes the structure as its lists stand in file order at `out`. The addresses are those of the
  /// last `AutoComplete`: call it before, so that `GetDataSize()` bytes are enough.
  void GetData(unsigned char* out);

  bool operator==(const CPGCInfo&) const = default;

  ///@{
  /// For the tables of the library. `Write` returns `GetDataSize()`.
  void Read(const ImageReader& image);
  std::uint64_t Write(const ImageWriter& out) const;
  ///@}

 private:
  /// A cell with its item, so that the cells of a list share one block of memory.
  struct VESKA_API CellItem : tag_C_ITEM {
    explicit CellItem(tag_CELL_TYPE type);
    CellItem(const CellItem& other);
    CellItem& operator=(const CellItem&) = delete;
    ~CellItem();
    bool operator==(const CellItem& other) const;

    /// Reads over a cell of that kind that the library made.
    void Read(tag_CELL_TYPE type, const ImageReader& image);
    /// Makes one of that kind of whatever it holds.
    void Become(tag_CELL_TYPE type);

   private:
    void Place(tag_CELL_TYPE type);
    CBaseCell* Own() { return std::launder(reinterpret_cast<CBaseCell*>(own_)); }

    static_assert(sizeof(CStillCell) <= sizeof(CMovieCell));
    alignas(CMovieCell) unsigned char own_[sizeof(CMovieCell)];  // a cell of either kind
  };

  tag_PGC_GI header_{};
  RecordList<tag_PGI, 0xFF> programs_;
  RecordList<CellItem, 0xFFFF> cells_;
};

}  // namespace VESKA
