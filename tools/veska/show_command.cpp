#include <veska/workshop/show.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <ostream>

#include "command.h"
#include "encoding.h"
#include "for_each_input.h"
#include "tool_io.h"

namespace veska_tool {
namespace {

using namespace VESKA::workshop;

struct Options : InputOptions {
  std::vector<std::string> files;
  std::string encoding;
};

ExitStatus ShowInput(const Input& input, bool all, const DecodeText& decode, std::ostream& out) {
  const bool bold = WantsColour();
  out << Show(input.bytes, {.name = input.name,
                            .all = all,
                            .decode = decode,
                            .before_heading = bold ? "\x1b[1m" : "",
                            .after_heading = bold ? "\x1b[0m" : ""});
  return ExitStatus::kDone;
}

std::function<ExitStatus()> Declare(CLI::App& app) {
  auto options = std::make_shared<Options>();
  app.add_option("FILE", options->files, kInputHelp)->required();
  app.add_flag("--all", options->all,
               "Show every record and every byte, however long, of all that is found in an image");
  DeclareInputOptions(app, *options, false);
  DeclareEncoding(app, options->encoding);
  return [options] {
    const DecodeText decode = Encoding(options->encoding).Decoder();
    return ForEachInput(options->files, *options, {[&](const Input& input, std::ostream& out) {
                          return ShowInput(input, options->all, decode, out);
                        }});
  };
}

}  // namespace

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
