#include <veska/time_functions.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>

#include "command.h"
#include "field_text.h"
#include "files.h"
#include "tool_io.h"
#include "units.h"

namespace veska_tool {
namespace {

using namespace VESKA;

struct Options {
  std::vector<std::string> files;
  bool all = false;
};

std::string Number(std::uint64_t value) { return std::to_string(value); }

/// Lines at a depth. Headings stand out where the terminal shows colours.
class Outline {
 public:
  Outline(std::ostream& out, bool colour) : out_(out), colour_(colour) {}

  void Heading(const std::string& name, const std::string& text) {
    out_ << Indent() << (colour_ ? "\x1b[1m" : "") << name << (colour_ ? "\x1b[0m" : "")
         << (text.empty() ? "" : ": ") << text << "\n";
  }
  void Line(const std::string& text) {
    if (!text.empty()) out_ << Indent() << text << "\n";
  }
  void Dump(std::span<const unsigned char> bytes, std::size_t lines) {
    out_ << HexDump(bytes, Indent(), lines);
  }
  std::string Indent() const { return std::string(2 * depth_, ' '); }

  /// What is written while it lives stands one step further in.
  class Deeper {
   public:
    explicit Deeper(Outline& outline) : outline_(outline) { ++outline_.depth_; }
    Deeper(const Deeper&) = delete;
    Deeper& operator=(const Deeper&) = delete;
    ~Deeper() { --outline_.depth_; }

   private:
    Outline& outline_;
  };

 private:
  std::ostream& out_;
  bool colour_;
  std::size_t depth_ = 0;
};

class Show {
 public:
  Show(std::ostream& out, bool all) : to_(out, WantsColour()), all_(all) {}

  void File(const std::string& file, CVMGInfo& info, const Bytes& image) {
    info_ = &info;
    to_.Heading(NameOfInput(file), Plural(image.size(), "byte") + ", " + Layout(image));
    const Outline::Deeper deeper(to_);
    Header();
    PlayLists();
    Movie();
    Still();
    to_.Heading("original program chain", ChainSummary(info.GetOriginalPGC()) +
                                              ", at ORG_PGCI_SA " +
                                              Number(Addresses().ORG_PGCI_SA));
    Chain(info.GetOriginalPGC(), false);
    UserChains();
    Texts();
    Manufacturers();
  }

 private:
  static constexpr int kLongList = 100;  // a longer list is cut
  static constexpr int kShownOfLong = 20;
  static constexpr std::size_t kShownDumpLines = 2;

  tag_VMGI_MAT_HEADER Addresses() { return info_->GetMAT().GetHeader(); }

  std::string Layout(const Bytes& image) {
    CVMGInfo completed = *info_;
    completed.AutoComplete();
    Bytes own(completed.GetDataSize());
    completed.GetData(own.data());
    if (own == image) return "laid out as this tool writes it";
    return "laid out otherwise than this tool writes it: completed it has " +
           Plural(own.size(), "byte");
  }

  /// "NAME value, NAME value": the fields of a record but for zero bytes, unless all is wanted, and
  /// for a name that stands in the heading.
  std::string Line(const Record& record, bool named = false, bool raw_positions = false) {
    std::string line;
    for (const Field& field : record.fields) {
      if (IsDull(record, field) || (named && IsName(record, field))) continue;
      line += (line.empty() ? "" : ", ") + Value(record, field, raw_positions);
    }
    return line;
  }
  template <class Type>
  std::string Line(const Type& record) {
    Type copy = record;
    return Line(RecordOf(copy));
  }
  std::string Value(const Record& record, const Field& field, bool raw_positions) {
    const std::string separator = field.kind == FieldKind::kCellPoint ? ": " : " ";
    return field.name + separator +
           FieldText(record, field, info_->GetOriginalPGC(), raw_positions);
  }
  bool IsDull(const Record& record, const Field& field) const {
    return !all_ && std::string_view(field.name).starts_with("reserved") &&
           IsZero(FieldBytes(record, field));
  }

  static bool IsName(const Record& record, const Field& field) {
    return field.kind == FieldKind::kText && TextOrHex(FieldBytes(record, field)).front() == '"';
  }

