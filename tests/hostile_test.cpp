// Images that lie: no byte outside them is read, no more memory is used than their size justifies,
// and whatever loads is an object like any other.

#include <gtest/gtest.h>
#include <veska/veska.h>

#include <cstdint>
#include <span>
#include <vector>

#include "guarded_image.h"
#include "heap.h"
#include "image_builder.h"
#include "round_trip.h"

namespace VESKA {
namespace {

constexpr const char* kSamples[] = {"empty", "still_camera", "odd_layout", "mixed_full",
                                    "movie_recorder"};
constexpr std::size_t kLargestSample = 16384;
constexpr std::size_t kMemorySlack = 1 << 20;

/// Loads images that end at an unreadable page and checks what has to hold of every load.
class Attack {
 public:
  /// False when something does not hold.
  bool Withstands(const unsigned char* bytes, std::size_t size) {
    CVMGInfo info;
    heap::StartPeak();
    const bool loaded = info.LoadFromMemory(page_.Place(bytes, size),
                                            static_cast<unsigned long>(size), CVMGInfo::kLoadAll);
    if (heap::Peak() > 15 * size + kMemorySlack) return false;
    ++(loaded ? loads_ : refusals_);
    if (!loaded) return true;
    Write(info);
    return round_trip::Survives(info);
  }
  bool Withstands(const Bytes& bytes) { return Withstands(bytes.data(), bytes.size()); }

  int Loads() const { return loads_; }
  int Refusals() const { return refusals_; }

 private:
  /// Writes the file into a buffer of just the size that the image claims for it.
  static void Write(CVMGInfo& info) {
    const std::size_t size = info.GetDataSize();
    if (size <= kLargestSample) info.GetData(Bytes(size).data());  // a sanitizer looks on
  }

  GuardedImage page_{kLargestSample};
  int loads_ = 0;
  int refusals_ = 0;
};

TEST(Hostile, WithstandsEveryTruncation) {
  Attack attack;
  for (const char* sample : kSamples) {
    const Bytes image = Sample(sample);
    for (std::size_t size = 0; size <= image.size(); ++size) {
      if (!attack.Withstands(image.data(), size)) FAIL() << sample << " cut to " << size;
    }
  }
  EXPECT_GT(attack.Refusals(), 100);
}

TEST(Hostile, WithstandsEveryByte) {
  Attack attack;
  for (const char* sample : {"empty", "still_camera", "odd_layout"}) {
    Bytes image = Sample(sample);
    for (std::size_t i = 0; i < image.size(); ++i) {
      const unsigned char byte = image[i];
      for (const int value : {0x00, 0x7F, 0x80, 0xFF}) {
        image[i] = static_cast<unsigned char>(value);
        if (!attack.Withstands(image)) FAIL() << sample << " with " << value << " at " << i;
      }
      image[i] = byte;
    }
  }
  EXPECT_GT(attack.Loads(), 100);
  EXPECT_GT(attack.Refusals(), 100);
}

/// A count or an address in an image.
struct Derived {
  std::size_t offset;
  unsigned width;
};

/// Every count, address and length of a loaded image.
class DerivedFields {
 public:
  explicit DerivedFields(CVMGInfo& info) {
    const tag_VMGI_MAT_HEADER header = info.GetMAT().GetHeader();
    Record<tag_VMGI_MAT_HEADER>(0);
    Record<tag_PL_SRPTI>(sizeof header);
    Movie(header.M_AVFIT_SA, info.GetMovieAVFileTable());
    Still(header.S_AVFIT_SA, info.GetStillAVFileTable());
    Chain(header.ORG_PGCI_SA, info.GetOriginalPGC());
    if (info.HasUserPGCTable()) UserChains(header.UD_PGCIT_SA, info.GetUserPGCTable());
    if (info.HasTextDataMgr()) Texts(header.TXTDT_MG_SA, info.GetTextDataMgr());
    if (info.HasMNFInfoTable()) Makers(header.MNFIT_SA, info.GetMNFInfoTable());
  }

  auto begin() const { return fields_.begin(); }
  auto end() const { return fields_.end(); }
  std::size_t size() const { return fields_.size(); }

 private:
  template <class RecordType>
  void Record(std::size_t at) {
    Fields(at, kFields<RecordType>);
  }
  template <class Table>
  void Fields(std::size_t at, const Table& table) {
    for (const Field& field : table) {
      if (field.kind == FieldKind::kDerived) fields_.push_back({at + field.offset, field.width});
    }
  }
  void Pointers(std::size_t at, int count, unsigned width = 4) {
    for (int i = 0; i < count; ++i, at += width) fields_.push_back({at, width});
  }

