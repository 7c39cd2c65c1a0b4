#include <veska/CVMGInfo.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <memory>

#include "frame/file.h"
#include "frame/image.h"

namespace VESKA {
namespace {

constexpr unsigned char kIdentifier[] = {'D', 'V', 'D', '_', 'R', 'T',
                                         'R', '_', 'V', 'M', 'G', '0'};

constexpr std::uint16_t kNoCell = 0xFFFF;  // though a full chain has a cell of that number

/// Whether the image, or as much of it as there is, begins with the identifier.
bool HasIdentifier(const unsigned char* image, std::size_t size = sizeof kIdentifier) {
  return std::memcmp(image, kIdentifier, std::min(size, sizeof kIdentifier)) == 0;
}

constexpr Failure kNotManagement = {.kind = FailureKind::kNotManagement,
                                    .table = FailureTable::kHeader};

/// The bytes that end addresses may claim beyond what the tables take: a block of the disc. A false
/// one would make gigabytes of a small file.
constexpr std::uint64_t kLargestPadding = std::uint64_t{16} * 2048;

struct FreeBytes {
  void operator()(unsigned char* bytes) const { std::free(bytes); }
};
using ZeroedBytes = std::unique_ptr<unsigned char, FreeBytes>;

ZeroedBytes AllocateZeroed(unsigned long size) {
  return ZeroedBytes(static_cast<unsigned char*>(std::calloc(size, 1)));
}

/// Runs a load or save, or a step of one, and turns whatever it throws into false and the reason.
template <class Step>
bool Succeeds(Failure& why, Step&& step) {
  why = {};
  try {
    if (!step()) return false;
    why = {};
    return true;
  } catch (const ImageError& error) {
    why.kind = error.kind;
    why.offset = error.offset;
  } catch (const std::bad_alloc&) {
    why.kind = FailureKind::kNoMemory;
  } catch (const std::exception&) {  // a path that cannot be handled
    why.kind = FailureKind::kNoName;
  }
  return false;
}

/// A buffer for an image, unless a file cannot have that size.
bool Allocate(std::uint64_t size, ZeroedBytes* image, Failure* why) {
  if (size >= kFileSizeLimit) return Fail(why, FailureKind::kTooLarge);
  *image = AllocateZeroed(static_cast<unsigned long>(size));
  return *image != nullptr || Fail(why, FailureKind::kNoMemory);
}

bool PointsIntoMovieCell(const tag_CELL_POINT& point, const CPGCInfo& chain) {
  if (point.cell == kNoCell) return false;
  const tag_C_ITEM* item = chain.GetCellNode(point.cell - 1);
  return item != nullptr && item->CI->GetType() == CELL_MOVIE;
}

}  // namespace

CVMGInfo::~CVMGInfo() = default;

void CVMGInfo::Clear() { ClearFrom(FailureTable::kHeader); }

/// Clears a table and those that are read behind it.
void CVMGInfo::ClearFrom(FailureTable first) {
  const auto clear = [first](auto& table, FailureTable name) {
    if (name >= first) table.Clear();
  };
  clear(mat_, FailureTable::kHeader);
  clear(movie_, FailureTable::kMovie);
  clear(still_, FailureTable::kStill);
  clear(original_, FailureTable::kOriginalChain);
  clear(user_chains_, FailureTable::kUserChains);
  clear(texts_, FailureTable::kTexts);
  clear(manufacturers_, FailureTable::kManufacturers);
}

bool CVMGInfo::operator==(const CVMGInfo& other) const {
  return mat_ == other.mat_ && movie_ == other.movie_ && still_ == other.still_ &&
         original_ == other.original_ && user_chains_ == other.user_chains_ &&
         texts_ == other.texts_ && manufacturers_ == other.manufacturers_;
}

bool CVMGInfo::LoadFromMemory(unsigned char* data, unsigned char flags) {
  if (data != nullptr) return Load(ImageReader(data), flags);
  failure_ = {.kind = FailureKind::kNoData};
  return false;
}

bool CVMGInfo::LoadFromMemory(unsigned char* data, unsigned long size, unsigned char flags) {
  if (data == nullptr) return LoadFromMemory(data, flags);
  std::uint64_t budget = std::uint64_t{size} * kBytesPerImageByte;
  if (Load(ImageReader(data, size, &budget), flags)) return true;
  // Something else may be too short for a header, or hold anything where the play lists stand.
  if (size == 0) failure_ = {.kind = FailureKind::kEmpty};
  if (size != 0 && !HasIdentifier(data, size)) failure_ = kNotManagement;
  return false;
}

// A table is read over what it holds, so that it can use its memory again. Where a load fails, that
// table and those behind it are cleared.
bool CVMGInfo::Load(const ImageReader& image, unsigned char flags) {
  const bool loaded = Succeeds(failure_, [&] {
    failure_.table = FailureTable::kHeader;
    mat_.Read(image);
    if (!HasIdentifier(mat_.GetHeader().VMG_ID)) {
      failure_ = kNotManagement;
      return false;
    }
    ReadTables(image, flags, &failure_.table);
    return true;
  });
  if (loaded) return true;
  ClearFrom(failure_.kind == FailureKind::kNotManagement ? FailureTable::kMovie : failure_.table);
  // The play lists are read with the header.
  if (failure_.table == FailureTable::kHeader && failure_.offset >= sizeof(tag_VMGI_MAT_HEADER)) {
    failure_.table = FailureTable::kPlayLists;
  }
  return false;
}

void CVMGInfo::ReadTables(const ImageReader& image, unsigned char flags, FailureTable* now) {
  const auto read = [&](auto& table, unsigned flag, std::uint32_t address, FailureTable name) {
    *now = name;
    if ((flags & flag) == 0 || address == 0) return table.Clear();
    table.Read(image.At(address));
  };
  const tag_VMGI_MAT_HEADER& header = mat_.GetHeader();
  read(movie_, kLoadMovie, header.M_AVFIT_SA, FailureTable::kMovie);
  read(still_, kLoadStill, header.S_AVFIT_SA, FailureTable::kStill);
  *now = FailureTable::kOriginalChain;
  original_.Read(image.At(header.ORG_PGCI_SA));
  read(user_chains_, kLoadUserChains, header.UD_PGCIT_SA, FailureTable::kUserChains);
  read(texts_, kLoadTexts, header.TXTDT_MG_SA, FailureTable::kTexts);
  read(manufacturers_, kLoadManufacturers, header.MNFIT_SA, FailureTable::kManufacturers);
  ConvertCellPoints(original_);
}

bool CVMGInfo::LoadFromFile(const unsigned short* path, unsigned char flags) {
  return Succeeds(failure_, [&] {
    std::filesystem::path native;
    return PathFromUtf16(path, &native, &failure_) && LoadFromFile(native, flags);
  });
}

bool CVMGInfo::LoadFromFile(const std::filesystem::path& path, unsigned char flags) {
  return Succeeds(failure_, [&] {
    FileBytes file;
    return ReadWholeFile(path, &file, &failure_) &&
           LoadFromMemory(file.bytes.get(), static_cast<unsigned long>(file.size), flags);
  });
}

bool CVMGInfo::SaveToFile(const unsigned short* path) {
  return Succeeds(failure_, [&] {
    std::filesystem::path native;
    return PathFromUtf16(path, &native, &failure_) && SaveToFile(native);
  });
}

bool CVMGInfo::SaveToFile(const std::filesystem::path& path) {
  return Succeeds(failure_, [&] {
    const unsigned long size = GetDataSize();
    ZeroedBytes image;
    return Allocate(size, &image, &failure_) && MakeImage(image.get(), size) &&
           WriteWholeFile(path, image.get(), size, &failure_);
  });
}

unsigned char* CVMGInfo::SaveToMemory(unsigned long* size) {
  *size = GetDataSize();
  ZeroedBytes image;
  const bool saved = Succeeds(failure_, [&] {
    return Allocate(*size, &image, &failure_) && MakeImage(image.get(), *size);
  });
  return saved ? image.release() : nullptr;
}

/// Writes the image into the zeroed buffer; false, with the reason, when it is not to be saved.
bool CVMGInfo::MakeImage(unsigned char* image, unsigned long size) {
  bool refused = false;
  Write(ImageWriter(image, size, &refused));
  CVMGInfo read;
  if (refused || !read.ReadBack(image, size) || !(read == *this)) {
    BlameRecord(image, size);
    return false;
  }
  read.AutoComplete();
  if (size <= std::uint64_t{read.GetDataSize()} + kLargestPadding) return true;
  BlamePadding(read);
  return false;
}

/// Reads the image of an object, which may lack the identifier.
bool CVMGInfo::ReadBack(const unsigned char* image, unsigned long size) {
  std::uint64_t budget = std::uint64_t{size} * kBytesPerImageByte;
  const ImageReader reader(image, size, &budget);
  try {
    mat_.Read(reader);
    ReadTables(reader, kLoadAll, &failure_.table);
    return true;
  } catch (const ImageError&) {
    return false;
  }
}

unsigned long CVMGInfo::GetDataSize() const { return SizeOfOthers() + original_.GetDataSize(); }

unsigned long CVMGInfo::SizeOfOthers() const {
  return mat_.GetDataSize() + movie_.GetDataSize() + still_.GetDataSize() +
         user_chains_.GetDataSize() + texts_.GetDataSize() + manufacturers_.GetDataSize();
}

unsigned char* CVMGInfo::AllocData() { return AllocateZeroed(GetDataSize()).release(); }

void CVMGInfo::FreeData(unsigned char* data) { std::free(data); }

void CVMGInfo::AutoComplete() {
  mat_.AutoComplete();
  movie_.AutoComplete();
  still_.AutoComplete();
  original_.AutoComplete();
  user_chains_.AutoComplete();
  texts_.AutoComplete();
  manufacturers_.AutoComplete();

  unsigned long end = mat_.GetDataSize();
  const auto lay_out = [&end](const auto& table) {
    const auto address = static_cast<std::uint32_t>(end);
    end += table.GetDataSize();
    return address;
  };
  const auto lay_out_unless_empty = [&lay_out](const auto& table) {
    return table.IsEmpty() ? 0 : lay_out(table);
  };
  tag_VMGI_MAT_HEADER& header = mat_.GetHeader();
  header.M_AVFIT_SA = lay_out(movie_);
  header.S_AVFIT_SA = lay_out(still_);
  header.ORG_PGCI_SA = lay_out(original_);
  header.UD_PGCIT_SA = lay_out_unless_empty(user_chains_);
  header.TXTDT_MG_SA = lay_out_unless_empty(texts_);
  header.MNFIT_SA = lay_out_unless_empty(manufacturers_);
  header.VMG_EA = static_cast<std::uint32_t>(end - 1);
}

// Adding up a chain of 60,000 cells takes half as long as writing it. Where all stands as
// AutoComplete places it, what is before the chain ends where it begins, and writing it tells where
// it ends itself. Where the size may not fit its type, it is added up all the same: the buffer has
// what is left of it.
void CVMGInfo::GetData(unsigned char* out) {
  constexpr bool kSizesFit = std::numeric_limits<unsigned long>::digits == 64;
  const tag_VMGI_MAT_HEADER& header = mat_.GetHeader();
  const unsigned long movie = mat_.GetDataSize();
  const unsigned long still = movie + movie_.GetDataSize();
  const unsigned long chain = still + still_.GetDataSize();
  const bool in_place =
      header.M_AVFIT_SA == movie && header.S_AVFIT_SA == still && header.ORG_PGCI_SA == chain;
  if (!kSizesFit || !in_place) return Write(ImageWriter(out, GetDataSize(), nullptr));

  WriteMaterial(ImageWriter(out, chain, nullptr));
  const std::uint64_t size = SizeOfOthers() + original_.Write(ImageWriter(out).At(chain));
  WriteRest(ImageWriter(out, size, nullptr));
}

void CVMGInfo::Write(const ImageWriter& out) {
  WriteMaterial(out);
  original_.Write(out.At(mat_.GetHeader().ORG_PGCI_SA));
  WriteRest(out);
}

void CVMGInfo::WriteMaterial(const ImageWriter& out) {
  movie_.Write(out.At(mat_.GetHeader().M_AVFIT_SA));
  still_.Write(out.At(mat_.GetHeader().S_AVFIT_SA));
}

void CVMGInfo::WriteRest(const ImageWriter& out) {
  const tag_VMGI_MAT_HEADER& header = mat_.GetHeader();
  user_chains_.Write(out.At(header.UD_PGCIT_SA));
  texts_.Write(out.At(header.TXTDT_MG_SA));
  manufacturers_.Write(out.At(header.MNFIT_SA));
  mat_.Write(out);
  WriteCellPoints(out);
}

// The position of a cell point is two numbers where the cell is a movie cell, and raw bytes
// elsewhere. The tables cannot tell, so they leave it alone, and the three operations below see to
// it.

void CVMGInfo::ConvertCellPoints(const CPGCInfo& chain) {
  const auto convert = [&chain](tag_CELL_POINT& point) {
    if (!PointsIntoMovieCell(point, chain)) return;
    auto* bytes = reinterpret_cast<unsigned char*>(&point);
    auto* position = bytes + offsetof(tag_CELL_POINT, position);
    auto* position_ext = bytes + offsetof(tag_CELL_POINT, position_ext);
    Convert<std::uint32_t>(position, position);
    Convert<std::uint16_t>(position_ext, position_ext);
  };
  convert(mat_.GetHeader().cell_point_70);
  convert(mat_.GetHeader().cell_point_85);
  for (tag_PL_SRP& play_list : mat_.GetPlayListTable().PlayLists()) convert(play_list.cell_point);
  for (tag_PGI& program : original_.Programs()) convert(program.cell_point);
}

void CVMGInfo::WriteCellPoints(const ImageWriter& out) {
  const auto write = [&](std::uint64_t offset, const tag_CELL_POINT& point) {
    if (!PointsIntoMovieCell(point, original_)) return;
    out.PutLong(offset + offsetof(tag_CELL_POINT, position), point.position);
    out.PutWord(offset + offsetof(tag_CELL_POINT, position_ext), point.position_ext);
  };
  const tag_VMGI_MAT_HEADER& header = mat_.GetHeader();
  write(offsetof(tag_VMGI_MAT_HEADER, cell_point_70), header.cell_point_70);
  write(offsetof(tag_VMGI_MAT_HEADER, cell_point_85), header.cell_point_85);

  std::uint64_t offset = sizeof header + sizeof(tag_PL_SRPTI) + offsetof(tag_PL_SRP, cell_point);
  for (const tag_PL_SRP& play_list : mat_.GetPlayListTable().PlayLists()) {
    write(offset, play_list.cell_point);
    offset += sizeof(tag_PL_SRP);
  }
  offset = std::uint64_t{header.ORG_PGCI_SA} + sizeof(tag_PGC_GI) + offsetof(tag_PGI, cell_point);
  for (const tag_PGI& program : original_.Programs()) {
    write(offset, program.cell_point);
    offset += sizeof(tag_PGI);
  }
}

}  // namespace VESKA