  /// Shows `count` items by `show(i)`; of a long list the first ones only, unless all is wanted.
  template <class ShowItem>
  void List(int count, const char* what, ShowItem show) {
    const int shown = all_ || count <= kLongList ? count : kShownOfLong;
    for (int i = 0; i < shown; ++i) show(i);
    if (shown < count) {
      to_.Line("and " + Plural(static_cast<unsigned>(count - shown), what) +
               " more (--all shows "
               "them)");
    }
  }
  /// `what 1 "name"`, where the name is readable.
  static std::string Named(const char* what, int i, std::span<const unsigned char> name) {
    const std::string text = TextOrHex(name);
    return Numbered(what, i) + (text.front() == '"' ? " " + text : "");
  }
  static std::string Numbered(const char* what, int i) {
    return std::string(what) + " " + Number(static_cast<unsigned>(i) + 1);
  }

  void Header() {
    to_.Heading("header", Plural(sizeof(tag_VMGI_MAT_HEADER), "byte"));
    const Outline::Deeper deeper(to_);
    tag_VMGI_MAT_HEADER header = Addresses();
    const Record record = RecordOf(header);
    for (const Field& field : record.fields) {
      if (IsDull(record, field)) continue;
      const bool no_table =
          std::string_view(field.name).ends_with("_SA") && GetNumber(record, field) == 0;
      to_.Line(Value(record, field, false) + (no_table ? " (there is none)" : ""));
    }
  }

  void PlayLists() {
    CPlayListSRPTable& table = info_->GetMAT().GetPlayListTable();
    to_.Heading("play lists", Line(table.GetHeader()));
    const Outline::Deeper deeper(to_);
    List(table.GetCount(), "play list", [&](int i) {
      tag_PL_SRP list = *table.GetNode(i);
      to_.Heading(Named("play list", i, list.text_8), Line(RecordOf(list), true));
    });
  }

  void Movie() {
    CMovieAVFileTable& table = info_->GetMovieAVFileTable();
    to_.Heading("movie table", Plural(table.GetDataSize(), "byte") + " at M_AVFIT_SA " +
                                   Number(Addresses().M_AVFIT_SA) + ", " + Line(table.GetHeader()));
    const Outline::Deeper deeper(to_);
    List(table.GetStreamCount(), "stream", [&](int i) {
      to_.Heading(Numbered("stream", i), Line(RecordOf(*table.GetStreamNode(i))));
    });
    CMovieAVFile& file = table.GetMovieAVFile();
    to_.Heading("movie VOBs", Line(file.GetHeader()));
    const Outline::Deeper deepest(to_);
    List(file.GetCount(), "VOB", [&](int i) { Vob(i, *file.GetNode(i)); });
  }

  void Vob(int i, tag_M_VOBI_ITEM& item) {
    CMovieVOB& vob = item.M_VOBI;
    tag_M_VOB_GI header = vob.GetHeader();
    to_.Heading(Numbered("VOB", i), Plural(vob.GetDataSize(), "byte") + " at M_VOBI_SA " +
                                        Number(item.M_VOBI_SA) + Recorded(header.bytes_2));
    const Outline::Deeper deeper(to_);
    to_.Line(Line(RecordOf(header)));
    Block("seamless block", header.HasSeamlessInfo(), vob.GetSeamlessInfo());
    Block("audio gap block", header.HasAudioGaps(), vob.GetAudioGaps());
    TimeMap(vob.GetTimeMapTable());
  }

  template <class Type>
  void Block(const char* name, bool present, Type& record) {
    to_.Line(std::string(name) + (present ? ": " + Line(RecordOf(record)) : ": no"));
  }

  /// Recorders put the recording time there; other bytes show no date.
  static std::string Recorded(const unsigned char* bytes) {
    SYSTEMTIME time{};
    GetWinTime(&time, bytes);
    if (time.wYear < 1990 || time.wYear > 2100 || time.wMonth < 1 || time.wMonth > 12 ||
        time.wDay < 1 || time.wHour > 23 || time.wMinute > 59 || time.wSecond > 59) {
      return "";
    }
    char text[64];
    std::snprintf(text, sizeof text, ", recorded %04u-%02u-%02u %02u:%02u:%02u",
                  unsigned{time.wYear}, unsigned{time.wMonth}, unsigned{time.wDay},
                  unsigned{time.wHour}, unsigned{time.wMinute}, unsigned{time.wSecond});
    return text;
  }

