#include "command.h"
#include "in_out.h"
#include "tool_io.h"

namespace veska_tool {
namespace {

ExitStatus RunComplete(const InOut& files) {
  CheckOutput(files.output, files.force);
  const auto info = LoadInfo(ReadOneInput(files.input, files, files.output));
  info->AutoComplete();
  SaveInfo(files.output, *info, files.force);
  return ExitStatus::kDone;
}

void DeclareOptions(CLI::App& app, InOut& files) { DeclareDiscInOut(app, files, kOutputFile); }

}  // namespace

const Command kCompleteCommand = {
    "complete", "Load a management file, compute what follows from its tables, and save it",
    "The tables are laid out one after the other in the order of the format; counts, sizes and\n"
    "addresses are set by what the tables hold. All else stays as it is. OUT may be IN.\n",
    "  veska complete VR_MANGR.IFO -o completed.ifo\n",
    Declare<InOut, DeclareOptions, RunComplete>};

}  // namespace veska_tool
