#include <veska/workshop/show.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <ostream>

#include "command.h"
#include "for_each_input.h"
#include "io.h"

namespace veska_tool {
namespace {

using namespace VESKA::workshop;

struct Options : InputOptions {
  std::vector<std::string> files;
};

ExitStatus ShowInput(const Input& input, bool all, std::ostream& out) {
  const bool bold = WantsColour();
  out << Show(input.bytes, {.name = input.name,
                            .all = all,
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
  return [options] {
    return ForEachInput(options->files, *options, {[&](const Input& input, std::ostream& out) {
                          return ShowInput(input, options->all, out);
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
