#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include "command.h"
#include "salvage.h"
#include "tool_io.h"

namespace veska_tool {
namespace {

struct Options {
  std::string input;
  std::string output;
  bool force = false;
};

ExitStatus RunSalvage(const Options& options) {
  CheckOutput(options.output, options.force);
  const SalvageResult result = SalvageImage(ReadInput(options.input));
  std::ostream& out = IsStandard(options.output) ? std::cerr : std::cout;
  out << result.report;
  if (result.info == nullptr) {
    throw Failure(ExitStatus::kFound, NameOfInput(options.input),
                  "nothing can be read of it, so nothing is written");
  }
  SaveInfo(options.output, *result.info, options.force);
  return result.is_whole ? ExitStatus::kDone : ExitStatus::kFound;
}

std::function<ExitStatus()> Declare(CLI::App& app) {
  auto options = std::make_shared<Options>();
  app.add_option("IN", options->input, "Management file; - is standard input")->required();
  app.add_option("-o,--output", options->output, "Management file to write; - is standard output")
      ->type_name("OUT")
      ->required();
  app.add_flag("--force", options->force, "Overwrite an existing OUT, which may be IN");
  return [options] { return RunSalvage(*options); };
}

}  // namespace

extern const Command kSalvageCommand;
const Command kSalvageCommand = {
    "salvage", "Write what can still be read of a damaged management file",
    "Reads table by table, and record by record where that is sound, and reports what was lost.\n"
    "Nothing is invented: what refers to a lost cell refers to none, and a count or an address is\n"
    "taken otherwise than it stands there only where everything else implies the same one value.\n"
    "The new file loads and passes `veska check` without errors. Exits with 1 when something was\n"
    "lost, and when nothing could be read; then nothing is written. The report goes to standard\n"
    "error when OUT is standard output. An undamaged file is written in the canonical layout.\n",
    "  veska salvage VR_MANGR.IFO -o salvaged.ifo\n", Declare};

}  // namespace veska_tool
