#include <memory>
#include <nlohmann/json.hpp>

#include "command.h"
#include "in_out.h"
#include "json_tree.h"
#include "tool_io.h"

namespace veska_tool {
namespace {

ExitStatus RunBuild(const InOut& files) {
  CheckOutput(files.output, files.force);
  const Bytes bytes = ReadInput(files.input);
  const std::string where = NameOfInput(files.input);
  const Json document = ParseJson(std::string(bytes.begin(), bytes.end()), where);
  VESKA::CVMGInfo info;
  Build(document, where, info);
  SaveInfo(files.output, info, files.force);
  return ExitStatus::kDone;
}

std::function<ExitStatus()> Declare(CLI::App& app) {
  auto files = std::make_shared<InOut>();
  DeclareInOut(app, *files, {"IN.json", "What `veska export` wrote"},
               {"OUT.ifo", kOutputFile.help});
  return [files] { return RunBuild(*files); };
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
