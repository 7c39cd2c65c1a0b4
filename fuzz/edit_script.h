/// Edits of every table, driven by bytes.
#pragma once

#include <veska/veska.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <type_traits>

namespace fuzz {

/// Stops the program where something does not hold that always has to.
inline void Require(bool holds) {
  if (!holds) std::abort();
}

/// Takes bytes until there are none, and zeros from then on.
class EditScript {
 public:
  EditScript(const std::uint8_t* bytes, std::size_t size) : bytes_(bytes), left_(size) {}

  /// Performs every edit of the script.
  void Apply(VESKA::CVMGInfo& info) {
    while (left_ > 0) Edit(info);
  }

 private:
  unsigned Byte() {
    if (left_ == 0) return 0;
    --left_;
    return *bytes_++;
  }
  /// A position in a list, or one of its neighbours, which are none.
  int Position(int count) { return static_cast<int>(Byte()) % (count + 2) - 1; }
  /// One of several things.
  int Choice(int count) { return static_cast<int>(Byte()) % count; }

  template <class Record>
  void Fill(Record* record) {
    if constexpr (std::is_trivially_copyable_v<Record>) {
      auto* to = reinterpret_cast<unsigned char*>(record);
      for (std::size_t i = 0; i < VESKA::kFileSize<Record>; ++i) {
        to[i] = static_cast<unsigned char>(Byte());
      }
    }
  }
  void Fill(VESKA::tag_S_VOB_ENT* entry) {
    for (std::size_t i = 0; i < sizeof *entry; ++i) {
      reinterpret_cast<unsigned char*>(entry)[i] = static_cast<unsigned char>(Byte());
    }
  }
  void Fill(VESKA::tag_A_MNFI_ITEM*) {}

  /// Adds, inserts or deletes a record of a list of `count`.
  template <class Add, class Insert, class Delete>
  void EditList(int count, Add add, Insert insert, Delete erase) {
    const int i = Position(count);
    const bool exists = i >= 0 && i < count;
    switch (Choice(3)) {
      case 0:
        if (auto* record = add()) Fill(record);
        break;
      case 1: {
        auto* record = insert(i);
        Require(exists || record == nullptr);
        if (record != nullptr) Fill(record);
        break;
      }
      default:
        Require(erase(i) == exists);
    }
  }
  template <class Table>
  void EditNodes(Table& table) {
    EditList(
        table.GetCount(), [&] { return table.AddNode(); },
        [&](int i) { return table.InsertNode(i); }, [&](int i) { return table.DeleteNode(i); });
  }

  /// One of the items of a list, null when there is none.
  template <class Table>
  auto* Pick(Table& table) {
    return table.GetNode(table.GetCount() > 0 ? Choice(table.GetCount()) : -1);
  }

  void EditPlayLists(VESKA::CPlayListSRPTable& play_lists) {
    const int first = Position(play_lists.GetCount());
    const int second = Position(play_lists.GetCount());
    switch (Choice(3)) {
      case 0:
        play_lists.SwapNode(first, second);
        break;
      case 1:
        play_lists.DeleteNodes(first, second);
        break;
      default:
        EditNodes(play_lists);
    }
  }

  void EditMovie(VESKA::CMovieAVFileTable& movie) {
    EditList(
        movie.GetStreamCount(), [&] { return movie.AddStreamNode(); },
        [&](int i) { return movie.InsertStreamNode(i); },
        [&](int i) { return movie.DeleteStreamNode(i); });
  }
  void EditVob(VESKA::tag_M_VOBI_ITEM* item) {
    if (item == nullptr) return;
    VESKA::CTimeMapTable& map = item->M_VOBI.GetTimeMapTable();
    switch (Choice(4)) {
      case 0:
        Fill(&item->M_VOBI.GetHeader());
        Fill(&item->M_VOBI.GetSeamlessInfo());
        Fill(&item->M_VOBI.GetAudioGaps());
        break;
      case 1:
        EditList(
            map.GetTimeENCount(), [&] { return map.AddTimeENNode(); },
            [&](int i) { return map.InsertTimeENNode(i); },
            [&](int i) { return map.DeleteTimeENNode(i); });
        break;
      case 2:
        EditList(
            map.GetVobuENCount(), [&] { return map.AddVobuENNode(); },
            [&](int i) { return map.InsertVobuENNode(i); },
            [&](int i) { return map.DeleteVobuENNode(i); });
        break;
      default:
        Byte() % 2 != 0 ? map.ClearTimeEntrys() : map.ClearVobuEntrys();
    }
  }

