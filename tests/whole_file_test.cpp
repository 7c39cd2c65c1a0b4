// Whole files: the samples, the ways to name a file, and what is refused to be saved.
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>

#include "image_builder.h"

namespace VESKA {
namespace {

namespace fs = std::filesystem;

/// A new folder, removed with all that is in it.
class Folder {
 public:
  Folder()
      : path_(fs::temp_directory_path() / ("veska-" + std::to_string(std::random_device()()))) {
    fs::create_directory(path_);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder() { fs::remove_all(path_); }
  fs::path operator/(const fs::path& name) const { return path_ / name; }

 private:
  fs::path path_;
};

std::vector<unsigned short> Utf16(const std::u16string& text) {
  std::vector<unsigned short> name(text.begin(), text.end());
  name.push_back(0);
  return name;
}

Bytes BytesOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(file), {});
}

/// What the tables hold besides derived fields and the kinds of the cells.
Bytes Contents(CVMGInfo& info) {
  Bytes all = Written(info).Part(512, 300);
  CMovieAVFile& vobs = info.GetMovieAVFileTable().GetMovieAVFile();
  for (int i = 0; i < vobs.GetCount(); ++i) all += Written(vobs[i]->M_VOBI);
  CStillAVFile& groups = info.GetStillAVFileTable().GetStillAVFile();
  for (int i = 0; i < groups.GetCount(); ++i) all += Written(groups[i]->S_VOGI);
  CAdditionalAFile& audio = info.GetStillAVFileTable().GetAdditionalAFile();
  for (int i = 0; i < audio.GetCount(); ++i) all += Written(audio[i]->S_AAGI);
  const auto add_chain = [&all](CPGCInfo& chain) {
    for (int i = 0; i < chain.GetPGCount(); ++i) all += MemoryOf(*chain.GetPGNode(i));
    for (int i = 0; i < chain.GetCellCount(); ++i) {
      const Bytes cell = Written(*chain.GetCellNode(i)->CI);
      all += cell.With(1, Byte(cell[1] & 0x1FU));
    }
  };
  add_chain(info.GetOriginalPGC());
  CUserPGCTable& user_chains = info.GetUserPGCTable();
  for (int i = 0; i < user_chains.GetCount(); ++i) add_chain(user_chains[i]->UD_PGCI);
  CTextDataMgr& texts = info.GetTextDataMgr();
  for (int i = 0; i < texts.GetCount(); ++i) all += Written(texts[i]->IT_TXT);
  CMNFInfoTable& makers = info.GetMNFInfoTable();
  for (int i = 0; i < makers.GetCount(); ++i) {
    const tag_A_MNFI maker = makers[i]->A_MNFI;
    all += MemoryOf(maker).Part(0, 37) + Bytes(maker.MNF_DATA, maker.MNF_DATA + maker.MNF_DATA_SZ);
  }
  return all;
}

TEST(Samples, ThoseInCanonicalFormComeBackByteForByte) {
  const Folder folder;
  for (const char* name : {"mixed_full", "movie_recorder", "still_camera", "empty"}) {
    SCOPED_TRACE(name);
    const Bytes image = Sample(name);
    ASSERT_GE(image.size(), 540U);
    CVMGInfo info;
    ASSERT_TRUE(info.LoadFromFile(std::string(VESKA_SAMPLES) + "/" + name + ".ifo", 0x3B));
    EXPECT_EQ(Written(info), image);
    EXPECT_EQ(Completed(info), image);
    ASSERT_TRUE(info.SaveToFile(folder / name));
    EXPECT_EQ(BytesOf(folder / name), image);

    CVMGInfo trusting;
    Bytes copy = image;
    ASSERT_TRUE(trusting.LoadFromMemory(copy.data(), 0x3B));
    EXPECT_TRUE(trusting == info);
  }
}

TEST(Samples, AnotherLayoutIsLoadedAndSavedInCanonicalForm) {
  const Bytes image = Sample("odd_layout");
  CVMGInfo info;
  ASSERT_TRUE(Load(info, image));
  const Bytes contents = Contents(info);
  const Bytes canonical = Completed(info);
  EXPECT_EQ(Contents(info), contents);
  EXPECT_EQ(canonical.size(), 5840U);
  EXPECT_EQ(canonical.Part(0, 12), image.Part(0, 12));
  const std::pair<std::size_t, unsigned> kAddresses[] = {{12, 5839},  {28, 811},   {256, 812},
                                                         {260, 1251}, {304, 1588}, {308, 3384},
                                                         {352, 5628}, {356, 5722}};
  for (const auto& [offset, address] : kAddresses) {
    EXPECT_EQ(canonical.Part(offset, 4), Long(address)) << offset;
  }
  CVMGInfo again;
  ASSERT_TRUE(Load(again, canonical));
  EXPECT_TRUE(again == info);
  EXPECT_EQ(Completed(again), canonical);
}

TEST(FileNames, AreUtf16OrWhatThePlatformTakes) {
  const Folder folder;
  CVMGInfo info;
  ASSERT_TRUE(Load(info, Sample("still_camera")));
  const std::pair<const char16_t*, const char*> kNames[] = {
      {u"plain.ifo", "plain.ifo"},
      {u"\u00FCber.ifo",
       "\xC3\xBC"
       "ber.ifo"},
      {u"\u9332\u753B.ifo", "\xE9\x8C\xB2\xE7\x94\xBB.ifo"},
      {u"\U0001F4C0.ifo", "\xF0\x9F\x93\x80.ifo"}};
  for (const auto& [utf16, utf8] : kNames) {
    SCOPED_TRACE(utf8);
    const auto name = Utf16((folder / utf16).u16string());
    ASSERT_TRUE(info.SaveToFile(name.data()));
#ifndef _WIN32
    EXPECT_TRUE(fs::exists(folder / utf8));
#endif
    CVMGInfo by_utf16, by_path;
    EXPECT_TRUE(by_utf16.LoadFromFile(name.data(), 0x3B));
    EXPECT_TRUE(by_path.LoadFromFile(folder / utf16, 0x3B));
    EXPECT_TRUE(by_utf16 == info && by_path == info);
  }
#ifndef _WIN32
  const fs::path not_utf8 = folder / "\xFF\xFEname.ifo";
  EXPECT_TRUE(info.SaveToFile(not_utf8));
  EXPECT_TRUE(info.LoadFromFile(not_utf8, 0x3B));
#endif
}

TEST(FileNames, ThatNameNoFileAreRefused) {
  const Folder folder;
  CVMGInfo info;
  ASSERT_TRUE(Load(info, Sample("still_camera")));
  const CVMGInfo before = info;
  std::vector<std::u16string> names = {u"", (folder / "").u16string(),
                                       (folder / "no" / "such").u16string()};
#ifndef _WIN32
  for (const std::u16string bad : {u"\xD83D", u"\xDCC0", u"\xDCC0\xD83D", u"\xD83Dx"}) {
    names.push_back((folder / "x").u16string() + bad);
  }
#endif
  for (const std::u16string& name : names) {
    EXPECT_FALSE(info.LoadFromFile(Utf16(name).data(), 0x3B));
    EXPECT_FALSE(info.SaveToFile(Utf16(name).data()));
  }
  const unsigned short* null = nullptr;
  EXPECT_FALSE(info.LoadFromFile(null, 0x3B));
  EXPECT_FALSE(info.SaveToFile(null));
  EXPECT_EQ(Written(info).size(), before.GetDataSize());
  EXPECT_TRUE(fs::is_empty(folder / ""));
}

/// Gives a text set one more record of `length` bytes.
void AddText(CTextSet& set, std::size_t length) {
  Bytes text = Ramp(length);
  set.AddNode();
  set.SetNode(set.GetCount() - 1, {1, static_cast<std::uint8_t>(length), text.data()});
}

void AddManufacturer(CMNFInfoTable& table, std::size_t size) {
  Bytes data = Ramp(size);
  tag_A_MNFI record{};
  record.MNF_DATA = data.data();
  record.MNF_DATA_SZ = static_cast<std::uint32_t>(size);
  table.AddNode();
  table.SetNode(table.GetCount() - 1, record);
}

CMovieCell& FirstCell(CVMGInfo& info) {
  return static_cast<CMovieCell&>(*info.GetOriginalPGC().GetCellNode(0)->CI);
}
CMovieAVFile& VOBs(CVMGInfo& info) { return info.GetMovieAVFileTable().GetMovieAVFile(); }

struct Edit {
  const char* what;
  bool completed, saved;
  std::function<void(CVMGInfo&)> edit;
};
const Edit kEdits[] = {
    {"nothing", false, true, [](CVMGInfo&) {}},
    {"no identifier", false, true, [](CVMGInfo& i) { i.GetMAT().GetHeader().VMG_ID[0] = 0; }},
    {"a play list", true, true, [](CVMGInfo& i) { i.GetMAT().GetPlayListTable().AddNode(); }},
    {"a stale count", false, false, [](CVMGInfo& i) { i.GetMAT().GetPlayListTable().AddNode(); }},
    {"fewer than counted", false, false,
     [](CVMGInfo& i) { i.GetMovieAVFileTable().DeleteStreamNode(0); }},
    {"stale cells", false, false, [](CVMGInfo& i) { i.GetOriginalPGC().DeleteCellNode(3); }},
    {"a stale size", false, false,
     [](CVMGInfo& i) { VOBs(i)[2]->M_VOBI.GetHeader().VOB_TY[1] = 0; }},
    {"another address", false, false,
     [](CVMGInfo& i) { i.GetMAT().GetHeader().S_AVFIT_SA = i.GetMAT().GetHeader().M_AVFIT_SA; }},
    {"an address past the end", false, false,
     [](CVMGInfo& i) { i.GetMAT().GetHeader().ORG_PGCI_SA = 0xFFFFFFFF; }},
    {"never completed", false, false, [](CVMGInfo& i) { i = CVMGInfo(); }},
    {"an empty file", true, true, [](CVMGInfo& i) { i = CVMGInfo(); }},
    {"tables left out", true, true, [](CVMGInfo& i) { Load(i, Sample("mixed_full"), 0); }},
    {"tables left out, stale", false, false, [](CVMGInfo& i) { Load(i, Sample("mixed_full"), 0); }},
    {"an empty VOB", true, false, [](CVMGInfo& i) { VOBs(i).AddNode(); }},
    {"an emptied VOB", true, false,
     [](CVMGInfo& i) {
       VOBs(i)[0]->M_VOBI.GetTimeMapTable().ClearTimeEntrys();
       VOBs(i)[0]->M_VOBI.GetTimeMapTable().ClearVobuEntrys();
     }},
    {"an empty still group", true, false,
     [](CVMGInfo& i) { i.GetStillAVFileTable().GetStillAVFile().InsertNode(0); }},
    {"an empty audio group", true, false,
     [](CVMGInfo& i) { i.GetStillAVFileTable().GetAdditionalAFile().AddNode(); }},
    {"a block that is switched off", true, true,
     [](CVMGInfo& i) { VOBs(i)[4]->M_VOBI.GetHeader().VOB_TY[1] = 0; }},
    {"a block of a short entry point", true, false,
     [](CVMGInfo& i) { FirstCell(i).AddNode(CELL_ENTRY_LONG)->EP_TY = 0x3F; }},
    {"a long entry point without block", true, true,
     [](CVMGInfo& i) { FirstCell(i).AddNode(CELL_ENTRY_SHORT)->EP_TY = 0x40; }},
    {"a cell of another kind", false, false,
     [](CVMGInfo& i) { FirstCell(i).GetHeader().C_TY = 0x20; }},
    {"texts past 16 bits", true, false,
     [](CVMGInfo& i) {
       for (int n = 0; n < 256; ++n) AddText(i.GetTextDataMgr()[n / 128]->IT_TXT, 255);
     }},
    {"a text set of 64 KiB", true, false,
     [](CVMGInfo& i) {
       for (int n = 0; n < 256; ++n) AddText(i.GetTextDataMgr()[6]->IT_TXT, 254);
     }},
    {"a text without its bytes", true, false,
     [](CVMGInfo& i) { i.GetTextDataMgr()[0]->IT_TXT.AddNode()->length = 5; }},
    {"texts' character set without texts", true, true,
     [](CVMGInfo& i) {
       i.GetTextDataMgr().Clear();
       i.GetTextDataMgr().SetCharSet(9);
     }},
    {"a large last manufacturer", true, true,
     [](CVMGInfo& i) { AddManufacturer(i.GetMNFInfoTable(), 100000); }},
    {"a manufacturer past 16 bits", true, false,
     [](CVMGInfo& i) {
       AddManufacturer(i.GetMNFInfoTable(), 100000);
       i.GetMNFInfoTable().AddNode();
     }},
    {"the last manufacturer's identifier alone", true, true, [](CVMGInfo& i) {
       while (i.GetMNFInfoTable().DeleteNode(0)) {
       }
     }}};

TEST(Saving, RefusesWhatWouldNotReadBackEqualAndNothingElse) {
  const Folder folder;
  for (const Edit& edit : kEdits) {
    SCOPED_TRACE(edit.what);
    const fs::path path = folder / "saved.ifo";
    std::ofstream(path) << "what was there";
    CVMGInfo info;
    ASSERT_TRUE(Load(info, Sample("mixed_full")));
    edit.edit(info);
    if (edit.completed) info.AutoComplete();
    const Bytes image = Written(info);
    EXPECT_EQ(info.SaveToFile(path), edit.saved);
    EXPECT_EQ(BytesOf(path), edit.saved ? image : Text("what was there", 14));
    EXPECT_EQ(Written(info), image) << "saving changed the object";
  }
}

}  // namespace
}  // namespace VESKA
