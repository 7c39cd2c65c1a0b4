#include "veska/workshop/show.h"

#include <veska/time_functions.h>
#include <veska/workshop/load.h>

#include <algorithm>
#include <cstdio>

#include "basis/units.h"
#include "tree/outline.h"

namespace VESKA::workshop {
namespace {

/// "404 bytes at TXTDT_MG_SA 6482".
template <class Table>
std::string SizeAt(const Table& table, const char* name, std::uint32_t address) {
  return Plural(table.GetDataSize(), "byte") + " at " + name + " " + std::to_string(address);
}

/// The same of a table that the file leaves out when it is empty.
template <class Table>
std::string Where(const Table& table, const char* name, std::uint32_t address) {
  return table.IsEmpty() ? "none" : SizeAt(table, name, address);
}

std::string PackText(std::uint64_t packs) {
  return "pack count " + std::to_string(packs) + " (" + Plural(packs * kPackSize, "byte") + ")";
}

/// Recorders put the recording time there; other bytes show no date.
std::string Recorded(const unsigned char* bytes) {
  SYSTEMTIME time{};
  GetWinTime(&time, bytes);
  if (time.wYear < 1990 || time.wYear > 2100 || time.wMonth < 1 || time.wMonth > 12 ||
      time.wDay < 1 || time.wHour > 23 || time.wMinute > 59 || time.wSecond > 59) {
    return "";
  }
  char text[64];
  std::snprintf(text, sizeof text, ", recorded %04u-%02u-%02u %02u:%02u:%02u", unsigned{time.wYear},
                unsigned{time.wMonth}, unsigned{time.wDay}, unsigned{time.wHour},
                unsigned{time.wMinute}, unsigned{time.wSecond});
  return text;
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
  to.Heading("header", Plural(sizeof header, "byte"));
  const Outline::Deeper deeper(to);
  const Record record = RecordOf(header);
  for (const Field& field : record.fields) {
    if (to.IsDull(record, field)) continue;
    const bool no_table =
        std::string_view(field.name).ends_with("_SA") && GetNumber(record, field) == 0;
    to.Line(to.Value(record, field, nullptr) + (no_table ? " (there is none)" : ""));
  }
}

void ShowPlayLists(Outline& to, const CPlayListSRPTable& table) {
  to.Heading("play lists", to.Fields(table.GetHeader()));
  const Outline::Deeper deeper(to);
  to.List(table.GetCount(), "play list", [&](int i) {
    const tag_PL_SRP& list = *table.GetNode(i);
    const std::string text = to.Text(list.text_8);
    to.Heading(Numbered("play list", i) + (text.front() == '"' ? " " + text : ""),
               to.NamedFields(list));
  });
}

void ShowTimeMap(Outline& to, const CTimeMapTable& map) {
  const std::uint64_t fields = map.GetFieldCount();
  to.Heading("time map", to.Fields(map.GetHeader()));
  const Outline::Deeper deeper(to);
  to.Line("field count " + std::to_string(fields) + " (" + TimeText(fields * 20) +
          " at 50 fields a second, " + TimeText(fields * 50 / 3) + " at 60)");
  to.Line(PackText(map.GetPackCount()));
  if (!to.All()) return;
  for (int i = 0; i < map.GetTimeENCount(); ++i) {
    to.Heading(Numbered("time entry", i), to.Fields(*map.GetTimeENNode(i)));
  }
  for (int i = 0; i < map.GetVobuENCount(); ++i) {
    const tag_VOBU_ENT& entry = *map.GetVobuENNode(i);
    to.Heading(Numbered("VOBU entry", i), to.Fields(entry) + " (" +
                                              Plural(entry.VOBU_PB_TM(), "field") + ", " +
                                              Plural(entry.VOBU_SZ(), "pack") + ")");
  }
}

void ShowVob(Outline& to, int i, const tag_M_VOBI_ITEM& item) {
  const CMovieVOB& vob = item.M_VOBI;
  const tag_M_VOB_GI& header = vob.GetHeader();
  to.Heading(Numbered("VOB", i),
             SizeAt(vob, "M_VOBI_SA", item.M_VOBI_SA) + Recorded(header.bytes_2));
  const Outline::Deeper deeper(to);
  to.Line(to.Fields(header));
  to.Line("seamless block: " +
          (header.HasSeamlessInfo() ? to.Fields(vob.GetSeamlessInfo()) : "no"));
  to.Line("audio gap block: " + (header.HasAudioGaps() ? to.Fields(vob.GetAudioGaps()) : "no"));
  ShowTimeMap(to, vob.GetTimeMapTable());
}

void ShowMovie(Outline& to, const CMovieAVFileTable& table, std::uint32_t address) {
  to.Heading("movie table",
             SizeAt(table, "M_AVFIT_SA", address) + ", " + to.Fields(table.GetHeader()));
  const Outline::Deeper deeper(to);
  to.List(table.GetStreamCount(), "stream",
          [&](int i) { to.Heading(Numbered("stream", i), to.Fields(*table.GetStreamNode(i))); });
  const CMovieAVFile& file = table.GetMovieAVFile();
  to.Heading("movie VOBs", to.Fields(file.GetHeader()));
  const Outline::Deeper deepest(to);
  to.List(file.GetCount(), "VOB", [&](int i) { ShowVob(to, i, *file.GetNode(i)); });
}

std::string Forms(const CStillVOG& group) {
  int forms[4] = {};
  for (int i = 0; i < group.GetCount(); ++i) ++forms[group.GetNode(i)->Form()];
  std::string text = ", forms 0/1/2/3: ";
  for (int i = 0; i < 4; ++i) text += (i == 0 ? "" : "/") + std::to_string(forms[i]);
  return text;
}

template <class Group>
void ShowGroup(Outline& to, const std::string& name, const Group& group, const std::string& where) {
  to.Heading(name, where);
  const Outline::Deeper deeper(to);
  to.Line(to.Fields(group.GetHeader()));
  to.Line(PackText(group.GetPackCount()));
  if (!to.All()) return;
  for (int i = 0; i < group.GetCount(); ++i) {
    to.Heading(Numbered("entry", i), to.Fields(*group.GetNode(i)));
  }
}

void ShowStill(Outline& to, const CStillAVFileTable& table, std::uint32_t address) {
  to.Heading("still picture table",
             SizeAt(table, "S_AVFIT_SA", address) + ", " + to.Fields(table.GetHeader()));
  const Outline::Deeper deeper(to);
  to.List(table.GetVOBStreamCount(), "stream",
          [&](int i) { to.Heading(Numbered("stream", i), to.Fields(*table.GetVOBStreamNode(i))); });
  const CStillAVFile& file = table.GetStillAVFile();
  to.List(file.GetCount(), "still group", [&](int i) {
    const auto& [address_of_group, group] = *file.GetNode(i);
    ShowGroup(to, Numbered("still group", i), group,
              SizeAt(group, "S_VOGI_SA", address_of_group) + Forms(group) +
                  Recorded(group.GetHeader().VOG_GI_BYTES));
  });
  to.List(table.GetAAStreamCount(), "audio stream", [&](int i) {
    to.Heading(Numbered("audio stream", i), to.Fields(*table.GetAAStreamNode(i)));
  });
  const CAdditionalAFile& audio = table.GetAdditionalAFile();
  to.List(audio.GetCount(), "audio group", [&](int i) {
    const auto& [address_of_group, group] = *audio.GetNode(i);
    ShowGroup(to, Numbered("audio group", i), group, SizeAt(group, "S_AAGI_SA", address_of_group));
  });
}

std::string ChainText(const Outline& to, const CPGCInfo& chain) {
  return to.Fields(chain.GetHeader()) + ", " + Plural(chain.GetDataSize(), "byte");
}

void ShowUserChains(Outline& to, const CUserPGCTable& table, std::uint32_t address) {
  to.Heading("user-defined program chains",
             Where(table, "UD_PGCIT_SA", address) + ", " + to.Fields(table.GetHeader()));
  const Outline::Deeper deeper(to);
  to.List(table.GetCount(), "user-defined chain", [&](int i) {
    const tag_UD_PGCI_ITEM& item = *table.GetNode(i);
    to.Heading(Numbered("user-defined chain", i),
               ChainText(to, item.UD_PGCI) + " at UD_PGCI_SA " + std::to_string(item.UD_PGCI_SA));
    ShowChain(to, item.UD_PGCI, &item.UD_PGCI);
  });
}

/// A text may well end in zeros that count.
std::string Content(const Outline& to, const tag_IT_TXT& text) {
  const std::span<const unsigned char> bytes(text.text, text.length);
  if (bytes.empty()) return "(empty)";
  return bytes.back() == 0 ? Hex(bytes) : to.Text(bytes);
}

void ShowTexts(Outline& to, const CTextDataMgr& texts, std::uint32_t address) {
  to.Heading("texts", Where(texts, "TXTDT_MG_SA", address) + ", " + to.Fields(texts.GetHeader()));
  const Outline::Deeper deeper(to);
  to.List(texts.GetCount(), "text set", [&](int i) {
    const tag_IT_TXT_ITEM& item = *texts.GetNode(i);
    const CTextSet& set = item.IT_TXT;
    to.Heading(Numbered("text set", i), "IT_TXT_SA " + std::to_string(item.IT_TXT_SA) +
                                            ", IT_TXT_SZ " + std::to_string(item.IT_TXT_SZ) + ", " +
                                            Plural(unsigned(set.GetCount()), "text"));
    const Outline::Deeper deepest(to);
    to.List(set.GetCount(), "text", [&](int j) {
      const tag_IT_TXT& text = *set.GetNode(j);
      to.Heading(Numbered("text", j), to.Fields(text) + ", " + Content(to, text));
    });
  });
}

void ShowManufacturers(Outline& to, const CMNFInfoTable& table, std::uint32_t address) {
  to.Heading("manufacturers",
             Where(table, "MNFIT_SA", address) + ", " + to.Fields(table.GetHeader()));
  const Outline::Deeper deeper(to);
  to.List(table.GetCount(), "manufacturer", [&](int i) {
    const tag_A_MNFI& maker = table.GetNode(i)->A_MNFI;
    to.Heading(Numbered("manufacturer", i), "MNFI_SA " + std::to_string(table.GetNode(i)->MNFI_SA) +
                                                ", " + to.Fields(maker) + ", data length " +
                                                std::to_string(maker.MNF_DATA_SZ));
    to.Data({maker.MNF_DATA, maker.MNF_DATA_SZ});
  });
}

}  // namespace

std::string Show(std::span<const unsigned char> bytes, const ShowOptions& options) {
  const auto loaded = Load(bytes);
  const CVMGInfo& info = *loaded;
  const tag_VMGI_MAT_HEADER& header = info.GetMAT().GetHeader();
  Outline to(info, options);
  to.Heading(options.name, Plural(bytes.size(), "byte") + ", " + Layout(info, bytes));
  const Outline::Deeper deeper(to);
  ShowHeader(to, header);
  ShowPlayLists(to, info.GetMAT().GetPlayListTable());
  ShowMovie(to, info.GetMovieAVFileTable(), header.M_AVFIT_SA);
  ShowStill(to, info.GetStillAVFileTable(), header.S_AVFIT_SA);
  to.Heading("original program chain", ChainText(to, info.GetOriginalPGC()) + ", at ORG_PGCI_SA " +
                                           std::to_string(header.ORG_PGCI_SA));
  ShowChain(to, info.GetOriginalPGC(), nullptr);
  ShowUserChains(to, info.GetUserPGCTable(), header.UD_PGCIT_SA);
  ShowTexts(to, info.GetTextDataMgr(), header.TXTDT_MG_SA);
  ShowManufacturers(to, info.GetMNFInfoTable(), header.MNFIT_SA);
  return to.Take();
}

}  // namespace VESKA::workshop
