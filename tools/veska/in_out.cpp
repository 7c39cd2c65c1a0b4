#include "in_out.h"

#include <CLI/CLI.hpp>

namespace veska_tool {

void DeclareInOut(CLI::App& app, InOut& files, FileArgument input, FileArgument output) {
  const std::string name = output.name;
  app.add_option(input.name, files.input, std::string(input.help) + "; - is standard input")
      ->required();
  app.add_option("-o,--output", files.output, std::string(output.help) + "; - is standard output")
      ->type_name(name)
      ->required();
  app.add_flag("--force", files.force, "Overwrite an existing " + name);
}

void DeclareDiscInOut(CLI::App& app, InOut& files, FileArgument output) {
  DeclareInOut(app, files, kInputFile, output);
  DeclareInputOptions(app, files, false);
}

}  // namespace veska_tool
