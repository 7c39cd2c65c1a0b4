#include <veska/workshop/json.h>

#include "command.h"
#include "in_out.h"
#include "tool_io.h"

namespace veska_tool {
namespace {

using namespace VESKA::workshop;

ExitStatus RunBuild(const InOut& files) {
  CheckOutput(files.output, files.force);
  const Bytes bytes = ReadInput(files.input);
  return Guarded(NameOfInput(files.input), [&] {
    const auto info = FromJson({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    SaveInfo(files.output, *info, files.force);
    return ExitStatus::kDone;
  });
}

void DeclareOptions(CLI::App& app, InOut& files) {
  DeclareInOut(app, files, {"IN.json", "What `veska export` wrote"}, {"OUT.ifo", kOutputFile.help});
}

}  // namespace

const Command kBuildCommand = {
    "build", "Make a management file from its JSON",
    "Counts, sizes and addresses are computed. A key that is not known, is missing or holds what\n"
    "does not fit is a mistake: it is named by its JSON pointer with what was expected there, and\n"
    "nothing is written.\n",
    "  veska build disc.json -o VR_MANGR.IFO\n", Declare<InOut, DeclareOptions, RunBuild>};

}  // namespace veska_tool
