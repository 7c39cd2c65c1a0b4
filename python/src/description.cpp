#include "description.h"

#include <cstring>

#include "making.h"

namespace veska_python {
namespace {

using namespace VESKA;

// The types, those first that stand in others.

const Type& PlayListType() {
  static const Type type = Plain<tag_PL_SRP>("PlayList", "A play list.");
  return type;
}

bool MovePlayList(void* table, int from, int to) {
  auto& lists = At<CPlayListSRPTable>(table);
  const int step = from < to ? 1 : -1;
  for (; from != to; from += step) {
    if (!lists.SwapNode(from, from + step)) return false;
  }
  return true;
}

const Type& PlayListsType() {
  static const Type type = [] {
    Type made = WithHeader<CPlayListSRPTable>("PlayLists", "The play lists.");
    List lists = ListOf<Nodes, CPlayListSRPTable>("lists", kByte);
    HasItems<tag_PL_SRP, PlayListType>(lists);
    lists.move = MovePlayList;
    made.lists = {lists};
    return made;
  }();
  return type;
}

const Type& HeaderType() {
  static const Type type = [] {
    Type made{"Header", "The header of the file."};
    HasFields<CVMGI_MAT>(made, kHeader);
    made.equal = [](const void* a, const void* b) {
      return At<CVMGI_MAT>(a).GetHeader() == At<CVMGI_MAT>(b).GetHeader();
    };
    return made;
  }();
  return type;
}

const Type& MovieStreamType() {
  static const Type type = Plain<tag_M_VOB_STI>("MovieStream", "The attributes of a movie stream.");
  return type;
}

const Type& TimeEntryType() {
  static const Type type = Plain<tag_TM_ENT>("TimeEntry", "A time entry of a time map.");
  return type;
}

const Type& VobuEntryType() {
  static const Type type = Plain<tag_VOBU_ENT>("VobuEntry", "A VOBU entry of a time map.");
  return type;
}

const Type& TimeMapType() {
  static const Type type = [] {
    Type made = WithHeader<CTimeMapTable>("TimeMap", "The time map of a movie VOB.");
    List times = ListOf<Times, CTimeMapTable>("times", kWord);
    HasItems<tag_TM_ENT, TimeEntryType>(times);
    List vobus = ListOf<Vobus, CTimeMapTable>("vobus", kWord);
    HasItems<tag_VOBU_ENT, VobuEntryType>(vobus);
    made.lists = {times, vobus};
    made.sums = {{"pack_count", [](void* map) { return At<CTimeMapTable>(map).GetPackCount(); }},
                 {"field_count", [](void* map) { return At<CTimeMapTable>(map).GetFieldCount(); }}};
    made.has_bitrate = true;
    return made;
  }();
  return type;
}

const Type& SeamlessType() {
  static const Type type = Plain<tag_SMLI>("SeamlessBlock", "The seamless block of a movie VOB.");
  return type;
}

const Type& AudioGapType() {
  static const Type type = Plain<tag_AGAPI>("AudioGapBlock", "The audio gap block of a movie VOB.");
  return type;
}

const Type& VobType() {
  static const Type type = [] {
    Type made = WithHeader<CMovieVOB>("MovieVob", "A movie VOB.");
    made.parts = {{"seamless_block", SeamlessType,
                   [](void* vob) -> void* { return &At<CMovieVOB>(vob).GetSeamlessInfo(); },
                   [](void* vob) { return At<CMovieVOB>(vob).GetHeader().HasSeamlessInfo(); }},
                  {"audio_gap_block", AudioGapType,
                   [](void* vob) -> void* { return &At<CMovieVOB>(vob).GetAudioGaps(); },
                   [](void* vob) { return At<CMovieVOB>(vob).GetHeader().HasAudioGaps(); }},
                  {"time_map", TimeMapType,
                   [](void* vob) -> void* { return &At<CMovieVOB>(vob).GetTimeMapTable(); }}};
    return made;
  }();
  return type;
}

const Type& MovieType() {
  static const Type type = [] {
    using Table = CMovieAVFileTable;
    Type made = WithHeader<Table>("Movie", "The movie material.");
    List streams = ListOf<Streams, Table>("streams", kByte);
    HasItems<tag_M_VOB_STI, MovieStreamType>(streams);
    List vobs = ListOf<Nodes, Table>(
        "vobs", kWord, [](auto& table) -> auto& { return table.GetMovieAVFile(); });
    HasItems<tag_M_VOBI_ITEM, VobType>(
        vobs, [](auto& item) -> auto& { return item.M_VOBI; });
    made.lists = {streams, vobs};
    return made;
  }();
  return type;
}

const Type& StillStreamType() {
  static const Type type =
      Plain<tag_S_VOB_STI>("StillStream", "The attributes of a still picture stream.");
  return type;
}

const Type& StillEntryType() {
  static const Type type = [] {
    Type made{"StillEntry", "A still VOB of a group. Which fields it has depends on its type."};
    made.record = [](void* address) -> Type::Bytes {
      return {kStillEntryFields[At<tag_S_VOB_ENT>(address).Form()],
              static_cast<unsigned char*>(address)};
    };
    for (const auto& form : kStillEntryFields) {
      for (const Field& field : form) {
        const auto same = [&](const Field& one) { return std::strcmp(one.name, field.name) == 0; };
        if (std::none_of(made.fields.begin(), made.fields.end(), same))
          made.fields.push_back(field);
      }
    }
    made.has_forms = true;
    made.equal = Equal<tag_S_VOB_ENT>;
    return made;
  }();
  return type;
}

const Type& StillGroupType() {
  static const Type type = [] {
    Type made = WithHeader<CStillVOG>("StillGroup", "A group of still VOBs.");
    List entries = ListOf<Nodes, CStillVOG>("entries", kByte);
    HasItems<tag_S_VOB_ENT, StillEntryType>(entries);
    made.lists = {entries};
    made.sums = {{"pack_count", [](void* group) { return At<CStillVOG>(group).GetPackCount(); }}};
    return made;
  }();
  return type;
}

const Type& AudioStreamType() {
  static const Type type =
      Plain<tag_S_A_ATR>("AudioStream", "The attributes of an additional audio stream.");
  return type;
}

const Type& AudioEntryType() {
  static const Type type = Plain<tag_AA_ENT>("AudioEntry", "An entry of an audio group.");
  return type;
}

const Type& AudioGroupType() {
  static const Type type = [] {
    Type made = WithHeader<CStillAAG>("AudioGroup", "A group of additional audio.");
    List entries = ListOf<Nodes, CStillAAG>("entries", kByte);
    HasItems<tag_AA_ENT, AudioEntryType>(entries);
    made.lists = {entries};
    made.sums = {{"pack_count", [](void* group) { return At<CStillAAG>(group).GetPackCount(); }}};
    return made;
  }();
  return type;
}

const Type& StillType() {
  static const Type type = [] {
    using Table = CStillAVFileTable;
    Type made = WithHeader<Table>("Still", "The still pictures and their audio.");
    List streams = ListOf<StillStreams, Table>("streams", kByte);
    HasItems<tag_S_VOB_STI, StillStreamType>(streams);
    List groups = ListOf<Nodes, Table>(
        "groups", kWord, [](auto& table) -> auto& { return table.GetStillAVFile(); });
    HasItems<tag_S_VOGI_ITEM, StillGroupType>(
        groups, [](auto& item) -> auto& { return item.S_VOGI; });
    List audio_streams = ListOf<AudioStreams, Table>("audio_streams", kByte);
    HasItems<tag_S_A_ATR, AudioStreamType>(audio_streams);
    List audio_groups = ListOf<Nodes, Table>(
        "audio_groups", kWord, [](auto& table) -> auto& { return table.GetAdditionalAFile(); });
    HasItems<tag_S_AAGI_ITEM, AudioGroupType>(
        audio_groups, [](auto& item) -> auto& { return item.S_AAGI; });
    made.lists = {streams, groups, audio_streams, audio_groups};
    return made;
  }();
  return type;
}

const Type& TextType() {
  static const Type type = [] {
    Type made = Plain<tag_IT_TXT>("TextItem", "A text of a text set.");
    made.blocks = {{"text", 0, 0xFF,
                    [](void* item) {
                      const auto& text = At<tag_IT_TXT>(item);
                      return std::optional(std::span<const unsigned char>(text.text, text.length));
                    },
                    [](void* set, int i, void* item, std::span<const unsigned char> bytes) {
                      tag_IT_TXT text = At<tag_IT_TXT>(item);
                      text.length = static_cast<std::uint8_t>(bytes.size());
                      text.text = const_cast<unsigned char*>(bytes.data());
                      At<CTextSet>(set).SetNode(i, text);
                    }}};
    return made;
  }();
  return type;
}

const Type& TextSetType() {
  static const Type type = [] {
    Type made{"TextSet", "The texts of an item."};
    List texts = ListOf<Nodes, CTextSet>("texts", kWord);
    HasItems<tag_IT_TXT, TextType>(texts);
    texts.copy = [](void* set, int i, void*, const void* from) {
      At<CTextSet>(set).SetNode(i, At<tag_IT_TXT>(from));
    };
    made.lists = {texts};
    made.equal = Equal<CTextSet>;
    return made;
  }();
  return type;
}

const Type& TextsType() {
  static const Type type = [] {
    Type made = WithHeader<CTextDataMgr>("Texts", "The text data.");
    List sets = ListOf<Nodes, CTextDataMgr>("sets", kWord);
    HasItems<tag_IT_TXT_ITEM, TextSetType>(
        sets, [](auto& item) -> auto& { return item.IT_TXT; });
    made.lists = {sets};
    return made;
  }();
  return type;
}

const Type& ManufacturerType() {
  static const Type type = [] {
    using Maker = tag_A_MNFI_ITEM;
    Type made{"Manufacturer", "What a manufacturer left on the disc."};
    HasFields<Maker>(
        made, [](auto& item) -> auto& { return item.A_MNFI; });
    made.blocks = {{"data", 0, 0xFFFFFFFF,
                    [](void* item) {
                      const tag_A_MNFI& maker = At<Maker>(item).A_MNFI;
                      return std::optional(
                          std::span<const unsigned char>(maker.MNF_DATA, maker.MNF_DATA_SZ));
                    },
                    [](void* table, int i, void* item, std::span<const unsigned char> bytes) {
                      tag_A_MNFI maker = At<Maker>(item).A_MNFI;
                      maker.MNF_DATA_SZ = static_cast<std::uint32_t>(bytes.size());
                      maker.MNF_DATA = const_cast<unsigned char*>(bytes.data());
                      At<CMNFInfoTable>(table).SetNode(i, maker);
                    }}};
    made.equal = [](const void* a, const void* b) {
      return At<Maker>(a).A_MNFI == At<Maker>(b).A_MNFI;
    };
    return made;
  }();
  return type;
}

const Type& ManufacturersType() {
  static const Type type = [] {
    Type made = WithHeader<CMNFInfoTable>("Manufacturers", "The manufacturers' data.");
    List items = ListOf<Nodes, CMNFInfoTable>("items", kWord);
    HasItems<tag_A_MNFI_ITEM, ManufacturerType>(items);
    items.copy = [](void* table, int i, void*, const void* from) {
      At<CMNFInfoTable>(table).SetNode(i, At<tag_A_MNFI_ITEM>(from).A_MNFI);
    };
    made.lists = {items};
    return made;
  }();
  return type;
}

}  // namespace

const Type& ChainType();
const Type& UserChainsType();

const Type& FileType() {
  static const Type type = [] {
    Type made{"File", "A management file."};
    made.parts = {
        {"header", HeaderType, [](void* file) -> void* { return &At<CVMGInfo>(file).GetMAT(); }},
        {"play_lists", PlayListsType,
         [](void* file) -> void* { return &At<CVMGInfo>(file).GetMAT().GetPlayListTable(); },
         nullptr, true},
        {"movie", MovieType,
         [](void* file) -> void* { return &At<CVMGInfo>(file).GetMovieAVFileTable(); }},
        {"still", StillType,
         [](void* file) -> void* { return &At<CVMGInfo>(file).GetStillAVFileTable(); }},
        {"original_chain", ChainType,
         [](void* file) -> void* { return &At<CVMGInfo>(file).GetOriginalPGC(); }},
        {"user_chains", UserChainsType,
         [](void* file) -> void* { return &At<CVMGInfo>(file).GetUserPGCTable(); }, nullptr, true,
         true},
        {"texts", TextsType,
         [](void* file) -> void* { return &At<CVMGInfo>(file).GetTextDataMgr(); }, nullptr, true},
        {"manufacturers", ManufacturersType,
         [](void* file) -> void* { return &At<CVMGInfo>(file).GetMNFInfoTable(); }, nullptr, true}};
    made.equal = Equal<CVMGInfo>;
    return made;
  }();
  return type;
}

namespace {

void Collect(const Type& type, std::vector<const Type*>& all) {
  if (std::find(all.begin(), all.end(), &type) != all.end()) return;
  for (const Part& part : type.parts) Collect(part.type(), all);
  for (const List& list : type.lists) {
    for (const Type* item : list.types) Collect(*item, all);
  }
  all.push_back(&type);
}

}  // namespace

std::vector<const Type*> AllTypes() {
  std::vector<const Type*> all;
  Collect(FileType(), all);
  all.pop_back();  // the file itself
  return all;
}

}  // namespace veska_python
