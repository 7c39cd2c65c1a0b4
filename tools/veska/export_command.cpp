#include <veska/workshop/json.h>

#include <CLI/CLI.hpp>

#include "command.h"
#include "for_each_input.h"
#include "tool_io.h"

namespace veska_tool {
namespace {

using namespace VESKA::workshop;

struct Options : InputOptions {
  std::vector<std::string> files;
  std::string output = "-";
  bool lines = false;
  bool schema = false;
  bool force = false;
};

/// One compact line a file. Those that load are written even if others do not, but nothing is
/// overwritten for none.
ExitStatus ExportLines(const Options& options) {
  std::string all;
  const ExitStatus status =
      ForEachInput(options.files, options, {[&](const Input& input, std::ostream& out) {
                     const auto info = LoadInfo(input);
                     const std::string line = ToJson(*info, JsonForm::kLine, input.name);
                     if (IsStandard(options.output)) {
                       out << line;
                     } else {
                       all += line;
                     }
                     return ExitStatus::kDone;
                   }});
  if (!all.empty()) WriteOutput(options.output, all, options.force);
  return status;
}

void CheckFiles(const Options& options) {
  const auto refuse = [](const char* what) {
    throw Failure(ExitStatus::kUsage, "", std::string(what) + " (see veska export --help)");
  };
  if (options.schema && !options.files.empty()) refuse("--schema takes no FILE");
  if (!options.schema && options.files.empty()) refuse("FILE is required");
  if (options.files.size() > 1 && !options.lines) refuse("several FILEs need --lines");
  if (options.all && !options.lines) refuse("--all needs --lines");
}

ExitStatus RunExport(const Options& options) {
  CheckFiles(options);
  CheckOutput(options.output, options.force);
  if (options.schema) {
    WriteOutput(options.output, JsonSchema(), options.force);
    return ExitStatus::kDone;
  }
  if (options.lines) return ExportLines(options);
  const auto info = LoadInfo(ReadOneInput(options.files.front(), options, options.output));
  WriteOutput(options.output, ToJson(*info), options.force);
  return ExitStatus::kDone;
}

void DeclareOptions(CLI::App& app, Options& options) {
  app.add_option("FILE", options.files, std::string(kInputHelp) + "; several with --lines");
  app.add_option("-o,--output", options.output, "JSON file to write; - is standard output")
      ->type_name("OUT.json");
  app.add_flag("--lines", options.lines, "Write one compact line for each file, which it names");
  app.add_flag("--schema", options.schema, "Write the JSON Schema of these documents instead");
  app.add_flag("--force", options.force, "Overwrite an existing OUT.json");
  DeclareInputOptions(app, options, true);
}

}  // namespace

const Command kExportCommand = {
    "export", "Write a management file as JSON, without loss",
    "Every byte of every record is in it: numbers as numbers, bytes without meaning as hex, with\n"
    "readable text beside where there may be some. What completing derives (counts, sizes,\n"
    "addresses) is left out. `veska build` makes the file again.\n",
    "  veska export VR_MANGR.IFO -o disc.json\n"
    "  veska export --lines */VR_MANGR.IFO | jq -r '[.file, .header.text_93.text] | @tsv'\n",
    Declare<Options, DeclareOptions, RunExport>};

}  // namespace veska_tool
