#include "floor.h"

#include <veska/CVMGInfo.h>

#include <new>
#include <utility>

#include "frame/image.h"
#include "frame/items.h"

using namespace VESKA;

namespace {

/// The block. The first time it is large enough for any of the images, from then on as large as it
/// has to be.
class Block {
 public:
  void Free() { bytes_.reset(); }
  void Renew() {
    bytes_.reset(static_cast<unsigned char*>(::operator new(size_)));
    next_ = bytes_.get();
  }
  void Close() { size_ = static_cast<std::size_t>(next_ - bytes_.get()); }
  const unsigned char* begin() const { return bytes_.get(); }

  /// Makes an object of zero bytes.
  template <class Object>
  Object* Make() {
    return ::new (Take(sizeof(Object))) Object();
  }

  /// Makes `count` objects whose bytes the caller sets next.
  template <class Object>
  Object* MakeUnset(std::size_t count) {
    return ::new (Take(count * sizeof(Object))) Object[count];
  }

 private:
  unsigned char* Take(std::size_t size) { return std::exchange(next_, next_ + size); }

  struct FreeBytes {
    void operator()(unsigned char* bytes) const { ::operator delete(bytes); }
  };
  std::unique_ptr<unsigned char, FreeBytes> bytes_;
  unsigned char* next_ = nullptr;
  std::size_t size_ = 64 << 20;
};

unsigned char* BytesOf(void* record) { return static_cast<unsigned char*>(record); }
const unsigned char* BytesOf(const void* record) {
  return static_cast<const unsigned char*>(record);
}

template <class Record>
std::uint64_t ReadRecords(const ImageReader& image, std::uint64_t offset, unsigned count,
                          Block& block) {
  const std::uint64_t size = count * sizeof(Record);
  CopyRecords<Record>(BytesOf(block.MakeUnset<Record>(count)), image.Bytes(offset, size), count);
  return offset + size;
}

template <class Record>
std::uint64_t WriteRecords(const ImageWriter& out, std::uint64_t offset, const Record* records,
                           unsigned count) {
  const std::uint64_t size = count * sizeof(Record);
  if (unsigned char* to = out.Room(offset, size)) {
    CopyRecords<Record>(to, BytesOf(records), count);
  }
  return offset + size;
}

/// The object behind `object`, which has `size` bytes.
template <class Next, class Object>
const Next* Behind(const Object* object, std::size_t count = 1) {
  return reinterpret_cast<const Next*>(object + count);
}

/// Where the addresses of structures stand, and how many.
struct Addresses {
  std::uint64_t first;
  unsigned count;
};

/// A floor over objects of the table whose address stands at `TableField` of the file's header.
/// They are read by `Object::Read` and written by `Object::Write`, which returns the object behind.
template <class Object, std::size_t TableField>
class FloorOf : public Floor {
 public:
  void Clear() override { block_.Free(); }

  void Load(const unsigned char* image, std::size_t size) override {
    std::uint64_t budget = std::uint64_t{size} * CVMGInfo::kBytesPerImageByte;
    const ImageReader file(image, size, &budget);
    table_ = file.Long(TableField);
    const ImageReader table = file.At(table_);
    addresses_ = Object::Find(table);
    block_.Renew();
    for (unsigned i = 0; i < addresses_.count; ++i) {
      auto* object = block_.Make<Object>();
      object->address = table.Long(addresses_.first + kAddressSize * i);
      object->Read(table.At(object->address), block_);
    }
    block_.Close();
  }

  void Write(unsigned char* image, std::size_t size) const override {
    const ImageWriter out = ImageWriter(image, size, nullptr).At(table_);
    std::uint64_t pointer = addresses_.first;
    std::uint64_t position = pointer + kAddressSize * addresses_.count;
    const auto* object = reinterpret_cast<const Object*>(block_.begin());
    for (unsigned i = 0; i < addresses_.count; ++i) {
      pointer = out.PutLong(pointer, object->address);
      object = object->Write(out, position);
    }
  }

 private:
  Block block_;
  std::uint32_t table_ = 0;
  Addresses addresses_{};
};

#pragma pack(push, 1)

struct Vob {
  std::uint32_t address;
  tag_M_VOB_GI general;
  tag_SMLI seamless;
  tag_AGAPI audio_gaps;
  tag_TMAP_GI map;

  static Addresses Find(const ImageReader& table) {
    const unsigned streams = table.Byte(offsetof(tag_M_AVFITI, M_VOB_STI_Ns));
    const std::uint64_t index = sizeof(tag_M_AVFITI) + sizeof(tag_M_VOB_STI) * streams;
    return {index + sizeof(tag_M_AVFI_GI), table.Word(index)};
  }

  void Read(const ImageReader& image, Block& block) {
    std::uint64_t end = image.Copy(0, general);
    if (general.HasSeamlessInfo()) end = image.Copy(end, seamless);
    if (general.HasAudioGaps()) end = image.Copy(end, audio_gaps);
    end = image.Copy(end, map);
    end = ReadRecords<tag_TM_ENT>(image, end, map.TM_ENT_Ns, block);
    ReadRecords<tag_VOBU_ENT>(image, end, map.VOBU_ENT_Ns, block);
  }

