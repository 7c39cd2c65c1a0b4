#include "tree.h"

#include <algorithm>
#include <new>
#include <type_traits>

#include "field_text.h"

namespace veska_tool {
namespace {

using namespace VESKA;

// What the format's count fields hold.
constexpr int kByte = 0xFF;
constexpr int kWord = 0xFFFF;

constexpr std::size_t kLargestText = 0xFF;
constexpr std::size_t kLargestData = 0xFFFFFFFF;

/// The bytes of a header in file order.
Bytes FileOrder(const Record& record) {
  Bytes bytes(record.bytes,
              record.bytes + record.fields.back().offset + record.fields.back().width);
  for (const Field& field : record.fields) {
    if (!IsNumber(field)) continue;
    SetBigEndian(&bytes[field.offset], field.width, GetNumber(record, field));
  }
  return bytes;
}

template <class Node>
Node& Added(Node* node) {
  if (node == nullptr) throw std::bad_alloc();
  return *node;
}

class Walk {
 public:
  Walk(TreeWalker& walker, CVMGInfo& info) : to_(walker), info_(info) {}

  void File() {
    to_.Object("header", [this] { Header(info_.GetMAT()); });
    to_.Object("play_lists", [this] { PlayLists(info_.GetMAT().GetPlayListTable()); });
    to_.Object("movie", [this] { Movie(info_.GetMovieAVFileTable()); });
    to_.Object("still", [this] { Still(info_.GetStillAVFileTable()); });
    to_.Object("original_chain", [this] { Chain(info_.GetOriginalPGC(), Positions::kByCell); });
    to_.Object("user_chains", [this] { UserChains(info_.GetUserPGCTable()); });
    to_.Object("texts", [this] { Texts(info_.GetTextDataMgr()); });
    to_.Object("manufacturers", [this] { Manufacturers(info_.GetMNFInfoTable()); });
  }

 private:
  template <class Type>
  void Fields(Type& record, Positions positions = Positions::kByCell) {
    to_.Fields(RecordOf(record), positions);
  }

  /// A table's header. One that the host cannot write is set by parsing it: with counts of zero it
  /// is all that is read.
  template <class Table>
  void Header(Table& table) {
    auto header = table.GetHeader();
    Fields(header);
    if (!to_.Builds()) return;
    if constexpr (std::is_const_v<std::remove_reference_t<decltype(table.GetHeader())>>) {
      Bytes bytes = FileOrder(RecordOf(header));
      if (!table.Parse(bytes.data())) throw std::bad_alloc();
    } else {
      table.GetHeader() = header;
    }
  }

  /// The header of a table that the file leaves out when it is empty.
  template <class Table, class WalkList>
  void HeaderAndList(Table& table, const char* list, WalkList walk_list) {
    static constexpr unsigned char kZero[sizeof table.GetHeader()] = {};
    if (to_.Builds() || !table.IsEmpty()) {
      Header(table);
    } else {
      auto header = table.GetHeader();
      std::memcpy(&header, kZero, sizeof header);
      Fields(header);
    }
    walk_list();
    const bool zero = std::memcmp(&table.GetHeader(), kZero, sizeof kZero) == 0;
    to_.Expect(zero || !table.IsEmpty(), list,
               "at least one item, or zeros in what the table holds beside: a table without items "
               "takes no bytes in the file");
  }

  /// A list of plain records.
  template <class Get, class Add>
  void Records(const char* name, int limit, int count, Get get, Add add) {
    to_.List(name, limit, count, [&](int i) { Fields(to_.Builds() ? Added(add()) : *get(i)); });
  }

  /// A list of items that the file finds by an address: `walk` leads through the table of one.
  template <class Table, class WalkItem>
  void Items(const char* name, int limit, Table& table, WalkItem walk) {
    to_.List(name, limit, table.GetCount(),
             [&](int i) { walk(to_.Builds() ? Added(table.AddNode()) : *table.GetNode(i)); });
  }

  /// An item without bytes in the file cannot be found again.
  template <class Table>
  void ExpectEntries(const Table& table, const char* name) {
    to_.Expect(!table.IsEmpty(), name, "at least one entry: without any, the file cannot hold it");
  }

