#include <veska/workshop/salvage.h>

#include <iostream>

#include "command.h"
#include "in_out.h"
#include "tool_io.h"

namespace veska_tool {
namespace {

using namespace VESKA::workshop;

ExitStatus RunSalvage(const InOut& files) {
  CheckOutput(files.output, files.force);
  const Input input = ReadOneInput(files.input, files, files.output);
  const Salvaged result = Salvage(input.bytes);
  std::ostream& out = IsStandard(files.output) ? std::cerr : std::cout;
  out << ToText(result);
  if (result.info == nullptr) {
    throw Failure(ExitStatus::kFound, input.name,
                  "nothing can be read of it, so nothing is written");
  }
  SaveInfo(files.output, *result.info, files.force);
  return result.is_whole ? ExitStatus::kDone : ExitStatus::kFound;
}

void DeclareOptions(CLI::App& app, InOut& files) { DeclareDiscInOut(app, files, kOutputFile); }

}  // namespace

const Command kSalvageCommand = {
    "salvage", "Write what can still be read of a damaged management file",
    "Reads table by table, and record by record where that is sound, and reports what was lost.\n"
    "Nothing is invented: what refers to a lost cell refers to none, and a count or an address is\n"
    "taken otherwise than it stands there only where everything else implies the same one value.\n"
    "The new file loads and passes `veska check` without errors. Exits with 1 when something was\n"
    "lost or taken otherwise, and when nothing could be read; then nothing is written. The report\n"
    "goes to standard error when OUT is standard output. An undamaged file is written in the\n"
    "canonical layout. OUT may be IN.\n",
    "  veska salvage VR_MANGR.IFO -o salvaged.ifo\n", Declare<InOut, DeclareOptions, RunSalvage>};

}  // namespace veska_tool
