#include "veska/workshop/show.h"

#include <veska/workshop/load.h>

#include <algorithm>

#include "basis/programs.h"
#include "basis/tables.h"
#include "basis/units.h"
#include "tree/outline.h"

namespace VESKA::workshop {
namespace {

/// "404 bytes at TXTDT_MG_SA 6482".
template <class Table>
std::string SizeAt(const Table& table, const char* name, std::uint64_t address) {
  return Plural(table.GetDataSize(), "byte") + " at " + name + " " + std::to_string(address);
}

std::string PackText(std::uint64_t packs) {
  return "pack count " + std::to_string(packs) + " (" + Plural(packs * kPackSize, "byte") + ")";
}

/// Nothing where the bytes show no date.
std::string Recorded(const unsigned char* bytes) {
  std::string time = RecordingTime(bytes);
  std::replace(time.begin(), time.end(), 'T', ' ');
  return time.empty() ? "" : ", recorded " + time;
}

std::string Layout(const CVMGInfo& info, std::span<const unsigned char> image) {
  CVMGInfo completed = info;
  completed.AutoComplete();
  Bytes own(completed.GetDataSize());
  completed.GetData(own.data());
  if (std::equal(own.begin(), own.end(), image.begin(), image.end()))
    return "laid out as this tool writes it";
  return "laid out otherwise than this tool writes it: completed it has " +
         Plural(own.size(), "byte");
}

void ShowHeader(Outline& to, const tag_VMGI_MAT_HEADER& header) {
  to.Section("header", Plural(sizeof header, "byte"), [&] {
    const Record record = RecordOf(header);
    for (const Field& field : record.fields) {
      const bool no_table =
          std::string_view(field.name).ends_with("_SA") && GetNumber(record, field) == 0;
      to.Line(to.Value(record, field) + (no_table ? " (there is none)" : ""));
    }
  });
}

/// `play list 1 "name"`, where the name is readable.
std::string Named(const char* what, int i, std::span<const unsigned char> name) {
  const std::string text = TextOrHex(name);
  return Numbered(what, i) + (text.front() == '"' ? " " + text : "");
}

void ShowPlayLists(Outline& to, const CPlayListSRPTable& table) {
  to.Section("play lists", to.Fields(table.GetHeader()), [&] {
    to.List(table.GetCount(), "play list", [&](int i) {
      to.Heading(Named("play list", i, table[i]->text_8), to.NamedFields(*table[i]));
    });
  });
}

// --- The movie and the still table ---------------------------------------------------------------

void ShowTimeMap(Outline& to, const CTimeMapTable& map) {
  const std::uint64_t fields = map.GetFieldCount();
  to.Line("field count " + std::to_string(fields) + " (" + TimeText(fields * 20) +
          " at 50 fields a second, " + TimeText(fields * 50 / 3) + " at 60)");
  to.Line(PackText(map.GetPackCount()));
  if (!to.All()) return;
  to.Records(map.TimeEntries(), "time entry");
  to.List(map.GetVobuENCount(), "VOBU entry", [&](int i) {
    const tag_VOBU_ENT& entry = *map.GetVobuENNode(i);
    to.Heading(Numbered("VOBU entry", i), to.Fields(entry) + " (" +
                                              Plural(entry.VOBU_PB_TM(), "field") + ", " +
                                              Plural(entry.VOBU_SZ(), "pack") + ")");
  });
}

void ShowVob(Outline& to, const CMovieVOB& vob) {
  const tag_M_VOB_GI& header = vob.GetHeader();
  to.Line(to.Fields(header));
  to.Line("seamless block: " +
          (header.HasSeamlessInfo() ? to.Fields(vob.GetSeamlessInfo()) : "no"));
  to.Line("audio gap block: " + (header.HasAudioGaps() ? to.Fields(vob.GetAudioGaps()) : "no"));
  const CTimeMapTable& map = vob.GetTimeMapTable();
  to.Section("time map", to.Fields(map.GetHeader()), [&] { ShowTimeMap(to, map); });
}

void ShowMovie(Outline& to, const CMovieAVFileTable& table) {
  to.Records(table.Streams(), "stream");
  const CMovieAVFile& file = table.GetMovieAVFile();
  to.Section("movie VOBs", to.Fields(file.GetHeader()), [&] {
    to.List(file.GetCount(), "VOB", [&](int i) {
      const CMovieVOB& vob = file[i]->M_VOBI;
      to.Section(Numbered("VOB", i),
                 SizeAt(vob, "M_VOBI_SA", file[i]->M_VOBI_SA) + Recorded(vob.GetHeader().bytes_2),
                 [&] { ShowVob(to, vob); });
    });
  });
}

std::string Forms(const CStillVOG& group) {
  int forms[4] = {};
  for (const tag_S_VOB_ENT& entry : group.Entries()) ++forms[entry.Form()];
  std::string text = ", forms 0/1/2/3: ";
  for (int i = 0; i < 4; ++i) text += (i == 0 ? "" : "/") + std::to_string(forms[i]);
  return text;
}

template <class Group>
void ShowGroup(Outline& to, const Group& group) {
  to.Line(to.Fields(group.GetHeader()));
  to.Line(PackText(group.GetPackCount()));
  if (to.All()) to.Records(group.Entries(), "entry");
}

void ShowStill(Outline& to, const CStillAVFileTable& table) {
  to.Records(table.VOBStreams(), "stream");
  const CStillAVFile& file = table.GetStillAVFile();
  to.List(file.GetCount(), "still group", [&](int i) {
    const CStillVOG& group = file[i]->S_VOGI;
    to.Section(Numbered("still group", i),
               SizeAt(group, "S_VOGI_SA", file[i]->S_VOGI_SA) + Forms(group) +
                   Recorded(group.GetHeader().VOG_GI_BYTES),
               [&] { ShowGroup(to, group); });
  });
  to.Records(table.AAStreams(), "audio stream");
  const CAdditionalAFile& audio = table.GetAdditionalAFile();
  to.List(audio.GetCount(), "audio group", [&](int i) {
    const CStillAAG& group = audio[i]->S_AAGI;
    to.Section(Numbered("audio group", i), SizeAt(group, "S_AAGI_SA", audio[i]->S_AAGI_SA),
               [&] { ShowGroup(to, group); });
  });
}

// --- Program chains ------------------------------------------------------------------------------

template <class CellClass>
void ShowCell(Outline& to, const std::string& name, std::uint32_t address, const CBaseCell& base) {
  const auto& cell = static_cast<const CellClass&>(base);
  int long_entries = 0;
  for (const auto& entry : cell.EntryPoints()) long_entries += IsLongEntry(entry.EP_TY);
  const std::string text = to.Fields(cell.GetHeader()) + ", " + SizeAt(cell, "CI_SA", address) +
                           ", " + std::to_string(cell.GetCount() - long_entries) + " short and " +
                           std::to_string(long_entries) + " long entry points";
  to.Section(name, text, [&] {
    to.List(cell.GetCount(), "entry point", [&](int i) {
      const auto& entry = *cell.GetNode(i);
      to.Heading(Numbered("entry point", i),
                 to.Fields(entry) + (IsLongEntry(entry.EP_TY) ? ", long" : ", short"));
      if (entry.block != nullptr) to.Data({entry.block, kEntryBlockSize});
    });
  });
}

void ShowCells(Outline& to, const CPGCInfo& chain, int first, int count) {
  to.List(count, "cell", [&](int i) {
    const tag_C_ITEM& item = *chain.GetCellNode(first + i);
    const std::string name = Numbered("cell", first + i);
    if (item.CI->GetType() == CELL_MOVIE) {
      ShowCell<CMovieCell>(to, name + ": movie", item.CI_SA, *item.CI);
    } else {
      ShowCell<CStillCell>(to, name + ": still", item.CI_SA, *item.CI);
    }
  });
}

/// "cells 4 to 12".
std::string CellsText(const ProgramCells& cells) {
  const auto& [first, counted, there] = cells;
  if (counted == 0) return "no cells";
  const std::string text = counted == 1
                               ? Numbered("cell", first)
                               : Numbered("cells", first) + " to " + std::to_string(cells.End());
  return there == counted ? text : text + " (of which " + std::to_string(there) + " are there)";
}

/// The programs of a chain with their cells, then the cells that no program counts.
void ShowChain(Outline& to, const CPGCInfo& chain) {
  const std::vector<ProgramCells> programs = CellsOfPrograms(chain);
  to.List(chain.GetPGCount(), "program", [&](int i) {
    const tag_PGI& program = *chain.GetPGNode(i);
    const ProgramCells& cells = programs[static_cast<std::size_t>(i)];
    to.Section(Named("program", i, program.text_4),
               CellsText(cells) + ", " + kProgramKinds[chain.GetProgramVOBType(i)] + ", " +
                   to.NamedFields(program),
               [&] { ShowCells(to, chain, cells.first, cells.there); });
  });
  const int next = programs.empty() ? 0 : programs.back().End();
  if (next >= chain.GetCellCount()) return;
  to.Section("cells that no program counts", "",
             [&] { ShowCells(to, chain, next, chain.GetCellCount() - next); });
}

std::string ChainText(const Outline& to, const CPGCInfo& chain) {
  return to.Fields(chain.GetHeader()) + ", " + Plural(chain.GetDataSize(), "byte");
}

void ShowUserChains(Outline& to, const CUserPGCTable& table) {
  to.List(table.GetCount(), "user-defined chain", [&](int i) {
    const CPGCInfo& chain = table[i]->UD_PGCI;
    to.Section(Numbered("user-defined chain", i),
               ChainText(to, chain) + " at UD_PGCI_SA " + std::to_string(table[i]->UD_PGCI_SA),
               [&] {
                 to.CountCellsOf(&chain);
                 ShowChain(to, chain);
               });
  });
  to.CountCellsOf(nullptr);
}

// --- Texts and manufacturers ---------------------------------------------------------------------

/// A text may well end in zeros that count.
std::string Content(const tag_IT_TXT& text) {
  const std::span<const unsigned char> bytes(text.text, text.length);
  if (bytes.empty()) return "(empty)";
  return bytes.back() == 0 ? Hex(bytes) : TextOrHex(bytes);
}

void ShowTexts(Outline& to, const CTextDataMgr& texts) {
  to.List(texts.GetCount(), "text set", [&](int i) {
    const tag_IT_TXT_ITEM& item = *texts.GetNode(i);
    const CTextSet& set = item.IT_TXT;
    to.Section(Numbered("text set", i),
               "IT_TXT_SA " + std::to_string(item.IT_TXT_SA) + ", IT_TXT_SZ " +
                   std::to_string(item.IT_TXT_SZ) + ", " +
                   Plural(static_cast<unsigned>(set.GetCount()), "text"),
               [&] {
                 to.List(set.GetCount(), "text", [&](int j) {
                   to.Heading(Numbered("text", j), to.Fields(*set[j]) + ", " + Content(*set[j]));
                 });
               });
  });
}

void ShowManufacturers(Outline& to, const CMNFInfoTable& table) {
  to.List(table.GetCount(), "manufacturer", [&](int i) {
    const auto& [address, maker] = *table.GetNode(i);
    to.Heading(Numbered("manufacturer", i), "MNFI_SA " + std::to_string(address) + ", " +
                                                to.Fields(maker) + ", data length " +
                                                std::to_string(maker.MNF_DATA_SZ));
    to.Data({maker.MNF_DATA, maker.MNF_DATA_SZ});
  });
}

/// A table with its place, its header and what `show` writes of it. One that the file leaves out
/// when it is empty is none then.
template <class Type>
void ShowTable(Outline& to, Table which, const Type& table, const tag_VMGI_MAT_HEADER& header,
               const char* name, void (*show)(Outline& to, const Type& table)) {
  const TableInfo& info = InfoOf(which);
  const Record record = RecordOf(header);
  const std::uint64_t address = GetNumber(record, FieldNamed(record.fields, info.field));
  const bool is_none = info.is_left_out && table.IsEmpty();
  to.Section(
      name,
      (is_none ? "none" : SizeAt(table, info.field, address)) + ", " + to.Fields(table.GetHeader()),
      [&] { show(to, table); });
}

void ShowTables(Outline& to, const CVMGInfo& info) {
  const tag_VMGI_MAT_HEADER& header = info.GetMAT().GetHeader();
  const CPGCInfo& chain = info.GetOriginalPGC();
  ShowHeader(to, header);
  ShowPlayLists(to, info.GetMAT().GetPlayListTable());
  ShowTable(to, Table::kMovie, info.GetMovieAVFileTable(), header, "movie table", ShowMovie);
  ShowTable(to, Table::kStill, info.GetStillAVFileTable(), header, "still picture table",
            ShowStill);
  to.Section("original program chain",
             ChainText(to, chain) + ", at ORG_PGCI_SA " + std::to_string(header.ORG_PGCI_SA),
             [&] { ShowChain(to, chain); });
  ShowTable(to, Table::kUserChains, info.GetUserPGCTable(), header, "user-defined program chains",
            ShowUserChains);
  ShowTable(to, Table::kTexts, info.GetTextDataMgr(), header, "texts", ShowTexts);
  ShowTable(to, Table::kManufacturers, info.GetMNFInfoTable(), header, "manufacturers",
            ShowManufacturers);
}

}  // namespace

std::string Show(std::span<const unsigned char> bytes, const ShowOptions& options) {
  const auto info = Load(bytes);
  Outline to(*info, options);
  to.Section(options.name, Plural(bytes.size(), "byte") + ", " + Layout(*info, bytes),
             [&] { ShowTables(to, *info); });
  return to.Take();
}

}  // namespace VESKA::workshop