  void PlayLists(CPlayListSRPTable& table) {
    Header(table);
    Records(
        "lists", kByte, table.GetCount(), [&](int i) { return table.GetNode(i); },
        [&] { return table.AddNode(); });
  }

  void Movie(CMovieAVFileTable& table) {
    Header(table);
    Records(
        "streams", kByte, table.GetStreamCount(), [&](int i) { return table.GetStreamNode(i); },
        [&] { return table.AddStreamNode(); });
    Items("vobs", kWord, table.GetMovieAVFile(), [this](tag_M_VOBI_ITEM& item) {
      to_.Derived("M_VOBI_SA", item.M_VOBI_SA);
      Vob(item.M_VOBI);
    });
  }

  void Vob(CMovieVOB& vob) {
    Header(vob);
    to_.Optional(vob.GetHeader().HasSeamlessInfo(),
                 [&] { to_.Object("seamless_block", [&] { Fields(vob.GetSeamlessInfo()); }); });
    to_.Optional(vob.GetHeader().HasAudioGaps(),
                 [&] { to_.Object("audio_gap_block", [&] { Fields(vob.GetAudioGaps()); }); });
    to_.Object("time_map", [&] { TimeMap(vob.GetTimeMapTable()); });
  }

  void TimeMap(CTimeMapTable& map) {
    Header(map);
    Records(
        "times", kWord, map.GetTimeENCount(), [&](int i) { return map.GetTimeENNode(i); },
        [&] { return map.AddTimeENNode(); });
    Records(
        "vobus", kWord, map.GetVobuENCount(), [&](int i) { return map.GetVobuENNode(i); },
        [&] { return map.AddVobuENNode(); });
    ExpectEntries(map, "vobus");
  }

  void Still(CStillAVFileTable& table) {
    Header(table);
    Records(
        "streams", kByte, table.GetVOBStreamCount(),
        [&](int i) { return table.GetVOBStreamNode(i); }, [&] { return table.AddVOBStreamNode(); });
    Items("groups", kWord, table.GetStillAVFile(), [this](tag_S_VOGI_ITEM& item) {
      to_.Derived("S_VOGI_SA", item.S_VOGI_SA);
      StillGroup(item.S_VOGI);
    });
    Records(
        "audio_streams", kByte, table.GetAAStreamCount(),
        [&](int i) { return table.GetAAStreamNode(i); }, [&] { return table.AddAAStreamNode(); });
    Items("audio_groups", kWord, table.GetAdditionalAFile(), [this](tag_S_AAGI_ITEM& item) {
      to_.Derived("S_AAGI_SA", item.S_AAGI_SA);
      AudioGroup(item.S_AAGI);
    });
  }

  void StillGroup(CStillVOG& group) {
    Header(group);
    Items("entries", kByte, group, [this](tag_S_VOB_ENT& entry) {
      entry.S_VOB_ENT_TY = to_.Form("S_VOB_ENT_TY", entry.S_VOB_ENT_TY);
      Fields(entry);
    });
    ExpectEntries(group, "entries");
  }

  void AudioGroup(CStillAAG& group) {
    Header(group);
    Items("entries", kByte, group, [this](tag_AA_ENT& entry) { Fields(entry); });
    ExpectEntries(group, "entries");
  }

  void Chain(CPGCInfo& chain, Positions positions) {
    Header(chain);
    to_.List("programs", kByte, chain.GetPGCount(), [&](int i) {
      Fields(to_.Builds() ? Added(chain.AddPGNode()) : *chain.GetPGNode(i), positions);
    });
    to_.List("cells", kWord, chain.GetCellCount(), [&](int i) { Cell(chain, i); });
  }

  void Cell(CPGCInfo& chain, int i) {
    static constexpr const char* kKinds[] = {"movie", "still"};
    const tag_C_ITEM* item = to_.Builds() ? nullptr : chain.GetCellNode(i);
    const int kind = to_.Kind("type", kKinds, item == nullptr ? 0 : item->CI->GetType());
    if (item == nullptr) item = &Added(chain.AddCellNode(static_cast<tag_CELL_TYPE>(kind)));
    to_.Derived("CI_SA", item->CI_SA);
    if (kind == CELL_MOVIE) {
      CellOfKind(static_cast<CMovieCell&>(*item->CI));
    } else {
      CellOfKind(static_cast<CStillCell&>(*item->CI));
    }
  }

