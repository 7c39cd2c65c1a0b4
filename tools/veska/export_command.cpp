#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "command.h"
#include "files.h"
#include "json_tree.h"
#include "tool_io.h"

namespace veska_tool {
namespace {

struct Options {
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
      ForEachFile(options.files, [&](const std::string& file, std::ostream& out) {
        const auto info = LoadInfo(file);
        const std::string line = LineOf(Export(*info, NameOfInput(file)));
        if (IsStandard(options.output)) {
          out << line;
        } else {
          all += line;
        }
        return ExitStatus::kDone;
      });
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
}

ExitStatus RunExport(const Options& options) {
  CheckFiles(options);
  CheckOutput(options.output, options.force);
  if (options.schema) {
    WriteOutput(options.output, TextOf(Schema()), options.force);
    return ExitStatus::kDone;
  }
  if (options.lines) return ExportLines(options);
  const auto info = LoadInfo(options.files.front());
  WriteOutput(options.output, TextOf(Export(*info)), options.force);
  return ExitStatus::kDone;
}

std::function<ExitStatus()> Declare(CLI::App& app) {
  auto options = std::make_shared<Options>();
  app.add_option("FILE", options->files,
                 "Management file, several with --lines; - is standard input");
  app.add_option("-o,--output", options->output, "JSON file to write; - is standard output")
      ->type_name("OUT.json");
  app.add_flag("--lines", options->lines, "Write one compact line for each file, which it names");
  app.add_flag("--schema", options->schema, "Write the JSON Schema of these documents instead");
  app.add_flag("--force", options->force, "Overwrite an existing OUT.json");
  return [options] { return RunExport(*options); };
}

}  // namespace

extern const Command kExportCommand;
const Command kExportCommand = {
    "export", "Write a management file as JSON, without loss",
    "Every byte of every record is in it: numbers as numbers, bytes without meaning as hex, with\n"
    "readable text beside where there may be some. What completing derives (counts, sizes,\n"
    "addresses) is left out. `veska build` makes the file again.\n",
    "  veska export VR_MANGR.IFO -o disc.json\n"
    "  veska export --lines */VR_MANGR.IFO | jq -r '[.file, .header.text_93.text] | @tsv'\n",
    Declare};

}  // namespace veska_tool