  void EditStillStreams(VESKA::CStillAVFileTable& still) {
    if (Byte() % 2 != 0) {
      EditList(
          still.GetVOBStreamCount(), [&] { return still.AddVOBStreamNode(); },
          [&](int i) { return still.InsertVOBStreamNode(i); },
          [&](int i) { return still.DeleteVOBStreamNode(i); });
    } else {
      EditList(
          still.GetAAStreamCount(), [&] { return still.AddAAStreamNode(); },
          [&](int i) { return still.InsertAAStreamNode(i); },
          [&](int i) { return still.DeleteAAStreamNode(i); });
    }
  }
  void EditStillGroups(VESKA::CStillAVFileTable& still) {
    switch (Choice(4)) {
      case 0:
        EditNodes(still.GetStillAVFile());
        break;
      case 1:
        EditNodes(still.GetAdditionalAFile());
        break;
      case 2:
        if (auto* group = Pick(still.GetStillAVFile())) EditNodes(group->S_VOGI);
        break;
      default:
        if (auto* group = Pick(still.GetAdditionalAFile())) EditNodes(group->S_AAGI);
    }
  }

  /// Keeps the kind of entry and its `EP_TY` in step, as a host has to.
  template <class Cell>
  void EditEntries(Cell& cell) {
    using VESKA::CELL_ENTRY_LONG;
    using VESKA::CELL_ENTRY_SHORT;
    const auto type = Byte() % 2 != 0 ? CELL_ENTRY_LONG : CELL_ENTRY_SHORT;
    const auto filled = [&](auto* entry) {
      if (entry == nullptr) return entry;
      Fill(entry);
      entry->EP_TY = static_cast<std::uint8_t>(entry->EP_TY & 0x3F);
      if (type == CELL_ENTRY_LONG) {
        entry->EP_TY = static_cast<std::uint8_t>(entry->EP_TY | 0x40);
        std::memset(entry->block, static_cast<int>(Byte()), VESKA::kEntryBlockSize);
      }
      return decltype(entry){};  // it is filled already
    };
    Fill(&cell.GetHeader());
    EditList(
        cell.GetCount(), [&] { return filled(cell.AddNode(type)); },
        [&](int i) { return filled(cell.InsertNode(i, type)); },
        [&](int i) { return cell.DeleteNode(i); });
  }
  void EditCells(VESKA::CPGCInfo& chain) {
    const auto type = Byte() % 2 != 0 ? VESKA::CELL_MOVIE : VESKA::CELL_STILL;
    const int i = Position(chain.GetCellCount());
    switch (Choice(6)) {
      case 0:
      case 1:
        chain.AddCellNode(type);
        break;
      case 2:
        chain.InsertCellNode(i, type);
        break;
      case 3:
        chain.DeleteCellNode(i);
        break;
      case 4:
        chain.MoveCellNodes(i, Position(chain.GetCellCount()), Choice(5) - 2);
        break;
      default:
        if (VESKA::tag_C_ITEM* item = chain.GetCellNode(i)) {
          if (item->CI->GetType() == VESKA::CELL_MOVIE) {
            EditEntries(static_cast<VESKA::CMovieCell&>(*item->CI));
          } else {
            EditEntries(static_cast<VESKA::CStillCell&>(*item->CI));
          }
        }
    }
  }
  void EditChain(VESKA::CPGCInfo& chain) {
    switch (Choice(4)) {
      case 0:
        EditList(
            chain.GetPGCount(), [&] { return chain.AddPGNode(); },
            [&](int i) { return chain.InsertPGNode(i); },
            [&](int i) { return chain.DeletePGNode(i); });
        break;
      case 1: {
        const int first = Position(chain.GetPGCount());
        chain.MovePGNodes(first, Position(chain.GetPGCount()), Choice(5) - 2);
        const auto kind = chain.GetProgramVOBType(first);
        Require((kind == VESKA::CPGCInfo::PG_VOB_INVALID) ==
                (first < 0 || first >= chain.GetPGCount()));
        break;
      }
      default:
        EditCells(chain);
    }
  }

