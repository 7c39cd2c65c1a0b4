#include <veska/workshop/edit.h>
#include <veska/workshop/load.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <iterator>
#include <string_view>

#include "basis/text.h"
#include "edit/chain_editor.h"
#include "tree/diff.h"

namespace VESKA::workshop {
namespace {

/// The arguments of one step, with what a message calls it.
class Arguments {
 public:
  Arguments(const char* operation, std::span<const std::string> values, std::size_t number,
            const EncodeText& encode)
      : values_(values), encode_(encode) {
    where_ = "operation " + std::to_string(number) + " (" + operation;
    for (const std::string& value : values_) {
      where_ +=
          " " + Readable({reinterpret_cast<const unsigned char*>(value.data()), value.size()});
    }
    where_ += ")";
  }

  [[noreturn]] void Fail(const std::string& what) const {
    throw Error(ErrorKind::kRequest, where_ + ": " + what, where_);
  }

  /// The 0-based position that argument `i` names with a number of `first` to `last`.
  int Position(std::size_t i, const std::string& of_what, int first, int last) const {
    const std::string& text = values_[i];
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (first > last) Fail("there is no " + of_what);
    if (error != std::errc() || end != text.data() + text.size() || number < first ||
        number > last) {
      Fail("the number of a " + of_what + " is " + std::to_string(first) + " to " +
           std::to_string(last) + ", not " + text);
    }
    return number - 1;
  }
  int Position(std::size_t i, const std::string& of_what, int count) const {
    return Position(i, of_what, 1, count);
  }

  /// The bytes of a text of at most `limit` bytes, written as the tool shows texts.
  std::string Text(std::size_t i, std::size_t limit) const {
    if (!Unescaped(values_[i])) {
      Fail("a backslash in a text is written \\\\, a byte \\x and two hexadecimal digits");
    }
    const std::optional<std::string> text = Unescaped(values_[i], encode_);
    if (!text) Fail("the text cannot be written in the character set of the disc");
    if (text->size() > limit) {
      Fail("the text has " + std::to_string(text->size()) + " bytes, and " + std::to_string(limit) +
           " fit");
    }
    return *text;
  }