  void TimeMap(CTimeMapTable& map) {
    const std::uint64_t fields = map.GetFieldCount();
    const std::uint64_t packs = map.GetPackCount();
    to_.Heading("time map", Line(map.GetHeader()));
    const Outline::Deeper deeper(to_);
    to_.Line("field count " + Number(fields) + " (" + TimeText(fields * 20) +
             " at 50 fields a second, " + TimeText(fields * 50 / 3) + " at 60)");
    to_.Line("pack count " + Number(packs) + " (" + Plural(packs * kPackSize, "byte") + ")");
    if (!all_) return;
    for (int i = 0; i < map.GetTimeENCount(); ++i) {
      to_.Heading(Numbered("time entry", i), Line(RecordOf(*map.GetTimeENNode(i))));
    }
    for (int i = 0; i < map.GetVobuENCount(); ++i) {
      const tag_VOBU_ENT entry = *map.GetVobuENNode(i);
      to_.Heading(Numbered("VOBU entry", i), Line(entry) + " (" +
                                                 Plural(entry.VOBU_PB_TM(), "field") + ", " +
                                                 Plural(entry.VOBU_SZ(), "pack") + ")");
    }
  }

  void Still() {
    CStillAVFileTable& table = info_->GetStillAVFileTable();
    to_.Heading("still picture table", Plural(table.GetDataSize(), "byte") + " at S_AVFIT_SA " +
                                           Number(Addresses().S_AVFIT_SA) + ", " +
                                           Line(table.GetHeader()));
    const Outline::Deeper deeper(to_);
    List(table.GetVOBStreamCount(), "stream", [&](int i) {
      to_.Heading(Numbered("stream", i), Line(RecordOf(*table.GetVOBStreamNode(i))));
    });
    CStillAVFile& file = table.GetStillAVFile();
    List(file.GetCount(), "still group", [&](int i) {
      tag_S_VOGI_ITEM& item = *file.GetNode(i);
      Group(Numbered("still group", i), item.S_VOGI, "S_VOGI_SA", item.S_VOGI_SA,
            Forms(item.S_VOGI) + Recorded(item.S_VOGI.GetHeader().VOG_GI_BYTES));
    });
    List(table.GetAAStreamCount(), "audio stream", [&](int i) {
      to_.Heading(Numbered("audio stream", i), Line(RecordOf(*table.GetAAStreamNode(i))));
    });
    CAdditionalAFile& audio = table.GetAdditionalAFile();
    List(audio.GetCount(), "audio group", [&](int i) {
      tag_S_AAGI_ITEM& item = *audio.GetNode(i);
      Group(Numbered("audio group", i), item.S_AAGI, "S_AAGI_SA", item.S_AAGI_SA, "");
    });
  }

  static std::string Forms(CStillVOG& group) {
    int forms[4] = {};
    for (int i = 0; i < group.GetCount(); ++i) ++forms[group.GetNode(i)->Form()];
    std::string text = ", forms 0/1/2/3: ";
    for (int i = 0; i < 4; ++i) {
      text += (i == 0 ? "" : "/") + std::to_string(forms[i]);
    }
    return text;
  }

  template <class GroupClass>
  void Group(const std::string& name, GroupClass& group, const char* address_name,
             std::uint32_t address, const std::string& forms) {
    const std::uint64_t packs = group.GetPackCount();
    to_.Heading(name, Plural(group.GetDataSize(), "byte") + " at " + address_name + " " +
                          Number(address) + forms);
    const Outline::Deeper deeper(to_);
    to_.Line(Line(RecordOf(group.GetHeader())));
    to_.Line("pack count " + Number(packs) + " (" + Plural(packs * kPackSize, "byte") + ")");
    if (!all_) return;
    for (int i = 0; i < group.GetCount(); ++i) {
      to_.Heading(Numbered("entry", i), Line(RecordOf(*group.GetNode(i))));
    }
  }

