#include <veska/workshop/list.h>

#include <CLI/CLI.hpp>
#include <iostream>

#include "command.h"
#include "encoding.h"
#include "for_each_input.h"
#include "input.h"
#include "tool_io.h"

namespace veska_tool {
namespace {

using namespace VESKA::workshop;

struct Options : InputOptions {
  std::vector<std::string> inputs;
  std::string encoding;
  bool json = false;
  bool csv = false;
  bool programs = false;
  unsigned jobs = 1;
};

std::string Text(const Listing& listing, const std::string& name, const Options& options) {
  const RowOf of = options.programs ? RowOf::kProgram : RowOf::kDisc;
  if (options.csv) return ToCsv(listing, name, of);
  return options.json ? ToJsonLines(listing, name, of) : ToText(listing, name);
}

ExitStatus Run(const Options& options) {
  const bool wants_rows = options.csv || options.json;
  if (options.programs && !wants_rows) {
    throw Failure(ExitStatus::kUsage, "", "--programs goes with --csv or --json");
  }
  InputWork work{.jobs = options.jobs};
  work.action = [&options, decode = Encoding(options.encoding).Decoder()](const Input& input,
                                                                          std::ostream& out) {
    const Listing listing = ListingOf(input.bytes, decode);
    out << Text(listing, input.name, options);
    const bool is_sound = listing.status == DiscStatus::kSound;
    return is_sound && !input.is_backup ? ExitStatus::kDone : ExitStatus::kFound;
  };
  if (wants_rows) {  // a table tells of every input
    work.print_bad = [&options](const std::string& argument, const std::string& reason,
                                std::ostream& out) {
      out << Text(BadListing(reason), NameOfInput(argument), options);
    };
  }
  if (options.csv) {
    std::cout << CsvHeads(options.programs ? RowOf::kProgram : RowOf::kDisc);
  }
  return ForEachInput(options.inputs, options, work);
}

void DeclareOptions(CLI::App& app, Options& options) {
  app.add_option("INPUT", options.inputs, kInputHelp)->required();
  CLI::Option* json =
      app.add_flag("--json", options.json, "Print a JSON object on a line for each disc");
  app.add_flag("--csv", options.csv, "Print a row of comma-separated values for each disc")
      ->excludes(json);
  app.add_flag("--programs", options.programs, "Print one for each program instead");
  DeclareInputOptions(app, options, true);
  DeclareJobs(app, options.jobs);
  DeclareEncoding(app, options.encoding);
}

}  // namespace

const Command kListCommand = {
    "list", "Tell what is on a disc",
    "One screen a disc: its text, the programs with their playing times, the play lists, and the\n"
    "sums. A file that does not load is salvaged for it, which is said. With --json or --csv a "
    "row\n"
    "a disc, or a row a program, is printed as soon as it is known; of what cannot be read the "
    "row\n"
    "holds the reason. The document tool.md lists the columns.\n",
    "  veska list /media/dvd\n"
    "  veska list --csv archive/*.iso > discs.csv\n"
    "  veska list --encoding SHIFT_JIS /dev/sr0\n",
    Declare<Options, DeclareOptions, Run>};

}  // namespace veska_tool
