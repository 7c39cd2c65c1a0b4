// How much memory a load takes, and what happens where there is none.

#include <functional>

#include "support/guarded_image.h"
#include "support/heap.h"
#include "support/image_builder.h"
#include "support/round_trip.h"

namespace VESKA {
namespace {

constexpr int kMost = 0xFFFF;
constexpr std::size_t kMiB = std::size_t{1} << 20;

template <class Action>
void Repeat(int count, Action action) {
  for (int i = 0; i < count; ++i) action();
}

/// An object to be filled with the largest tables that there can be.
struct Disc : CVMGInfo {
  CMovieAVFile& vobs = GetMovieAVFileTable().GetMovieAVFile();
  CStillAVFile& groups = GetStillAVFileTable().GetStillAVFile();
  CAdditionalAFile& audio = GetStillAVFileTable().GetAdditionalAFile();
  CPGCInfo& chain = GetOriginalPGC();
  CUserPGCTable& chains = GetUserPGCTable();
  CTextDataMgr& texts = GetTextDataMgr();
  CMNFInfoTable& makers = GetMNFInfoTable();

  Disc() { std::memcpy(GetMAT().GetHeader().VMG_ID, "DVD_RTR_VMG0", 12); }

  static CStillCell& AddCell(CPGCInfo& chain) {
    return static_cast<CStillCell&>(*chain.AddCellNode(CELL_STILL)->CI);
  }
  const tag_VMGI_MAT_HEADER& Header() { return GetMAT().GetHeader(); }
  Bytes Image() { return Completed<CVMGInfo>(*this); }
};

/// Expects an image to be refused, or to load, within the memory that its size justifies.
void ExpectLoad(bool loads, const char* what, const Bytes& image) {
  SCOPED_TRACE(what);
  GuardedImage page(image.size());
  unsigned char* bytes = page.Place(image.data(), image.size());
  CVMGInfo info;
  heap::StartPeak();
  EXPECT_EQ(
      info.LoadFromMemory(bytes, static_cast<unsigned long>(image.size()), CVMGInfo::kLoadAll),
      loads);
  EXPECT_LE(heap::Peak(), CVMGInfo::kBytesPerImageByte * image.size() + kMiB);
  if (loads) {
    EXPECT_EQ(round_trip::ImageOf(info), image);
  }
}

/// Writes the same pointer over as many as there can be.
Bytes PointAllAt(const Bytes& pointer, std::size_t first, int count, Bytes image) {
  for (int i = 0; i < count; ++i) {
    for (const unsigned char byte : pointer) image.at(first++) = byte;
  }
  return image;
}

// Items without entries take no bytes, so they are given the address of the next one: with a large
// one at the end, all of them point at that one.
TEST(Memory, AnImageCannotUseMoreThanItsSizeJustifies) {
  const auto expect_refused = [](const char* what, const Bytes& image) {
    ExpectLoad(false, what, image);
  };
  {
    Disc disc;
    Repeat(kMost, [&] { disc.vobs.AddNode(); });
    CTimeMapTable& map = disc.vobs[kMost - 1]->M_VOBI.GetTimeMapTable();
    map.AddVobuENNode();
    const Bytes image = disc.Image();
    const std::size_t counts = disc.Header().M_AVFIT_SA + disc.vobs[0]->M_VOBI_SA + 23;
    expect_refused("movie VOBs without entries", image.With(counts, Word(0) + Word(0)));
    expect_refused("time maps past the end", image.With(counts, Word(kMost) + Word(kMost)));
    Repeat(kMost - 1, [&] { map.AddVobuENNode(); });
    EXPECT_LT(disc.Image().size(), kMiB);
    expect_refused("movie VOBs", disc.Image());
  }
  {
    Disc disc;
    Repeat(kMost, [&] { disc.groups.AddNode(); });
    Repeat(0xFF, [&] { disc.groups[kMost - 1]->S_VOGI.AddNode(); });
    expect_refused("still groups", disc.Image());
  }
  {
    Disc disc;
    Repeat(kMost, [&] { disc.audio.AddNode(); });
    Repeat(0xFF, [&] { disc.audio[kMost - 1]->S_AAGI.AddNode(); });
    expect_refused("audio groups", disc.Image());
  }
  {
    Disc disc;
    Repeat(kMost - 1, [&] { Disc::AddCell(disc.chain); });
    CStillCell& large = Disc::AddCell(disc.chain);
    Repeat(0x4000, [&] { large.AddNode(CELL_ENTRY_SHORT); });
    const Bytes image = disc.Image();
    expect_refused("cells", PointAllAt(Long(disc.chain.GetCellNode(kMost - 1)->CI_SA),
                                       disc.Header().ORG_PGCI_SA + 4, kMost, image));
  }
  {
    Disc disc;
    Repeat(0xFF, [&] { disc.chains.AddNode(); });
    Repeat(kMost, [&] { Disc::AddCell(disc.chains[0xFE]->UD_PGCI); });
    const Bytes image = disc.Image();
    expect_refused("chains", PointAllAt(Long(disc.chains[0xFE]->UD_PGCI_SA),
                                        disc.Header().UD_PGCIT_SA + 6, 0xFF, image));
  }
  {
    Disc disc;
    Repeat(kMost, [&] { disc.texts.AddNode(); });
    const Bytes image = disc.Image();
    expect_refused("text items",
                   PointAllAt(Word(0) + Word(kMost), disc.Header().TXTDT_MG_SA + 8, kMost, image));
  }
  {
    Disc disc;
    Repeat(kMost, [&] { disc.makers.AddNode(); });
    const Bytes image = disc.Image() + Zeros(0x10000);
    expect_refused("manufacturer records",
                   PointAllAt(Word(64), disc.Header().MNFIT_SA + 38, kMost, image));
  }
}

// The records that grow most when they are loaded, as many as there can be.
TEST(Memory, EveryHonestImageLoads) {
  const struct {
    const char* what;
    int count;
    void (*add)(Disc&);
  } cases[] = {
      {"text items", kMost, [](Disc& d) { d.texts.AddNode(); }},
      {"items with an empty text", 10000, [](Disc& d) { d.texts.AddNode()->IT_TXT.AddNode(); }},
      {"empty chains", 0xFF, [](Disc& d) { d.chains.AddNode(); }},
      {"cells", kMost, [](Disc& d) { Disc::AddCell(d.chain); }},
      {"entry points", kMost,
       [](Disc& d) {
         if (d.chain.IsEmpty()) Disc::AddCell(d.chain);
         static_cast<CStillCell*>(d.chain.GetCellNode(0)->CI)->AddNode(CELL_ENTRY_SHORT);
       }},
      {"VOBs of one VOBU", kMost,
       [](Disc& d) { d.vobs.AddNode()->M_VOBI.GetTimeMapTable().AddVobuENNode(); }},
      {"still groups of one entry", kMost, [](Disc& d) { d.groups.AddNode()->S_VOGI.AddNode(); }},
      {"audio groups of one entry", kMost, [](Disc& d) { d.audio.AddNode()->S_AAGI.AddNode(); }},
      {"manufacturer records", 1679, [](Disc& d) { d.makers.AddNode(); }}};
  for (const auto& test : cases) {
    Disc disc;
    Repeat(test.count, [&] { test.add(disc); });
    ExpectLoad(true, test.what, disc.Image());
  }
}

/// Runs `step` with no memory from its first allocation on, then from its second one on, and so on
/// until it succeeds. Returns how often it failed.
template <class Step>
int FailAtEveryAllocation(Step step) {
  for (int failures = 0;; ++failures) {
    const heap::FailAfter none(static_cast<std::size_t>(failures));
    if (step()) return failures;
  }
}

TEST(Memory, ALoadOrCopyWithoutMemoryFailsAndLeaksNothing) {
  Bytes image = Sample("mixed_full");
  CVMGInfo info;
  CVMGInfo copy;
  const std::size_t before = heap::InUse();
  EXPECT_GT(FailAtEveryAllocation([&] {
              info.Clear();  // it would use its memory again
              return info.LoadFromMemory(image.data(), static_cast<unsigned long>(image.size()),
                                         CVMGInfo::kLoadAll);
            }),
            20);
  EXPECT_EQ(round_trip::ImageOf(info), image);
  EXPECT_GT(FailAtEveryAllocation([&] {
              try {
                const CVMGInfo local(info);  // NOLINT(performance-unnecessary-copy-initialization)
                copy = info;
                return true;
              } catch (const std::bad_alloc&) {
                return false;
              }
            }),
            20);
  copy.AutoComplete();
  EXPECT_TRUE(copy == info);
  copy.Clear();
  info.Clear();
  EXPECT_EQ(heap::InUse(), before);
}

TEST(Memory, AnEditWithoutMemoryChangesNothing) {
  static unsigned char bytes[200] = {1};
  const std::pair<const char*, std::function<bool(CVMGInfo&)>> edits[] = {
      {"append a play list",
       [](CVMGInfo& info) { return info.GetMAT().GetPlayListTable().AddNode() != nullptr; }},
      {"insert a program",
       [](CVMGInfo& info) { return info.GetOriginalPGC().InsertPGNode(0) != nullptr; }},
      {"delete a program", [](CVMGInfo& info) { return info.GetOriginalPGC().DeletePGNode(0); }},
      {"move cells", [](CVMGInfo& info) { return info.GetOriginalPGC().MoveCellNodes(0, 1, 1); }},
      {"swap play lists",
       [](CVMGInfo& info) { return info.GetMAT().GetPlayListTable().SwapNode(0, 1); }},
      {"delete a text",
       [](CVMGInfo& info) { return info.GetTextDataMgr()[0]->IT_TXT.DeleteNode(0); }},
      {"append a long entry point",
       [](CVMGInfo& info) {
         tag_C_ITEM* item = info.GetUserPGCTable()[0]->UD_PGCI.GetCellNode(0);
         tag_S_C_EPI* entry = static_cast<CStillCell*>(item->CI)->AddNode(CELL_ENTRY_LONG);
         if (entry != nullptr) entry->EP_TY = 0x40;
         return entry != nullptr;
       }},
      {"set a text",
       [](CVMGInfo& info) {
         CTextSet& set = info.GetTextDataMgr()[0]->IT_TXT;
         set.SetNode(0, {9, sizeof bytes, bytes});
         return set[0]->code == 9;
       }},
      {"set a manufacturer information", [](CVMGInfo& info) {
         info.GetMNFInfoTable().SetNode(0, {{}, {}, 9, sizeof bytes, bytes});
         return info.GetMNFInfoTable()[0]->A_MNFI.MNF_FIELD_36 == 9;
       }}};
  for (const auto& [what, edit] : edits) {
    SCOPED_TRACE(what);
    CVMGInfo original;
    CVMGInfo info;
    ASSERT_TRUE(Load(original, Sample("mixed_full")) && Load(info, Sample("mixed_full")));
    int changes = 0;
    EXPECT_GT(FailAtEveryAllocation([&, &edit = edit] {
                if (edit(info)) return true;
                if (!(info == original)) ++changes;
                return false;
              }),
              0);
    EXPECT_EQ(changes, 0);
    EXPECT_FALSE(info == original);
    EXPECT_TRUE(round_trip::Survives(info));
  }
}

}  // namespace
}  // namespace VESKA
