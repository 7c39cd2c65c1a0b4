#include "tree/walk.h"

#include <algorithm>
#include <new>
#include <type_traits>

namespace VESKA::workshop {
namespace {

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

// The walk is one overload of Walk(to, table) for each table, the innermost ones first.

template <class Type>
void Fields(TreeVisitor& to, const Type& record, Positions positions = Positions::kByCell) {
  to.Fields(RecordOf(record), positions);
}

/// A table's header. One that the host cannot write is set by parsing it: with counts of zero it is
/// all that is read.
template <class Table>
void Header(TreeVisitor& to, Table& table) {
  auto header = table.GetHeader();
  Fields(to, header);
  if (!to.Builds()) return;
  if constexpr (std::is_const_v<std::remove_reference_t<decltype(table.GetHeader())>>) {
    Bytes bytes = FileOrder(RecordOf(header));
    if (!table.Parse(bytes.data())) throw std::bad_alloc();
  } else {
    table.GetHeader() = header;
  }
}

/// The header of a table that the file leaves out when it is empty.
template <class Table, class WalkList>
void HeaderAndList(TreeVisitor& to, Table& table, const char* list, const WalkList& walk_list) {
  static constexpr unsigned char kZero[sizeof table.GetHeader()] = {};
  if (to.Builds() || !table.IsEmpty()) {
    Header(to, table);
  } else {
    auto header = table.GetHeader();
    std::memcpy(&header, kZero, sizeof header);
    Fields(to, header);
  }
  walk_list();
  const bool zero = std::memcmp(&table.GetHeader(), kZero, sizeof kZero) == 0;
  to.Expect(zero || !table.IsEmpty(), list,
            "at least one item, or zeros in what the table holds beside: a table without items "
            "takes no bytes in the file");
}

/// A list of plain records, to which `add` adds one.
template <class Range, class Add>
void Records(TreeVisitor& to, const char* name, int limit, const Range& records, const Add& add) {
  to.List(name, limit, static_cast<int>(records.size()),
          [&](int i) { Fields(to, to.Builds() ? Added(add()) : records.begin()[i]); });
}

/// A list of items that the file finds by an address: `walk` leads through the table of one.
template <class Table, class WalkItem>
void Items(TreeVisitor& to, const char* name, int limit, Table& table, const WalkItem& walk) {
  to.List(name, limit, table.GetCount(),
          [&](int i) { walk(to.Builds() ? Added(table.AddNode()) : *table.GetNode(i)); });
}

/// An item without bytes in the file cannot be found again.
template <class Table>
void ExpectEntries(TreeVisitor& to, const Table& table, const char* name) {
  to.Expect(!table.IsEmpty(), name, "at least one entry: without any, the file cannot hold it");
}

void Walk(TreeVisitor& to, CPlayListSRPTable& table) {
  Header(to, table);
  Records(to, "lists", kByte, table.PlayLists(), [&] { return table.AddNode(); });
}

void Walk(TreeVisitor& to, CTimeMapTable& map) {
  Header(to, map);
  Records(to, "times", kWord, map.TimeEntries(), [&] { return map.AddTimeENNode(); });
  Records(to, "vobus", kWord, map.VobuEntries(), [&] { return map.AddVobuENNode(); });
  ExpectEntries(to, map, "vobus");
}

void Walk(TreeVisitor& to, CMovieVOB& vob) {
  Header(to, vob);
  to.Optional(vob.GetHeader().HasSeamlessInfo(),
              [&] { to.Object("seamless_block", [&] { Fields(to, vob.GetSeamlessInfo()); }); });
  to.Optional(vob.GetHeader().HasAudioGaps(),
              [&] { to.Object("audio_gap_block", [&] { Fields(to, vob.GetAudioGaps()); }); });
  to.Object("time_map", [&] { Walk(to, vob.GetTimeMapTable()); });
}

void Walk(TreeVisitor& to, CMovieAVFileTable& table) {
  Header(to, table);
  Records(to, "streams", kByte, table.Streams(), [&] { return table.AddStreamNode(); });
  Items(to, "vobs", kWord, table.GetMovieAVFile(), [&](tag_M_VOBI_ITEM& item) {
    to.Derived("M_VOBI_SA", item.M_VOBI_SA);
    Walk(to, item.M_VOBI);
  });
}

void Walk(TreeVisitor& to, CStillVOG& group) {
  Header(to, group);
  Items(to, "entries", kByte, group, [&](tag_S_VOB_ENT& entry) {
    const std::uint8_t form = to.Form("S_VOB_ENT_TY", entry.S_VOB_ENT_TY);
    if (to.Builds()) entry.S_VOB_ENT_TY = form;
    Fields(to, entry);
  });
  ExpectEntries(to, group, "entries");
}

void Walk(TreeVisitor& to, CStillAAG& group) {
  Header(to, group);
  Items(to, "entries", kByte, group, [&](tag_AA_ENT& entry) { Fields(to, entry); });
  ExpectEntries(to, group, "entries");
}

void Walk(TreeVisitor& to, CStillAVFileTable& table) {
  Header(to, table);
  Records(to, "streams", kByte, table.VOBStreams(), [&] { return table.AddVOBStreamNode(); });
  Items(to, "groups", kWord, table.GetStillAVFile(), [&](tag_S_VOGI_ITEM& item) {
    to.Derived("S_VOGI_SA", item.S_VOGI_SA);
    Walk(to, item.S_VOGI);
  });
  Records(to, "audio_streams", kByte, table.AAStreams(), [&] { return table.AddAAStreamNode(); });
  Items(to, "audio_groups", kWord, table.GetAdditionalAFile(), [&](tag_S_AAGI_ITEM& item) {
    to.Derived("S_AAGI_SA", item.S_AAGI_SA);
    Walk(to, item.S_AAGI);
  });
}

template <class CellClass>
void EntryPoint(TreeVisitor& to, CellClass& cell, int i) {
  std::remove_pointer_t<decltype(cell.GetNode(i))> entry{};
  if (!to.Builds()) entry = *cell.GetNode(i);
  Fields(to, entry);
  Bytes block(kEntryBlockSize);
  if (entry.block != nullptr) std::copy_n(entry.block, kEntryBlockSize, block.data());
  const bool is_long = IsLongEntry(entry.EP_TY);
  to.Optional(is_long, [&] { to.Block("block", block, kEntryBlockSize, kEntryBlockSize); });
  if (!to.Builds()) return;
  auto& added = Added(cell.AddNode(is_long ? CELL_ENTRY_LONG : CELL_ENTRY_SHORT));
  entry.block = added.block;
  added = entry;
  if (is_long) std::copy(block.begin(), block.end(), entry.block);
}

template <class CellClass>
void CellOfKind(TreeVisitor& to, CellClass& cell) {
  Header(to, cell);
  to.Expect(CellKind(cell.GetHeader().C_TY) == cell.GetType(), "C_TY",
            "bits 7 to 5 that are 000 for a movie cell and not 000 for a still cell");
  to.List("entries", kWord, cell.GetCount(), [&](int i) { EntryPoint(to, cell, i); });
}

void Cell(TreeVisitor& to, CPGCInfo& chain, int i) {
  static constexpr const char* kKinds[] = {"movie", "still"};
  const tag_C_ITEM* item = to.Builds() ? nullptr : chain.GetCellNode(i);
  const int kind = to.Kind("type", kKinds, item == nullptr ? 0 : item->CI->GetType());
  if (item == nullptr) item = &Added(chain.AddCellNode(static_cast<tag_CELL_TYPE>(kind)));
  to.Derived("CI_SA", item->CI_SA);
  if (kind == CELL_MOVIE) {
    CellOfKind(to, static_cast<CMovieCell&>(*item->CI));
  } else {
    CellOfKind(to, static_cast<CStillCell&>(*item->CI));
  }
}

void Walk(TreeVisitor& to, CPGCInfo& chain, Positions positions) {
  Header(to, chain);
  to.List("programs", kByte, chain.GetPGCount(), [&](int i) {
    Fields(to, to.Builds() ? Added(chain.AddPGNode()) : *chain.GetPGNode(i), positions);
  });
  to.List("cells", kWord, chain.GetCellCount(), [&](int i) { Cell(to, chain, i); });
}

void Walk(TreeVisitor& to, CUserPGCTable& table) {
  HeaderAndList(to, table, "chains", [&] {
    Items(to, "chains", kByte, table, [&](tag_UD_PGCI_ITEM& item) {
      to.Derived("UD_PGCI_SA", item.UD_PGCI_SA);
      Walk(to, item.UD_PGCI, Positions::kBytes);
    });
  });
}

void Text(TreeVisitor& to, CTextSet& set, int i) {
  tag_IT_TXT text{};
  if (!to.Builds()) text = *set.GetNode(i);
  Fields(to, text);
  Bytes bytes(text.text, text.text + text.length);
  to.Block("text", bytes, 0, kLargestText);
  if (!to.Builds()) return;
  Added(set.AddNode());
  text.length = static_cast<std::uint8_t>(bytes.size());
  text.text = bytes.data();
  set.SetNode(set.GetCount() - 1, text);
}

void Walk(TreeVisitor& to, CTextDataMgr& texts) {
  HeaderAndList(to, texts, "sets", [&] {
    Items(to, "sets", kWord, texts, [&](tag_IT_TXT_ITEM& item) {
      to.Derived("IT_TXT_SA", item.IT_TXT_SA);
      to.Derived("IT_TXT_SZ", item.IT_TXT_SZ);
      CTextSet& set = item.IT_TXT;
      to.List("texts", kWord, set.GetCount(), [&](int i) { Text(to, set, i); });
    });
  });
}

void Manufacturer(TreeVisitor& to, CMNFInfoTable& table, int i) {
  tag_A_MNFI maker{};
  if (!to.Builds()) {
    maker = table.GetNode(i)->A_MNFI;
    to.Derived("MNFI_SA", table.GetNode(i)->MNFI_SA);
  }
  Fields(to, maker);
  Bytes data(maker.MNF_DATA, maker.MNF_DATA + maker.MNF_DATA_SZ);
  to.Block("data", data, 0, kLargestData);
  if (!to.Builds()) return;
  Added(table.AddNode());
  maker.MNF_DATA_SZ = static_cast<std::uint32_t>(data.size());
  maker.MNF_DATA = data.data();
  table.SetNode(table.GetCount() - 1, maker);
}

void Walk(TreeVisitor& to, CMNFInfoTable& table) {
  HeaderAndList(to, table, "items", [&] {
    to.List("items", kWord, table.GetCount(), [&](int i) { Manufacturer(to, table, i); });
  });
}

}  // namespace

void WalkFile(TreeVisitor& to, CVMGInfo& info) {
  to.Object("header", [&] { Header(to, info.GetMAT()); });
  to.Object("play_lists", [&] { Walk(to, info.GetMAT().GetPlayListTable()); });
  to.Object("movie", [&] { Walk(to, info.GetMovieAVFileTable()); });
  to.Object("still", [&] { Walk(to, info.GetStillAVFileTable()); });
  to.Object("original_chain", [&] { Walk(to, info.GetOriginalPGC(), Positions::kByCell); });
  to.Object("user_chains", [&] { Walk(to, info.GetUserPGCTable()); });
  to.Object("texts", [&] { Walk(to, info.GetTextDataMgr()); });
  to.Object("manufacturers", [&] { Walk(to, info.GetMNFInfoTable()); });
}

}  // namespace VESKA::workshop