  void EditTexts(VESKA::CTextDataMgr& texts) {
    VESKA::tag_IT_TXT_ITEM* item = Pick(texts);
    switch (Choice(4)) {
      case 0:
        texts.SetCharSet(static_cast<unsigned char>(Byte()));
        EditNodes(texts);
        break;
      case 1:
        if (item != nullptr) EditTextList(item->IT_TXT);
        break;
      default:
        if (item != nullptr) SetText(item->IT_TXT, Position(item->IT_TXT.GetCount()));
    }
  }
  void EditTextList(VESKA::CTextSet& set) {
    const int i = Position(set.GetCount());
    const int count = set.GetCount();
    switch (Choice(3)) {
      case 0:
        Require(set.AddNode() != nullptr && set.GetCount() == count + 1);
        break;
      case 1:
        Require((set.InsertNode(i) != nullptr) == (i >= 0 && i < count));
        break;
      default:
        Require(set.DeleteNode(i) == (i >= 0 && i < count));
    }
  }
  void SetText(VESKA::CTextSet& set, int i) {
    unsigned char text[255];
    VESKA::tag_IT_TXT record{};
    record.code = static_cast<std::uint8_t>(Byte());
    record.length = static_cast<std::uint8_t>(Byte());
    record.text = text;
    std::memset(text, static_cast<int>(Byte()), record.length);
    // Now and then the text is one of the set's own, whole or a part.
    const VESKA::tag_IT_TXT* own = set.GetNode(Position(set.GetCount()));
    if (own != nullptr && own->text != nullptr && Byte() % 2 != 0) {
      record.length = static_cast<std::uint8_t>(Byte() % (own->length + 1U));
      record.text = own->text + (own->length - record.length);
    }
    set.SetNode(i, record);
  }

  void EditMakers(VESKA::CMNFInfoTable& makers) {
    static unsigned char data[0x4000];
    if (Byte() % 2 != 0) return EditNodes(makers);
    VESKA::tag_A_MNFI value{};
    Fill(&value);
    value.MNF_DATA = data;
    value.MNF_DATA_SZ = Byte() % 4 != 0 ? Byte() : Byte() * 64;
    std::memset(data, static_cast<int>(Byte()), value.MNF_DATA_SZ);
    makers.SetNode(Position(makers.GetCount()), value);
    makers.SetLastMNFID(data);
  }

  void EditWhole(VESKA::CVMGInfo& info) {
    switch (Choice(4)) {
      case 0: {
        // A copy leaves out the addresses of cells until it is completed.
        VESKA::CVMGInfo copy = info;
        copy.AutoComplete();
        info.AutoComplete();
        Require(copy == info);
        copy.Clear();
        const VESKA::CVMGInfo& same = info;
        info = same;
        break;
      }
      case 1: {
        unsigned char identifier[12];
        VESKA::tag_VMGI_MAT_HEADER& header = info.GetMAT().GetHeader();
        std::memcpy(identifier, header.VMG_ID, sizeof identifier);
        Fill(&header);
        std::memcpy(header.VMG_ID, identifier, sizeof identifier);
        break;
      }
      case 2:
        info.AutoComplete();
        break;
      default:
        info.GetUserPGCTable().Clear();
    }
  }

  void Edit(VESKA::CVMGInfo& info) {
    VESKA::CMovieAVFile& vobs = info.GetMovieAVFileTable().GetMovieAVFile();
    switch (Choice(12)) {
      case 0:
        return EditPlayLists(info.GetMAT().GetPlayListTable());
      case 1:
        return EditMovie(info.GetMovieAVFileTable());
      case 2:
        return EditNodes(vobs);
      case 3:
        return EditVob(Pick(vobs));
      case 4:
        return EditStillStreams(info.GetStillAVFileTable());
      case 5:
        return EditStillGroups(info.GetStillAVFileTable());
      case 6:
        return EditChain(info.GetOriginalPGC());
      case 7:
        return EditNodes(info.GetUserPGCTable());
      case 8:
        if (auto* item = Pick(info.GetUserPGCTable())) EditChain(item->UD_PGCI);
        return;
      case 9:
        return EditTexts(info.GetTextDataMgr());
      case 10:
        return EditMakers(info.GetMNFInfoTable());
      default:
        return EditWhole(info);
    }
  }

  const std::uint8_t* bytes_;
  std::size_t left_;
};

}  // namespace fuzz
