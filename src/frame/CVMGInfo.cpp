#include <veska/CVMGInfo.h>

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

bool HasIdentifier(const unsigned char* image) {
  return std::memcmp(image, kIdentifier, sizeof kIdentifier) == 0;
}

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

/// Runs a step of a load or save and turns whatever it throws into false.
template <class Step>
bool Succeeds(Step&& step) {
  try {
    return step();
  } catch (const ImageError&) {
    return false;
  } catch (const std::exception&) {  // no memory, or a path that cannot be handled
    return false;
  }
}

}  // namespace

CVMGInfo::~CVMGInfo() = default;

void CVMGInfo::Clear() {
  mat_.Clear();
  movie_.Clear();
  still_.Clear();
  original_.Clear();
  user_chains_.Clear();
  texts_.Clear();
  manufacturers_.Clear();
}

bool CVMGInfo::LoadFromMemory(unsigned char* data, unsigned char flags) {
  return data != nullptr && Load(ImageReader(data), flags);
}

bool CVMGInfo::LoadFromMemory(unsigned char* data, unsigned long size, unsigned char flags) {
  std::uint64_t budget = std::uint64_t{size} * kBytesPerImageByte;
  return data != nullptr && Load(ImageReader(data, size, &budget), flags);
}

bool CVMGInfo::Load(const ImageReader& image, unsigned char flags) {
  return Succeeds([&] {
    Clear();
    mat_.Read(image);
    if (!HasIdentifier(mat_.GetHeader().VMG_ID)) return false;
    ReadTables(image, flags);
    return true;
  });
}

void CVMGInfo::ReadTables(const ImageReader& image, unsigned char flags) {
  const auto read = [&](auto& table, unsigned flag, std::uint32_t address) {
    if ((flags & flag) != 0 && address != 0) table.Read(image.At(address));
  };
  const tag_VMGI_MAT_HEADER& header = mat_.GetHeader();
  read(movie_, kLoadMovie, header.M_AVFIT_SA);
  read(still_, kLoadStill, header.S_AVFIT_SA);
  original_.Read(image.At(header.ORG_PGCI_SA));
  read(user_chains_, kLoadUserChains, header.UD_PGCIT_SA);
  read(texts_, kLoadTexts, header.TXTDT_MG_SA);
  read(manufacturers_, kLoadManufacturers, header.MNFIT_SA);
  ConvertCellPoints();
}

bool CVMGInfo::LoadFromFile(const unsigned short* path, unsigned char flags) {
  return Succeeds([&] {
    std::filesystem::path native;
    return PathFromUtf16(path, &native) && LoadFromFile(native, flags);
  });
}

bool CVMGInfo::LoadFromFile(const std::filesystem::path& path, unsigned char flags) {
  return Succeeds([&] {
    FileBytes file;
    return ReadWholeFile(path, &file) &&
           LoadFromMemory(file.bytes.get(), static_cast<unsigned long>(file.size), flags);
  });
}

bool CVMGInfo::SaveToFile(const unsigned short* path) {
  return Succeeds([&] {
    std::filesystem::path native;
    return PathFromUtf16(path, &native) && SaveToFile(native);
  });
}

bool CVMGInfo::SaveToFile(const std::filesystem::path& path) {
  return Succeeds([&] {
    const unsigned long size = GetDataSize();
    if (std::uint64_t{size} >= kFileSizeLimit) return false;
    const ZeroedBytes image = AllocateZeroed(size);
    if (image == nullptr) return false;
    bool refused = false;
    Write(ImageWriter(image.get(), size, &refused));
    return !refused && ReadsBack(image.get(), size) && WriteWholeFile(path, image.get(), size);
  });
}

bool CVMGInfo::ReadsBack(const unsigned char* image, unsigned long size) const {
  std::uint64_t budget = std::uint64_t{size} * kBytesPerImageByte;
  const ImageReader reader(image, size, &budget);
  CVMGInfo read;
  read.mat_.Read(reader);
  read.ReadTables(reader, kLoadAll);
  if (!(read == *this)) return false;
  read.AutoComplete();
  return size <= std::uint64_t{read.GetDataSize()} + kLargestPadding;
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

bool CVMGInfo::PointsIntoMovieCell(const tag_CELL_POINT& point) {
  if (point.cell == kNoCell) return false;
  const tag_C_ITEM* item = original_.GetCellNode(point.cell - 1);
  return item != nullptr && item->CI->GetType() == CELL_MOVIE;
}

void CVMGInfo::ConvertCellPoints() {
  const auto convert = [this](tag_CELL_POINT& point) {
    if (!PointsIntoMovieCell(point)) return;
    auto* bytes = reinterpret_cast<unsigned char*>(&point);
    auto* position = bytes + offsetof(tag_CELL_POINT, position);
    auto* position_ext = bytes + offsetof(tag_CELL_POINT, position_ext);
    Convert<std::uint32_t>(position, position);
    Convert<std::uint16_t>(position_ext, position_ext);
  };
  convert(mat_.GetHeader().cell_point_70);
  convert(mat_.GetHeader().cell_point_85);
  CPlayListSRPTable& play_lists = mat_.GetPlayListTable();
  for (int i = 0; i < play_lists.GetCount(); ++i) convert(play_lists[i]->cell_point);
  for (int i = 0; i < original_.GetPGCount(); ++i) convert(original_.GetPGNode(i)->cell_point);
}

void CVMGInfo::WriteCellPoints(const ImageWriter& out) {
  const auto write = [&](std::uint64_t offset, const tag_CELL_POINT& point) {
    if (!PointsIntoMovieCell(point)) return;
    out.PutLong(offset + offsetof(tag_CELL_POINT, position), point.position);
    out.PutWord(offset + offsetof(tag_CELL_POINT, position_ext), point.position_ext);
  };
  const tag_VMGI_MAT_HEADER& header = mat_.GetHeader();
  write(offsetof(tag_VMGI_MAT_HEADER, cell_point_70), header.cell_point_70);
  write(offsetof(tag_VMGI_MAT_HEADER, cell_point_85), header.cell_point_85);

  std::uint64_t offset = sizeof header + sizeof(tag_PL_SRPTI) + offsetof(tag_PL_SRP, cell_point);
  CPlayListSRPTable& play_lists = mat_.GetPlayListTable();
  for (int i = 0; i < play_lists.GetCount(); ++i, offset += sizeof(tag_PL_SRP)) {
    write(offset, play_lists[i]->cell_point);
  }
  offset = std::uint64_t{header.ORG_PGCI_SA} + sizeof(tag_PGC_GI) + offsetof(tag_PGI, cell_point);
  for (int i = 0; i < original_.GetPGCount(); ++i, offset += sizeof(tag_PGI)) {
    write(offset, original_.GetPGNode(i)->cell_point);
  }
}

}  // namespace VESKA