  std::string ChainSummary(CPGCInfo& chain) {
    return Line(chain.GetHeader()) + ", " + Plural(chain.GetDataSize(), "byte");
  }

  /// The programs with their cells, then the cells that no program counts.
  void Chain(CPGCInfo& chain, bool raw_positions) {
    const Outline::Deeper deeper(to_);
    List(chain.GetPGCount(), "program",
         [&](int i) { Program(i, chain, chain.GetPGStartCellID(i), raw_positions); });
    const int next = chain.GetPGStartCellID(chain.GetPGCount());
    if (next >= chain.GetCellCount()) return;
    to_.Heading("cells that no program counts", "");
    Cells(chain, next, chain.GetCellCount() - next);
  }

  void Program(int i, CPGCInfo& chain, int first, bool raw_positions) {
    static constexpr const char* kKinds[] = {"movie", "still", "mixed", "none"};
    tag_PGI program = *chain.GetPGNode(i);
    const int there = std::clamp(chain.GetCellCount() - first, 0, int{program.C_Ns});
    std::string cells = "no cells";
    if (program.C_Ns > 0) {
      cells = program.C_Ns == 1 ? Numbered("cell", first)
                                : Numbered("cells", first) + " to " +
                                      Number(static_cast<unsigned>(first) + program.C_Ns);
    }
    if (there < program.C_Ns) cells += " (of which " + std::to_string(there) + " are there)";
    to_.Heading(Named("program", i, program.text_4),
                cells + ", " + kKinds[chain.GetProgramVOBType(i)] + ", " +
                    Line(RecordOf(program), true, raw_positions));
    Cells(chain, first, there);
  }

  void Cells(CPGCInfo& chain, int first, int count) {
    const Outline::Deeper deeper(to_);
    List(count, "cell", [&](int i) {
      const tag_C_ITEM& item = *chain.GetCellNode(first + i);
      const std::string name = Numbered("cell", first + i);
      if (item.CI->GetType() == CELL_MOVIE) {
        Cell(name + ": movie", item.CI_SA, static_cast<CMovieCell&>(*item.CI));
      } else {
        Cell(name + ": still", item.CI_SA, static_cast<CStillCell&>(*item.CI));
      }
    });
  }

  template <class CellClass>
  void Cell(const std::string& name, std::uint32_t address, CellClass& cell) {
    int long_entries = 0;
    for (int i = 0; i < cell.GetCount(); ++i) long_entries += IsLongEntry(cell.GetNode(i)->EP_TY);
    to_.Heading(name, Line(RecordOf(cell.GetHeader())) + ", " + Plural(cell.GetDataSize(), "byte") +
                          " at CI_SA " + Number(address) + ", " +
                          std::to_string(cell.GetCount() - long_entries) + " short and " +
                          std::to_string(long_entries) + " long entry points");
    const Outline::Deeper deeper(to_);
    List(cell.GetCount(), "entry point", [&](int i) {
      auto& entry = *cell.GetNode(i);
      to_.Heading(Numbered("entry point", i),
                  Line(RecordOf(entry)) + (IsLongEntry(entry.EP_TY) ? ", long" : ", short"));
      if (entry.block != nullptr) Data({entry.block, kEntryBlockSize});
    });
  }

  void Data(std::span<const unsigned char> bytes) {
    if (bytes.empty()) return;
    const Outline::Deeper deeper(to_);
    if (!all_ && IsZero(bytes)) return to_.Line(Plural(bytes.size(), "zero byte"));
    const std::size_t lines = all_ ? bytes.size() : kShownDumpLines;
    to_.Dump(bytes, lines);
    if (bytes.size() > 16 * lines) {
      to_.Line("and " + Plural(bytes.size() - 16 * lines, "byte") + " more (--all shows them)");
    }
  }

  void UserChains() {
    CUserPGCTable& table = info_->GetUserPGCTable();
    to_.Heading("user-defined program chains",
                Where("UD_PGCIT_SA", Addresses().UD_PGCIT_SA, table) + Line(table.GetHeader()));
    const Outline::Deeper deeper(to_);
    List(table.GetCount(), "user-defined chain", [&](int i) {
      tag_UD_PGCI_ITEM& item = *table.GetNode(i);
      to_.Heading(Numbered("user-defined chain", i),
                  ChainSummary(item.UD_PGCI) + " at UD_PGCI_SA " + Number(item.UD_PGCI_SA));
      Chain(item.UD_PGCI, true);
    });
  }