  void Movie(std::size_t table, CMovieAVFileTable& movie) {
    Record<tag_M_AVFITI>(table);
    CMovieAVFile& vobs = movie.GetMovieAVFile();
    const std::size_t index =
        table + sizeof(tag_M_AVFITI) + sizeof(tag_M_VOB_STI) * movie.GetHeader().M_VOB_STI_Ns;
    Record<tag_M_AVFI_GI>(index);
    Pointers(index + sizeof(tag_M_AVFI_GI), vobs.GetCount());
    for (int i = 0; i < vobs.GetCount(); ++i) {
      CMovieVOB& vob = vobs[i]->M_VOBI;
      const auto map = vob.GetDataSize() - vob.GetTimeMapTable().GetDataSize();
      Record<tag_TMAP_GI>(table + vobs[i]->M_VOBI_SA + map);
    }
  }
  void Still(std::size_t table, CStillAVFileTable& still) {
    Record<tag_S_AVFITI>(table);
    const tag_S_AVFITI header = still.GetHeader();
    std::size_t at = table + sizeof header + sizeof(tag_S_VOB_STI) * header.S_VOB_STI_Ns;
    CStillAVFile& groups = still.GetStillAVFile();
    Record<tag_S_AVFI_GI>(at);
    Pointers(at + sizeof(tag_S_AVFI_GI), groups.GetCount());
    for (int i = 0; i < groups.GetCount(); ++i) Record<tag_S_VOG_GI>(table + groups[i]->S_VOGI_SA);
    at += groups.GetDataSize() + sizeof(tag_S_A_ATR) * header.S_A_ATR_Ns;
    CAdditionalAFile& audio = still.GetAdditionalAFile();
    Record<tag_S_AAFI_GI>(at);
    Pointers(at + sizeof(tag_S_AAFI_GI), audio.GetCount());
    for (int i = 0; i < audio.GetCount(); ++i) Record<tag_S_AAG_GI>(table + audio[i]->S_AAGI_SA);
  }
  void Chain(std::size_t at, CPGCInfo& chain) {
    Record<tag_PGC_GI>(at);
    const auto programs = static_cast<unsigned>(chain.GetPGCount());
    Pointers(at + sizeof(tag_PGC_GI) + sizeof(tag_PGI) * programs, chain.GetCellCount());
    for (int i = 0; i < chain.GetCellCount(); ++i) {
      const tag_C_ITEM item = *chain.GetCellNode(i);
      const bool movie = item.CI->GetType() == CELL_MOVIE;
      Fields(at + item.CI_SA, movie ? std::span<const Field>(kFields<tag_M_C_GI>)
                                    : std::span<const Field>(kFields<tag_S_C_GI>));
    }
  }
  void UserChains(std::size_t at, CUserPGCTable& chains) {
    Record<tag_UD_PGCITI>(at);
    Pointers(at + sizeof(tag_UD_PGCITI), chains.GetCount());
    for (int i = 0; i < chains.GetCount(); ++i)
      Chain(at + chains[i]->UD_PGCI_SA, chains[i]->UD_PGCI);
  }
  void Texts(std::size_t at, CTextDataMgr& texts) {
    Record<tag_TXTDITI>(at);
    Pointers(at + sizeof(tag_TXTDITI), 2 * texts.GetCount(), 2);
    for (int i = 0; i < texts.GetCount(); ++i) {
      std::size_t text = at + texts[i]->IT_TXT_SA;
      for (int j = 0; j < texts[i]->IT_TXT.GetCount(); ++j) {
        Record<tag_IT_TXT>(text);
        text += kFileSize<tag_IT_TXT> + texts[i]->IT_TXT[j]->length;
      }
    }
  }
  void Makers(std::size_t at, CMNFInfoTable& makers) {
    Record<tag_MNFITI>(at);
    Pointers(at + sizeof(tag_MNFITI), makers.GetCount(), 2);
  }

  std::vector<Derived> fields_;
};

TEST(Hostile, WithstandsEveryCountAndAddress) {
  Attack attack;
  for (const char* sample : kSamples) {
    const Bytes image = Sample(sample);
    CVMGInfo info;
    ASSERT_TRUE(Load(info, image));
    const DerivedFields fields(info);
    EXPECT_GT(fields.size(), 16U) << sample;
    for (const Derived field : fields) {
      const std::uint64_t size = image.size();
      for (const std::uint64_t value :
           {std::uint64_t{0}, std::uint64_t{1}, ~std::uint64_t{0}, size - 1, size, size + 1}) {
        if (!attack.Withstands(image.With(field.offset, Number(value, field.width)))) {
          FAIL() << sample << ": " << value << " in the " << field.width << " bytes at "
                 << field.offset;
        }
      }
    }
  }
  EXPECT_GT(attack.Loads(), 100);
  EXPECT_GT(attack.Refusals(), 100);
}

}  // namespace
}  // namespace VESKA
