// Whole files: the samples, the ways to name a file, and what is refused to be saved.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <type_traits>
#include <typeinfo>
#include <utility>

#include "support/heap.h"
#include "support/image_builder.h"
#include "support/temporary_folder.h"

namespace VESKA {
namespace {

namespace fs = std::filesystem;

std::vector<unsigned short> Utf16(const std::u16string& text) {
  std::vector<unsigned short> name(text.begin(), text.end());
  name.push_back(0);
  return name;
}

TEST(Samples, ThoseInCanonicalFormComeBackByteForByte) {
  const TemporaryFolder folder;
  for (const char* name : {"mixed_full", "movie_recorder", "still_camera", "empty"}) {
    SCOPED_TRACE(name);
    const Bytes image = Sample(name);
    ASSERT_GE(image.size(), 540U);
    CVMGInfo info;
    ASSERT_TRUE(info.LoadFromFile(std::string(VESKA_SAMPLES) + "/" + name + ".ifo", 0x3B));
    EXPECT_EQ(Completed(info), image);
    ASSERT_TRUE(info.SaveToFile(folder / name));
    EXPECT_EQ(ReadFile(folder / name), image);

    CVMGInfo trusting;
    Bytes copy = image;
    ASSERT_TRUE(trusting.LoadFromMemory(copy.data(), 0x3B));
    EXPECT_TRUE(trusting == info);
  }
}

// Where the size of an image wraps, what does not fit into that many bytes is not written.
TEST(Samples, AreWrittenWithinTheirSizeWhateverEndAddressesClaim) {
  const Bytes image = Sample("mixed_full");
  for (const std::uint32_t extra : {0U, 1U, 40U, 520U, 3000U}) {
    const std::uint32_t end =
        std::uint32_t{0} - static_cast<std::uint32_t>(image.size()) + 709 + extra;
    CVMGInfo info;
    ASSERT_TRUE(Load(info, image.With(1108, Long(end))));
    if (sizeof(unsigned long) > 4) {
      EXPECT_EQ(info.GetDataSize(), (std::uint64_t{1} << 32) + extra);
    } else {
      EXPECT_EQ(Written(info).size(), extra);
    }
  }
}

TEST(Samples, AreEqualWhenTheyStandTheSameInAFile) {
  const Bytes image = Sample("mixed_full");
  CVMGInfo info;
  ASSERT_TRUE(Load(info, image));
  for (std::size_t i = 0; i < image.size(); ++i) {
    CVMGInfo other;
    if (!Load(other, image.With(i, {static_cast<unsigned char>(image[i] ^ 1U)}))) continue;
    EXPECT_EQ(other == info, Written(other) == image) << i;
  }
  const auto expect_unlike_empty = [](const auto& table) {
    const std::remove_cvref_t<decltype(table)> empty{}, other{};
    EXPECT_TRUE(empty == other && !(empty == table) && !(table == empty)) << typeid(table).name();
  };
  CMovieAVFile& movie = info.GetMovieAVFileTable().GetMovieAVFile();
  CStillAVFileTable& stills = info.GetStillAVFileTable();
  expect_unlike_empty(movie);
  expect_unlike_empty(movie[0]->M_VOBI);
  expect_unlike_empty(movie[0]->M_VOBI.GetTimeMapTable());
  expect_unlike_empty(stills.GetStillAVFile()[0]->S_VOGI);
  expect_unlike_empty(stills.GetAdditionalAFile()[0]->S_AAGI);
  expect_unlike_empty(info.GetUserPGCTable());
  expect_unlike_empty(info.GetTextDataMgr());
  expect_unlike_empty(info.GetMNFInfoTable());
}

/// Where every record of a file lies in memory, found through a const object.
std::vector<const void*> Addresses(const CVMGInfo& info) {
  std::vector<const void*> places;
  const auto add = [&places](const auto& range) {
    for (const auto& record : range) places.push_back(&record);
  };
  const auto add_chain = [&](const CPGCInfo& chain) {
    add(chain.Programs());
    add(chain.Cells());
    for (const tag_C_ITEM& item : chain.Cells()) places.push_back(item.CI);
  };
  add(info.GetMAT().GetPlayListTable().PlayLists());
  add(info.GetMovieAVFileTable().Streams());
  add(info.GetMovieAVFileTable().GetMovieAVFile().Items());
  for (const tag_M_VOBI_ITEM& item : info.GetMovieAVFileTable().GetMovieAVFile().Items()) {
    add(item.M_VOBI.GetTimeMapTable().TimeEntries());
    add(item.M_VOBI.GetTimeMapTable().VobuEntries());
  }
  const CStillAVFileTable& still = info.GetStillAVFileTable();
  add(still.VOBStreams());
  add(still.AAStreams());
  for (const tag_S_VOGI_ITEM& item : still.GetStillAVFile().Items()) add(item.S_VOGI.Entries());
  for (const tag_S_AAGI_ITEM& item : still.GetAdditionalAFile().Items()) add(item.S_AAGI.Entries());
  add_chain(info.GetOriginalPGC());
  for (const tag_UD_PGCI_ITEM& item : info.GetUserPGCTable().Items()) add_chain(item.UD_PGCI);
  for (const tag_IT_TXT_ITEM& item : info.GetTextDataMgr().Items()) add(item.IT_TXT.Texts());
  add(info.GetMNFInfoTable().Items());
  return places;
}

CVMGInfo Loaded(const Bytes& image) {
  CVMGInfo info;
  EXPECT_TRUE(Load(info, image));
  return info;
}

TEST(Samples, MoveWithTheirRecords) {
  static_assert(std::is_nothrow_move_constructible_v<CVMGInfo> &&
                std::is_nothrow_move_assignable_v<CVMGInfo> &&
                std::is_nothrow_swappable_v<CVMGInfo>);
  for (const char* sample : kSamples) {
    const Bytes image = Sample(sample);
    CVMGInfo info = Loaded(image), other = Loaded(Sample("still_camera"));
    const std::vector<const void*> places = Addresses(info);
    EXPECT_EQ(places.empty(), std::string(sample) == "empty");
    const Bytes written = Written(info);
    const std::size_t calls = heap::Calls();
    CVMGInfo moved = std::move(info);
    std::swap(moved, other);
    info = std::move(other);
    EXPECT_EQ(heap::Calls(), calls);
    EXPECT_EQ(Addresses(info), places) << sample;
    EXPECT_EQ(Written(info), written);
    // NOLINTNEXTLINE(bugprone-use-after-move): an object that was moved from is empty
    EXPECT_TRUE(Addresses(other).empty());
    EXPECT_TRUE(Load(other, image));
  }
}

TEST(Samples, AnotherLayoutIsLoadedAndSavedInCanonicalForm) {
  CVMGInfo info;
  ASSERT_TRUE(Load(info, Sample("odd_layout")));
  const Bytes canonical = Completed(info);
  EXPECT_EQ(canonical.size(), 5840U);
  const std::pair<std::size_t, unsigned> kAddresses[] = {{12, 5839},  {28, 811},   {256, 812},
                                                         {260, 1251}, {304, 1588}, {308, 3384},
                                                         {352, 5628}, {356, 5722}};
  for (const auto& [offset, address] : kAddresses) {
    EXPECT_EQ(canonical.Part(offset, 4), Long(address)) << offset;
  }
}

TEST(FileNames, AreUtf16OrWhatThePlatformTakes) {
  const TemporaryFolder folder;
  CVMGInfo info;
  ASSERT_TRUE(Load(info, Sample("still_camera")));
  const std::pair<std::u16string, std::string> kNames[] = {
      {u"plain.ifo", "plain.ifo"},
      {u"\u00FCx.ifo", "\xC3\xBCx.ifo"},
      {u"\u9332\u753B.ifo", "\xE9\x8C\xB2\xE7\x94\xBB.ifo"},
      {u"\uFF36.ifo", "\xEF\xBC\xB6.ifo"},
      {u"\U0001F4C0.ifo", "\xF0\x9F\x93\x80.ifo"}};
  for (const auto& [utf16, utf8] : kNames) {
    SCOPED_TRACE(utf8);
    const fs::path path = folder / utf16;
    ASSERT_TRUE(info.SaveToFile(Utf16(path.u16string()).data()));
    EXPECT_TRUE(fs::exists(path));
    CVMGInfo by_utf16, by_path;
    EXPECT_TRUE(by_utf16.LoadFromFile(Utf16(path.u16string()).data(), 0x3B) && by_utf16 == info);
    EXPECT_TRUE(by_path.LoadFromFile(path, 0x3B) && by_path == info);
  }
  std::vector<std::u16string> refused = {u"", (folder / "").u16string(),
                                         (folder / "no" / "such").u16string()};
#ifndef _WIN32
  for (const auto& name : kNames) EXPECT_TRUE(fs::exists(folder / name.second));
  // The first and the last of each length, and what stands around the surrogates.
  const char* const kEdges =
      "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF"
      "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF";
  const std::u16string edges =
      (folder / "").u16string() + u"\x7F\x80\x7FF\x800\xD7FF\xE000\xFFFF\xD800\xDC00\xDBFF\xDFFF";
  EXPECT_TRUE(info.SaveToFile(Utf16(edges).data()) && fs::exists(folder / kEdges));
  EXPECT_TRUE(info.SaveToFile(folder / "\xFF\xFE.ifo")) << "no UTF-8";
  EXPECT_TRUE(info.LoadFromFile(folder / "\xFF\xFE.ifo", 0x3B));
  for (const std::u16string unpaired :
       {u"\xD83D", u"\xD83D\xFFFD", u"\xDCC0", u"\xDCC0\xD83D", u"\xD83Dx", u"\xDC00\xDC00",
        u"\xDFFF\xDC00", u"\xD800\xDBFF", u"\xDBFF\xE000"}) {
    refused.push_back((folder / "x").u16string() + unpaired);
  }
#endif
  for (const std::u16string& name : refused) {
    EXPECT_FALSE(info.LoadFromFile(Utf16(name).data(), 0x3B));
    const bool is_name = std::none_of(name.begin(), name.end(), [](auto c) { return c >= 0xD800; });
    EXPECT_EQ(info.GetFailure().kind == FailureKind::kNoName, name.empty() || !is_name);
    EXPECT_FALSE(info.SaveToFile(Utf16(name).data()));
    EXPECT_EQ(info.GetFailure().kind == FailureKind::kNoName, name.empty() || !is_name);
  }
  const unsigned short* null = nullptr;
  EXPECT_FALSE(info.LoadFromFile(null, 0x3B) || info.SaveToFile(null));
  EXPECT_EQ(Written(info), Sample("still_camera"));
}

CPlayListSRPTable& PlayListsOf(CVMGInfo& i) { return i.GetMAT().GetPlayListTable(); }
CMovieVOB& Vob(CVMGInfo& i, int n) { return i.GetMovieAVFileTable().GetMovieAVFile()[n]->M_VOBI; }
CTextSet& Set(CVMGInfo& i, int n) { return i.GetTextDataMgr()[n]->IT_TXT; }
CMovieCell& Cell(CVMGInfo& i) {
  return static_cast<CMovieCell&>(*i.GetOriginalPGC().GetCellNode(0)->CI);
}
/// Gives a set 256 texts of `length` bytes.
void AddTexts(CTextSet& set, std::uint8_t length) {
  Bytes text = Ramp(length);
  for (int n = 0; n < 256; ++n) {
    set.AddNode();
    set.SetNode(set.GetCount() - 1, {1, length, text.data()});
  }
}
void AddLargeManufacturer(CMNFInfoTable& table) {
  Bytes data = Ramp(100000);
  table.AddNode();
  table.SetNode(table.GetCount() - 1, {{}, {}, 0, 100000, data.data()});
}

constexpr bool kCompleted = true, kStale = false;
/// The reason why a save is refused, and where.
Failure Lost(FailureTable table, FailureList list = FailureList::kNone, int index = -1) {
  return {.kind = FailureKind::kWouldNotReadBack, .table = table, .list = list, .index = index};
}
using In = FailureTable;
using Of = FailureList;
const Failure kSaved;
const struct {
  const char* what;
  bool completed;
  Failure failure;
  std::function<void(CVMGInfo&)> edit;
} kEdits[] = {
    {"nothing", kStale, kSaved, [](auto&) {}},
    {"no identifier", kStale, kSaved, [](auto& i) { i.GetMAT().GetHeader().VMG_ID[0] = 0; }},
    {"one more", kCompleted, kSaved, [](auto& i) { PlayListsOf(i).AddNode(); }},
    {"one more", kStale, Lost(In::kPlayLists, Of::kPlayLists, 4),
     [](auto& i) { PlayListsOf(i).AddNode(); }},
    {"one fewer", kStale, Lost(In::kMovie, Of::kMovieStreams, 1),
     [](auto& i) { i.GetMovieAVFileTable().DeleteStreamNode(0); }},
    {"moved cells", kStale, Lost(In::kOriginalChain, Of::kCells, 3),
     [](auto& i) { i.GetOriginalPGC().MoveCellNodes(3, 9, 2); }},
    {"moved VOBs", kStale, Lost(In::kMovie, Of::kMovieVobs, 3),
     [](auto& i) { Vob(i, 2).GetHeader().VOB_TY[1] = 0; }},
    {"no address", kStale, Lost(In::kStill, Of::kStillStreams, 0),
     [](auto& i) { i.GetMAT().GetHeader().S_AVFIT_SA = 0; }},
    {"far address", kStale, Lost(In::kManufacturers, Of::kManufacturers, 0),
     [](auto& i) { i.GetMAT().GetHeader().MNFIT_SA = 1U << 31U; }},
    {"far end address",
     kStale,
     {.kind = FailureKind::kPadding, .table = In::kMovie},
     [](auto& i) { Load(i, Sample("empty").With(524, Long(0x8008))); }},
    {"the farthest end address", kStale, kSaved,
     [](auto& i) { Load(i, Sample("empty").With(524, Long(0x8007))); }},
    {"an end address past 32 bits",
     kStale,
     {.kind = FailureKind::kTooLarge},
     [](auto& i) { Load(i, Sample("empty").With(524, Long(0xFFFFFFFF))); }},
    {"an empty file", kStale, Lost(In::kPlayLists), [](auto& i) { i = CVMGInfo(); }},
    {"an empty file", kCompleted, kSaved, [](auto& i) { i = CVMGInfo(); }},
    {"half loaded", kStale, Lost(In::kManufacturers, Of::kManufacturers, 0),
     [](auto& i) { Load(i, Sample("mixed_full"), 0x21); }},
    {"half loaded", kCompleted, kSaved, [](auto& i) { Load(i, Sample("mixed_full"), 0x21); }},
    {"empty VOB", kCompleted, Lost(In::kMovie, Of::kMovieVobs, 1),
     [](auto& i) { Vob(i, 1).GetTimeMapTable().Clear(); }},
    {"empty group", kCompleted, Lost(In::kStill, Of::kStillGroups, 0),
     [](auto& i) { i.GetStillAVFileTable().GetStillAVFile().InsertNode(0); }},
    {"empty audio group", kCompleted, Lost(In::kStill, Of::kAudioGroups, 3),
     [](auto& i) { i.GetStillAVFileTable().GetAdditionalAFile().AddNode(); }},
    {"blocks switched off", kCompleted, kSaved,
     [](auto& i) { Vob(i, 4).GetHeader().VOB_TY[1] = 0; }},
    {"short with a block", kCompleted, Lost(In::kOriginalChain, Of::kCells, 0),
     [](auto& i) { Cell(i).AddNode(CELL_ENTRY_LONG)->EP_TY = 0x3F; }},
    {"long without block", kCompleted, kSaved,
     [](auto& i) { Cell(i).AddNode(CELL_ENTRY_SHORT)->EP_TY = 0x40; }},
    {"another kind of cell", kStale, Lost(In::kOriginalChain, Of::kCells, 0),
     [](auto& i) { Cell(i).GetHeader().C_TY = 0x20; }},
    {"texts past 16 bits", kCompleted, Lost(In::kTexts, Of::kTextItems, 0),
     [](auto& i) { AddTexts(Set(i, 0), 255); }},
    {"a set of 64 KiB", kCompleted, Lost(In::kTexts, Of::kTextItems, 6),
     [](auto& i) { AddTexts(Set(i, 6), 254); }},
    {"a text without bytes", kCompleted, Lost(In::kTexts, Of::kTextItems, 0),
     [](auto& i) { Set(i, 0).AddNode()->length = 5; }},
    {"a header without items", kCompleted, kSaved,
     [](auto& i) { (i.GetTextDataMgr().Clear(), i.GetTextDataMgr().SetCharSet(9)); }},
    {"a large last item", kCompleted, kSaved,
     [](auto& i) { AddLargeManufacturer(i.GetMNFInfoTable()); }},
    {"an item past 16 bits", kCompleted, Lost(In::kManufacturers, Of::kManufacturers, 3),
     [](auto& i) { (AddLargeManufacturer(i.GetMNFInfoTable()), i.GetMNFInfoTable().AddNode()); }},
};

TEST(Saving, RefusesWhatWouldNotReadBackEqualAndNothingElse) {
  const TemporaryFolder folder;
  for (const auto& edit : kEdits) {
    SCOPED_TRACE(testing::Message() << edit.what << (edit.completed ? "" : ", stale"));
    const fs::path path = folder / "saved.ifo";
    std::ofstream(path) << "what was there";
    CVMGInfo info;
    ASSERT_TRUE(Load(info, Sample("mixed_full")));
    edit.edit(info);
    if (edit.completed) info.AutoComplete();
    Bytes image(edit.failure.kind == FailureKind::kTooLarge ? 0 : info.GetDataSize());
    if (!image.empty()) info.GetData(image.data());
    const bool saves = edit.failure == kSaved;
    EXPECT_EQ(info.SaveToFile(path), saves);
    EXPECT_EQ(info.GetFailure(), edit.failure) << Describe(info.GetFailure());
    EXPECT_EQ(ReadFile(path), saves ? image : Text("what was there", 14));
    unsigned long size = 0;
    unsigned char* const data = info.SaveToMemory(&size);
    EXPECT_EQ(data != nullptr, saves);
    EXPECT_EQ(info.GetFailure(), edit.failure);
    if (data != nullptr) {
      EXPECT_EQ(Bytes(data, data + size), image);
    }
    info.FreeData(data);
    const Bytes before = image;
    if (!image.empty()) info.GetData(image.data());
    EXPECT_EQ(image, before) << "saving changed the object";
  }
}

}  // namespace
}  // namespace VESKA
