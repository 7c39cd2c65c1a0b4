#include <veska/workshop/salvage.h>

#include <iostream>
#include <memory>

#include "command.h"
#include "in_out.h"
#include "tool_io.h"

namespace veska_tool {
namespace {

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

std::function<ExitStatus()> Declare(CLI::App& app) {
  auto files = std::make_shared<InOut>();
  DeclareDiscInOut(app, *files, kOutputFile);
  return [files] { return RunSalvage(*files); };
}

}  // namespace

extern const Command kSalvageCommand;
const Command kSalvageCommand = {
    "salvage", "Write what can still be read of a damaged management file",
    "Reads table by table, and record by record where that is sound, and reports what was lost.\n"
    "Nothing is invented: what refers to a lost cell refers to none, and a count or an address is\n"
    "taken otherwise than it stands there only where everything else implies the same one value.\n"
    "The new file loads and passes `veska check` without errors. Exits with 1 when something was\n"
    "lost or taken otherwise, and when nothing could be read; then nothing is written. The report\n"
    "goes to standard error when OUT is standard output. An undamaged file is written in the\n"
    "canonical layout. OUT may be IN.\n",
    "  veska salvage VR_MANGR.IFO -o salvaged.ifo\n", Declare};

}  // namespace veska_tool