  template <class CellClass>
  void CellOfKind(CellClass& cell) {
    Header(cell);
    to_.Expect(CellKind(cell.GetHeader().C_TY) == cell.GetType(), "C_TY",
               "bits 7 to 5 that are 000 for a movie cell and not 000 for a still cell");
    to_.List("entries", kWord, cell.GetCount(), [&](int i) { EntryPoint(cell, i); });
  }

  template <class CellClass>
  void EntryPoint(CellClass& cell, int i) {
    std::remove_pointer_t<decltype(cell.GetNode(i))> entry{};
    if (!to_.Builds()) entry = *cell.GetNode(i);
    Fields(entry);
    Bytes block(kEntryBlockSize);
    if (entry.block != nullptr) std::copy_n(entry.block, kEntryBlockSize, block.data());
    const bool is_long = IsLongEntry(entry.EP_TY);
    to_.Optional(is_long, [&] { to_.Block("block", block, kEntryBlockSize, kEntryBlockSize); });
    if (!to_.Builds()) return;
    auto& added = Added(cell.AddNode(is_long ? CELL_ENTRY_LONG : CELL_ENTRY_SHORT));
    entry.block = added.block;
    added = entry;
    if (is_long) std::copy(block.begin(), block.end(), entry.block);
  }

  void UserChains(CUserPGCTable& table) {
    HeaderAndList(table, "chains", [&] {
      Items("chains", kByte, table, [this](tag_UD_PGCI_ITEM& item) {
        to_.Derived("UD_PGCI_SA", item.UD_PGCI_SA);
        Chain(item.UD_PGCI, Positions::kBytes);
      });
    });
  }

  void Texts(CTextDataMgr& texts) {
    HeaderAndList(texts, "sets", [&] {
      Items("sets", kWord, texts, [this](tag_IT_TXT_ITEM& item) {
        to_.Derived("IT_TXT_SA", item.IT_TXT_SA);
        to_.Derived("IT_TXT_SZ", item.IT_TXT_SZ);
        CTextSet& set = item.IT_TXT;
        to_.List("texts", kWord, set.GetCount(), [&](int i) { Text(set, i); });
      });
    });
  }

  void Text(CTextSet& set, int i) {
    tag_IT_TXT text{};
    if (!to_.Builds()) text = *set.GetNode(i);
    Fields(text);
    Bytes bytes(text.text, text.text + text.length);
    to_.Block("text", bytes, 0, kLargestText);
    if (!to_.Builds()) return;
    Added(set.AddNode());
    text.length = static_cast<std::uint8_t>(bytes.size());
    text.text = bytes.data();
    set.SetNode(set.GetCount() - 1, text);
  }

  void Manufacturers(CMNFInfoTable& table) {
    HeaderAndList(table, "items", [&] {
      to_.List("items", kWord, table.GetCount(), [&](int i) { Manufacturer(table, i); });
    });
  }

  void Manufacturer(CMNFInfoTable& table, int i) {
    tag_A_MNFI maker{};
    if (!to_.Builds()) {
      maker = table.GetNode(i)->A_MNFI;
      to_.Derived("MNFI_SA", table.GetNode(i)->MNFI_SA);
    }
    Fields(maker);
    Bytes data(maker.MNF_DATA, maker.MNF_DATA + maker.MNF_DATA_SZ);
    to_.Block("data", data, 0, kLargestData);
    if (!to_.Builds()) return;
    Added(table.AddNode());
    maker.MNF_DATA_SZ = static_cast<std::uint32_t>(data.size());
    maker.MNF_DATA = data.data();
    table.SetNode(table.GetCount() - 1, maker);
  }

  TreeWalker& to_;
  CVMGInfo& info_;
};

}  // namespace

void WalkFile(TreeWalker& walker, CVMGInfo& info) { Walk(walker, info).File(); }

}  // namespace veska_tool