  const Vob* Write(const ImageWriter& out, std::uint64_t& end) const {
    end = out.Put(end, general);
    if (general.HasSeamlessInfo()) end = out.Put(end, seamless);
    if (general.HasAudioGaps()) end = out.Put(end, audio_gaps);
    end = out.Put(end, map);
    const auto* times = Behind<tag_TM_ENT>(this);
    const auto* vobus = Behind<tag_VOBU_ENT>(times, map.TM_ENT_Ns);
    end = WriteRecords(out, end, times, map.TM_ENT_Ns);
    end = WriteRecords(out, end, vobus, map.VOBU_ENT_Ns);
    return Behind<Vob>(vobus, map.VOBU_ENT_Ns);
  }
};

/// A cell of either kind. Its entry points follow, each with its block when it is a long one.
struct Cell {
  std::uint32_t address;
  bool is_still;
  union {
    tag_M_C_GI movie;
    tag_S_C_GI still;
  };

  static Addresses Find(const ImageReader& table) {
    const unsigned programs = table.Byte(offsetof(tag_PGC_GI, PG_Ns));
    return {sizeof(tag_PGC_GI) + sizeof(tag_PGI) * programs,
            table.Word(offsetof(tag_PGC_GI, CI_SRP_Ns))};
  }

  void Read(const ImageReader& image, Block& block) {
    is_still = image.Byte(1) >= 0x20;
    if (is_still) {
      const std::uint64_t end = image.Copy(0, still);
      ReadEntries<tag_S_C_EPI>(image, end, still.C_EPI_Ns, block);
    } else {
      const std::uint64_t end = image.Copy(0, movie);
      ReadEntries<tag_M_C_EPI>(image, end, movie.C_EPI_Ns, block);
    }
  }

  template <class Entry>
  static void ReadEntries(const ImageReader& image, std::uint64_t end, unsigned count,
                          Block& block) {
    for (; count != 0; --count) {
      auto* entry = block.MakeUnset<Entry>(1);
      entry->block = nullptr;
      end = image.Copy(end, *entry);
      if (!IsLongEntry(entry->EP_TY)) continue;
      entry->block = block.MakeUnset<unsigned char>(kEntryBlockSize);
      std::memcpy(entry->block, image.Bytes(end, kEntryBlockSize), kEntryBlockSize);
      end += kEntryBlockSize;
    }
  }

  const Cell* Write(const ImageWriter& out, std::uint64_t& end) const {
    if (is_still) {
      end = out.Put(end, still);
      return WriteEntries<tag_S_C_EPI>(out, end, still.C_EPI_Ns);
    }
    end = out.Put(end, movie);
    return WriteEntries<tag_M_C_EPI>(out, end, movie.C_EPI_Ns);
  }

  template <class Entry>
  const Cell* WriteEntries(const ImageWriter& out, std::uint64_t& end, unsigned count) const {
    const auto* entry = Behind<Entry>(this);
    for (; count != 0; --count) {
      end = out.Put(end, *entry);
      const unsigned char* block = entry->block;
      ++entry;
      if (block == nullptr) continue;
      end = out.PutBytes(end, block, kEntryBlockSize);
      entry = reinterpret_cast<const Entry*>(block + kEntryBlockSize);
    }
    return reinterpret_cast<const Cell*>(entry);
  }
};

struct StillGroup {
  std::uint32_t address;
  tag_S_VOG_GI general;

  static Addresses Find(const ImageReader& table) {
    const unsigned streams = table.Byte(offsetof(tag_S_AVFITI, S_VOB_STI_Ns));
    const std::uint64_t index = sizeof(tag_S_AVFITI) + sizeof(tag_S_VOB_STI) * streams;
    return {index + sizeof(tag_S_AVFI_GI), table.Word(index)};
  }

  void Read(const ImageReader& image, Block& block) {
    std::uint64_t end = image.Copy(0, general);
    for (unsigned i = 0; i < general.S_VOB_Ns; ++i) {
      auto* entry = block.Make<tag_S_VOB_ENT>();
      entry->S_VOB_ENT_TY = image.Byte(end);
      CopyStillEntry(BytesOf(entry), image.Bytes(end, entry->Size()));
      end += entry->Size();
    }
  }

  const StillGroup* Write(const ImageWriter& out, std::uint64_t& end) const {
    end = out.Put(end, general);
    const auto* entry = Behind<tag_S_VOB_ENT>(this);
    for (unsigned i = 0; i < general.S_VOB_Ns; ++i, ++entry) {
      if (unsigned char* to = out.Room(end, entry->Size())) CopyStillEntry(to, BytesOf(entry));
      end += entry->Size();
    }
    return reinterpret_cast<const StillGroup*>(entry);
  }
};

#pragma pack(pop)

constexpr std::size_t kMovieTable = offsetof(tag_VMGI_MAT_HEADER, M_AVFIT_SA);
constexpr std::size_t kStillTable = offsetof(tag_VMGI_MAT_HEADER, S_AVFIT_SA);
constexpr std::size_t kOriginalChain = offsetof(tag_VMGI_MAT_HEADER, ORG_PGCI_SA);

}  // namespace

std::unique_ptr<Floor> FloorOfVobs() { return std::make_unique<FloorOf<Vob, kMovieTable>>(); }
std::unique_ptr<Floor> FloorOfCells() { return std::make_unique<FloorOf<Cell, kOriginalChain>>(); }
std::unique_ptr<Floor> FloorOfStillGroups() {
  return std::make_unique<FloorOf<StillGroup, kStillTable>>();
}