  template <class Table>
  static std::string Where(const char* name, std::uint32_t address, const Table& table) {
    if (table.IsEmpty()) return "none, ";
    return Plural(table.GetDataSize(), "byte") + " at " + name + " " + Number(address) + ", ";
  }

  void Texts() {
    CTextDataMgr& texts = info_->GetTextDataMgr();
    to_.Heading("texts",
                Where("TXTDT_MG_SA", Addresses().TXTDT_MG_SA, texts) + Line(texts.GetHeader()));
    const Outline::Deeper deeper(to_);
    List(texts.GetCount(), "text set", [&](int i) {
      tag_IT_TXT_ITEM& item = *texts.GetNode(i);
      to_.Heading(Numbered("text set", i), "IT_TXT_SA " + Number(item.IT_TXT_SA) + ", IT_TXT_SZ " +
                                               Number(item.IT_TXT_SZ) + ", " +
                                               Plural(unsigned(item.IT_TXT.GetCount()), "text"));
      TextSet(item.IT_TXT);
    });
  }

  void TextSet(CTextSet& set) {
    const Outline::Deeper deeper(to_);
    List(set.GetCount(), "text", [&](int i) {
      const tag_IT_TXT text = *set.GetNode(i);
      to_.Heading(Numbered("text", i),
                  Line(text) + ", " + (text.length == 0 ? "(empty)" : Content(text)));
    });
  }
  /// A text may well end in zeros that count.
  static std::string Content(const tag_IT_TXT& text) {
    const std::span<const unsigned char> bytes(text.text, text.length);
    return bytes.back() == 0 ? Hex(bytes) : TextOrHex(bytes);
  }

  void Manufacturers() {
    CMNFInfoTable& table = info_->GetMNFInfoTable();
    to_.Heading("manufacturers",
                Where("MNFIT_SA", Addresses().MNFIT_SA, table) + Line(table.GetHeader()));
    const Outline::Deeper deeper(to_);
    List(table.GetCount(), "manufacturer", [&](int i) {
      tag_A_MNFI_ITEM& item = *table.GetNode(i);
      const tag_A_MNFI maker = item.A_MNFI;
      to_.Heading(Numbered("manufacturer", i), "MNFI_SA " + Number(item.MNFI_SA) + ", " +
                                                   Line(maker) + ", data length " +
                                                   Number(maker.MNF_DATA_SZ));
      Data({maker.MNF_DATA, maker.MNF_DATA_SZ});
    });
  }

  Outline to_;
  bool all_;
  CVMGInfo* info_ = nullptr;
};

ExitStatus ShowFile(const std::string& file, bool all, std::ostream& out) {
  Bytes image = ReadInput(file);
  const auto info = LoadInfo(file, image);
  Show(out, all).File(file, *info, image);
  return ExitStatus::kDone;
}

std::function<ExitStatus()> Declare(CLI::App& app) {
  auto options = std::make_shared<Options>();
  app.add_option("FILE", options->files, "Management files; - is standard input")->required();
  app.add_flag("--all", options->all, "Show every record and every byte, however long");
  return [options] {
    return ForEachFile(options->files, [&](const std::string& file, std::ostream& out) {
      return ShowFile(file, options->all, out);
    });
  };
}

}  // namespace

extern const Command kShowCommand;
const Command kShowCommand = {
    "show", "Show what is in a management file, as a tree",
    "Programs, cells, play lists, chains and all other items are numbered from 1, as the file's\n"
    "own cell numbers are. Fields bear the format's names: _Ns a count, _SA a start address, _EA\n"
    "an end address, _SZ a size, in bytes. Reserved bytes that are zero, the entries of time maps\n"
    "and groups, and the rest of long lists and blocks are left out unless --all asks for them.\n",
    "  veska show VR_MANGR.IFO\n"
    "  veska show --all VR_MANGR.IFO | less\n",
    Declare};

}  // namespace veska_tool
