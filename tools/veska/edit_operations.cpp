#include "edit_operations.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <iterator>
#include <sstream>

#include "chain_editor.h"
#include "command.h"
#include "tool_io.h"

namespace veska_tool {

/// The arguments of one step, with what a message calls it.
class EditArguments {
 public:
  EditArguments(const EditStep& step, std::size_t number) : values_(step.arguments) {
    where_ = "operation " + std::to_string(number) + " (" + step.operation->name;
    for (const std::string& value : values_) {
      where_ +=
          " " + Readable({reinterpret_cast<const unsigned char*>(value.data()), value.size()});
    }
    where_ += ")";
  }

  [[noreturn]] void Fail(const std::string& what) const {
    throw Failure(ExitStatus::kUsage, where_, what);
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
    std::string text = Unescaped(values_[i]);
    if (text.size() > limit) {
      Fail("the text has " + std::to_string(text.size()) + " bytes, and " + std::to_string(limit) +
           " fit");
    }
    return text;
  }

 private:
  std::string Unescaped(const std::string& text) const {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
      if (text[i] != '\\') {
        bytes.push_back(text[i]);
        continue;
      }
      const std::string_view rest = std::string_view(text).substr(i + 1);
      unsigned byte = 0;
      if (rest.starts_with('\\') || rest.starts_with('"')) {
        bytes.push_back(rest[0]);
        ++i;
      } else if (rest.size() >= 3 && rest[0] == 'x' &&
                 std::from_chars(rest.data() + 1, rest.data() + 3, byte, 16).ptr ==
                     rest.data() + 3) {
        bytes.push_back(static_cast<char>(byte));
        i += 3;
      } else {
        Fail("a backslash in a text is written \\\\, a byte \\x and two hexadecimal digits");
      }
    }
    return bytes;
  }

  const std::vector<std::string>& values_;
  std::string where_;
};

