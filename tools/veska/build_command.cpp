#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "command.h"
#include "json_tree.h"
#include "tool_io.h"

namespace veska_tool {
namespace {

struct Options {
  std::string input;
  std::string output;
  bool force = false;
};

ExitStatus RunBuild(const Options& options) {
  CheckOutput(options.output, options.force);
  const Bytes bytes = ReadInput(options.input);
  const std::string where = NameOfInput(options.input);
  const Json document = ParseJson(std::string(bytes.begin(), bytes.end()), where);
  VESKA::CVMGInfo info;
  Build(document, where, info);
  SaveInfo(options.output, info, options.force);
  return ExitStatus::kDone;
}

std::function<ExitStatus()> Declare(CLI::App& app) {
  auto options = std::make_shared<Options>();
  app.add_option("IN.json", options->input, "What `veska export` wrote; - is standard input")
      ->required();
  app.add_option("-o,--output", options->output, "Management file to write; - is standard output")
      ->type_name("OUT.ifo")
      ->required();
  app.add_flag("--force", options->force, "Overwrite an existing OUT.ifo");
  return [options] { return RunBuild(*options); };
}

}  // namespace

extern const Command kBuildCommand;
const Command kBuildCommand = {
    "build", "Make a management file from its JSON",
    "Counts, sizes and addresses are computed. A key that is not known, is missing or holds what\n"
    "does not fit is a mistake: it is named by its JSON pointer with what was expected there, and\n"
    "nothing is written.\n",
    "  veska build disc.json -o VR_MANGR.IFO\n", Declare};

}  // namespace veska_tool
