#include <CLI/CLI.hpp>

#include "command.h"
#include "tool_io.h"

namespace veska_tool {
namespace {

struct Options {
  std::string input;
  std::string output;
  bool force = false;
};

ExitStatus RunComplete(const Options& options) {
  CheckOutput(options.output, options.force);
  const auto info = LoadInfo(options.input);
  info->AutoComplete();
  SaveInfo(options.output, *info, options.force);
  return ExitStatus::kDone;
}

std::function<ExitStatus()> Declare(CLI::App& app) {
  auto options = std::make_shared<Options>();
  app.add_option("IN", options->input, "Management file; - is standard input")->required();
  app.add_option("-o,--output", options->output, "Management file to write; - is standard output")
      ->type_name("OUT")
      ->required();
  app.add_flag("--force", options->force, "Overwrite an existing OUT, which may be IN");
  return [options] { return RunComplete(*options); };
}

}  // namespace

extern const Command kCompleteCommand;
const Command kCompleteCommand = {
    "complete", "Load a management file, compute what follows from its tables, and save it",
    "The tables are laid out one behind the other in the order of the format; counts, sizes and\n"
    "addresses are set by what the tables hold. All else stays as it is.\n",
    "  veska complete VR_MANGR.IFO -o completed.ifo\n", Declare};

}  // namespace veska_tool