namespace {

using Arguments = EditArguments;

void DeleteProgram(Edit& edit, const Arguments& arguments) {
  ChainEditor chain(edit.info, edit.notes);
  chain.DeleteProgram(arguments.Position(0, "program", chain.ProgramCount()));
}

void MoveProgram(Edit& edit, const Arguments& arguments) {
  ChainEditor chain(edit.info, edit.notes);
  const int program = arguments.Position(0, "program", chain.ProgramCount());
  chain.MoveProgram(program, arguments.Position(1, "program", chain.ProgramCount()));
}

void SplitProgram(Edit& edit, const Arguments& arguments) {
  ChainEditor chain(edit.info, edit.notes);
  const int program = arguments.Position(0, "program", chain.ProgramCount());
  const std::string cell = "cell at which program " + std::to_string(program + 1) + " can be split";
  const int at = arguments.Position(1, cell, chain.FirstCell(program) + 2, chain.EndCell(program));
  if (!chain.SplitProgram(program, at)) arguments.Fail("there are 255 programs already");
}

void JoinPrograms(Edit& edit, const Arguments& arguments) {
  ChainEditor chain(edit.info, edit.notes);
  chain.JoinPrograms(
      arguments.Position(0, "program with another after it", chain.ProgramCount() - 1));
}

void DeleteCell(Edit& edit, const Arguments& arguments) {
  ChainEditor chain(edit.info, edit.notes);
  chain.DeleteCell(arguments.Position(0, "cell", chain.CellCount()));
}

void MoveCell(Edit& edit, const Arguments& arguments) {
  ChainEditor chain(edit.info, edit.notes);
  const int cell = arguments.Position(0, "cell", chain.CellCount());
  chain.MoveCell(cell, arguments.Position(1, "cell", chain.CellCount()));
}

void DeletePlayList(Edit& edit, const Arguments& arguments) {
  VESKA::CPlayListSRPTable& play_lists = edit.info.GetMAT().GetPlayListTable();
  Require(play_lists.DeleteNode(arguments.Position(0, "play list", play_lists.GetCount())));
}

void SwapPlayLists(Edit& edit, const Arguments& arguments) {
  VESKA::CPlayListSRPTable& play_lists = edit.info.GetMAT().GetPlayListTable();
  const int a = arguments.Position(0, "play list", play_lists.GetCount());
  Require(play_lists.SwapNode(a, arguments.Position(1, "play list", play_lists.GetCount())));
}

void DeleteUserChain(Edit& edit, const Arguments& arguments) {
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

void SetDiscText(Edit& edit, const Arguments& arguments) {
  SetField(edit.info.GetMAT().GetHeader().text_93, arguments, 0);
}

void SetProgramText(Edit& edit, const Arguments& arguments) {
  VESKA::CPGCInfo& chain = edit.info.GetOriginalPGC();
  const int program = arguments.Position(0, "program", chain.GetPGCount());
  SetField(chain.GetPGNode(program)->text_4, arguments, 1);
}

void SetPlayListText(Edit& edit, const Arguments& arguments) {
  VESKA::CPlayListSRPTable& play_lists = edit.info.GetMAT().GetPlayListTable();
  const int play_list = arguments.Position(0, "play list", play_lists.GetCount());
  SetField(play_lists[play_list]->text_8, arguments, 1);
}

void SetText(Edit& edit, const Arguments& arguments) {
  VESKA::CTextDataMgr& texts = edit.info.GetTextDataMgr();
  VESKA::CTextSet& set = texts[arguments.Position(0, "text set", texts.GetCount())]->IT_TXT;
  const int i = arguments.Position(1, "text in that set", set.GetCount());
  std::string text = arguments.Text(2, 0xFF);
  set.SetNode(i, {.code = set[i]->code,
                  .length = static_cast<std::uint8_t>(text.size()),
                  .text = reinterpret_cast<unsigned char*>(text.data())});
}

void SetLastManufacturer(Edit& edit, const Arguments& arguments) {
  VESKA::CMNFInfoTable& manufacturers = edit.info.GetMNFInfoTable();
  if (manufacturers.IsEmpty()) arguments.Fail("the file has no manufacturer table to hold it");
  unsigned char id[sizeof manufacturers.GetHeader().LAST_MNF_ID];
  SetField(id, arguments, 0);
  manufacturers.SetLastMNFID(id);
}

constexpr EditOperation kOperations[] = {
    {"delete-program", "N", "delete program N and its cells", DeleteProgram},
    {"move-program", "N TO", "move program N and its cells; it becomes program TO", MoveProgram},
    {"split-program", "N CELL",
     "make a second program of the cells of program N from CELL on, with the same text",
     SplitProgram},
    {"join-programs", "N", "give the cells of the program after N to N, and delete the former",
     JoinPrograms},
    {"delete-cell", "N", "delete cell N; a program that loses its last cell stays", DeleteCell},
    {"move-cell", "N TO",
     "move cell N; it becomes cell TO and joins the program of the cell that was there", MoveCell},
    {"delete-playlist", "N", "delete play list N; no user-defined chain goes with it",
     DeletePlayList},
    {"swap-playlists", "A B", "exchange two play lists", SwapPlayLists},
    {"delete-user-chain", "N", "delete user-defined chain N", DeleteUserChain},
    {"set-disc-text", "TEXT", "set the text of the disc, up to 128 bytes", SetDiscText},
    {"set-program-text", "N TEXT", "set the text of program N, up to 128 bytes", SetProgramText},
    {"set-playlist-text", "N TEXT", "set the text of play list N, up to 128 bytes",
     SetPlayListText},
    {"set-text", "SET N TEXT", "set text N of text set SET, up to 255 bytes; it keeps its code",
     SetText},
    {"set-last-manufacturer", "ID", "set the identifier of the last manufacturer, up to 32 bytes",
     SetLastManufacturer},
};

std::vector<std::string> Words(const char* text) {
  std::istringstream stream(text);
  return {std::istream_iterator<std::string>(stream), {}};
}

[[noreturn]] void FailToParse(const std::string& what) {
  throw Failure(ExitStatus::kUsage, "", what + " (see veska edit --help)");
}

}  // namespace

std::span<const EditOperation> EditOperations() { return kOperations; }

std::vector<EditStep> ParseEditSteps(const std::vector<std::string>& words) {
  std::vector<EditStep> steps;
  for (auto word = words.begin(); word != words.end();) {
    const auto* operation = std::find_if(std::begin(kOperations), std::end(kOperations),
                                         [&](const auto& known) { return *word == known.name; });
    if (operation == std::end(kOperations)) FailToParse("there is no operation '" + *word + "'");
    ++word;
    const auto count = static_cast<std::ptrdiff_t>(Words(operation->arguments).size());
    if (words.end() - word < count) {
      FailToParse(std::string(operation->name) + " takes " + operation->arguments);
    }
    steps.push_back({operation, {word, word + count}});
    word += count;
  }
  return steps;
}

void RunEditSteps(const std::vector<EditStep>& steps, Edit& edit) {
  for (std::size_t i = 0; i < steps.size(); ++i) {
    steps[i].operation->run(edit, EditArguments(steps[i], i + 1));
  }
}

}  // namespace veska_tool