 private:
  std::span<const std::string> values_;
  const EncodeText& encode_;
  std::string where_;
};

/// A file that is being edited.
struct Edited {
  CVMGInfo& info;
  std::vector<std::string> notes;  // what followed that nobody asked for
};

void DeleteProgram(Edited& edit, const Arguments& arguments) {
  ChainEditor chain(edit.info, edit.notes);
  chain.DeleteProgram(arguments.Position(0, "program", chain.ProgramCount()));
}

void MoveProgram(Edited& edit, const Arguments& arguments) {
  ChainEditor chain(edit.info, edit.notes);
  const int program = arguments.Position(0, "program", chain.ProgramCount());
  chain.MoveProgram(program, arguments.Position(1, "program", chain.ProgramCount()));
}

void SplitProgram(Edited& edit, const Arguments& arguments) {
  ChainEditor chain(edit.info, edit.notes);
  const int program = arguments.Position(0, "program", chain.ProgramCount());
  const std::string cell = "cell at which program " + std::to_string(program + 1) + " can be split";
  const int at = arguments.Position(1, cell, chain.FirstCell(program) + 2, chain.EndCell(program));
  if (!chain.SplitProgram(program, at)) arguments.Fail("there are 255 programs already");
}

void JoinPrograms(Edited& edit, const Arguments& arguments) {
  ChainEditor chain(edit.info, edit.notes);
  chain.JoinPrograms(
      arguments.Position(0, "program with another after it", chain.ProgramCount() - 1));
}

void DeleteCell(Edited& edit, const Arguments& arguments) {
  ChainEditor chain(edit.info, edit.notes);
  chain.DeleteCell(arguments.Position(0, "cell", chain.CellCount()));
}

void MoveCell(Edited& edit, const Arguments& arguments) {
  ChainEditor chain(edit.info, edit.notes);
  const int cell = arguments.Position(0, "cell", chain.CellCount());
  chain.MoveCell(cell, arguments.Position(1, "cell", chain.CellCount()));
}

void DeletePlayList(Edited& edit, const Arguments& arguments) {
  VESKA::CPlayListSRPTable& play_lists = edit.info.GetMAT().GetPlayListTable();
  Require(play_lists.DeleteNode(arguments.Position(0, "play list", play_lists.GetCount())));
}

void SwapPlayLists(Edited& edit, const Arguments& arguments) {
  VESKA::CPlayListSRPTable& play_lists = edit.info.GetMAT().GetPlayListTable();
  const int a = arguments.Position(0, "play list", play_lists.GetCount());
  Require(play_lists.SwapNode(a, arguments.Position(1, "play list", play_lists.GetCount())));
}

void DeleteUserChain(Edited& edit, const Arguments& arguments) {
  VESKA::CUserPGCTable& chains = edit.info.GetUserPGCTable();
  Require(chains.DeleteNode(arguments.Position(0, "user-defined chain", chains.GetCount())));
}

/// Fills a field of fixed width with a text and zeros behind it.
template <std::size_t Width>
void SetField(unsigned char (&field)[Width], const Arguments& arguments, std::size_t i) {
  const std::string text = arguments.Text(i, Width);
  std::memset(field, 0, Width);
  std::memcpy(field, text.data(), text.size());
}

void SetDiscText(Edited& edit, const Arguments& arguments) {
  SetField(edit.info.GetMAT().GetHeader().text_93, arguments, 0);
}

void SetProgramText(Edited& edit, const Arguments& arguments) {
  VESKA::CPGCInfo& chain = edit.info.GetOriginalPGC();
  const int program = arguments.Position(0, "program", chain.GetPGCount());
  SetField(chain.GetPGNode(program)->text_4, arguments, 1);
}

void SetPlayListText(Edited& edit, const Arguments& arguments) {
  VESKA::CPlayListSRPTable& play_lists = edit.info.GetMAT().GetPlayListTable();
  const int play_list = arguments.Position(0, "play list", play_lists.GetCount());
  SetField(play_lists[play_list]->text_8, arguments, 1);
}

void SetText(Edited& edit, const Arguments& arguments) {
  VESKA::CTextDataMgr& texts = edit.info.GetTextDataMgr();
  VESKA::CTextSet& set = texts[arguments.Position(0, "text set", texts.GetCount())]->IT_TXT;
  const int i = arguments.Position(1, "text in that set", set.GetCount());
  std::string text = arguments.Text(2, 0xFF);
  set.SetNode(i, {.code = set[i]->code,
                  .length = static_cast<std::uint8_t>(text.size()),
                  .text = reinterpret_cast<unsigned char*>(text.data())});
}

void SetLastManufacturer(Edited& edit, const Arguments& arguments) {
  VESKA::CMNFInfoTable& manufacturers = edit.info.GetMNFInfoTable();
  if (manufacturers.IsEmpty()) arguments.Fail("the file has no manufacturer table to hold it");
  unsigned char id[sizeof manufacturers.GetHeader().LAST_MNF_ID];
  SetField(id, arguments, 0);
  manufacturers.SetLastMNFID(id);
}

struct KnownOperation : Operation {
  void (*run)(Edited& edit, const Arguments& arguments);
};

constexpr KnownOperation kOperations[] = {
    {{"delete-program", "N", "delete program N and its cells"}, DeleteProgram},
    {{"move-program", "N TO", "move program N and its cells; it becomes program TO"}, MoveProgram},
    {{"split-program", "N CELL",
      "make a second program of the cells of program N from CELL on, with the same text"},
     SplitProgram},
    {{"join-programs", "N", "give the cells of the program after N to N, and delete the former"},
     JoinPrograms},
    {{"delete-cell", "N", "delete cell N; a program that loses its last cell stays"}, DeleteCell},
    {{"move-cell", "N TO",
      "move cell N; it becomes cell TO and joins the program of the cell that was there"},
     MoveCell},
    {{"delete-playlist", "N", "delete play list N; no user-defined chain goes with it"},
     DeletePlayList},
    {{"swap-playlists", "A B", "exchange two play lists"}, SwapPlayLists},
    {{"delete-user-chain", "N", "delete user-defined chain N"}, DeleteUserChain},
    {{"set-disc-text", "TEXT", "set the text of the disc, up to 128 bytes"}, SetDiscText},
    {{"set-program-text", "N TEXT", "set the text of program N, up to 128 bytes"}, SetProgramText},
    {{"set-playlist-text", "N TEXT", "set the text of play list N, up to 128 bytes"},
     SetPlayListText},
    {{"set-text", "SET N TEXT", "set text N of text set SET, up to 255 bytes; it keeps its code"},
     SetText},
    {{"set-last-manufacturer", "ID", "set the identifier of the last manufacturer, up to 32 bytes"},
     SetLastManufacturer},
};

/// One operation with its arguments as they were given.
struct Step {
  const KnownOperation* operation;
  std::span<const std::string> arguments;
};

[[noreturn]] void FailToParse(const std::string& what) { throw Error(ErrorKind::kRequest, what); }

std::size_t CountOf(std::string_view arguments) {
  return 1 + static_cast<std::size_t>(std::count(arguments.begin(), arguments.end(), ' '));
}

std::vector<Step> StepsOf(std::span<const std::string> words) {
  std::vector<Step> steps;
  while (!words.empty()) {
    const auto* operation =
        std::find_if(std::begin(kOperations), std::end(kOperations),
                     [&](const Operation& one) { return one.name == words[0]; });
    if (operation == std::end(kOperations)) FailToParse("there is no operation '" + words[0] + "'");
    words = words.subspan(1);
    const std::size_t count = CountOf(operation->arguments);
    if (words.size() < count) {
      FailToParse(std::string(operation->name) + " takes " + operation->arguments);
    }
    steps.push_back({operation, words.first(count)});
    words = words.subspan(count);
  }
  return steps;
}

constexpr auto kPublicOperations = [] {
  std::array<Operation, std::size(kOperations)> operations{};
  std::copy(std::begin(kOperations), std::end(kOperations), operations.begin());
  return operations;
}();

}  // namespace

std::span<const Operation> Operations() { return kPublicOperations; }

void CheckRequest(std::span<const std::string> words) { StepsOf(words); }

std::vector<std::string> Edit(CVMGInfo& info, std::span<const std::string> words,
                              const EncodeText& encode) {
  CVMGInfo result = info;
  Edited edited{result, {}};
  std::size_t number = 0;
  for (const auto& [operation, arguments] : StepsOf(words)) {
    operation->run(edited, Arguments(operation->name, arguments, ++number, encode));
  }
  result.AutoComplete();
  info = std::move(result);  // nothing throws from here on
  return std::move(edited.notes);
}

std::vector<std::string> PreviewEdit(const CVMGInfo& info, std::span<const std::string> words,
                                     const EncodeText& encode, const DecodeText& decode) {
  CVMGInfo result = info;
  std::vector<std::string> lines = Edit(result, words, encode);
  ImageOf(result);
  for (std::string& line : DifferencesOfEdit(info, result, decode))
    lines.push_back(std::move(line));
  return lines;
}

}  // namespace VESKA::workshop
