#include <CLI/CLI.hpp>
#include <iostream>

#include "command.h"
#include "manual.h"

namespace veska_tool {
namespace {

struct Options {
  bool man = false;
  bool bash = false;
  bool zsh = false;
};

ExitStatus RunHelp(const CLI::App& tool, const Options& options) {
  if (options.man) {
    std::cout << ManualPage(tool);
  } else if (options.bash) {
    std::cout << BashCompletion(tool);
  } else if (options.zsh) {
    std::cout << ZshCompletion(tool);
  } else {
    std::cout << tool.help();
  }
  return ExitStatus::kDone;
}

std::function<ExitStatus()> Declare(CLI::App& app) {
  auto options = std::make_shared<Options>();
  app.add_flag("--man", options->man, "Print the manual page");
  app.add_flag("--bash", options->bash, "Print the completion for bash");
  app.add_flag("--zsh", options->zsh, "Print the completion for zsh");
  return [options, tool = app.get_parent()] { return RunHelp(*tool, *options); };
}

}  // namespace

extern const Command kHelpCommand;
const Command kHelpCommand = {"help", "Print this help, the manual page or a completion", "",
                              "  veska help --man | man -l -\n", Declare};

}  // namespace veska_tool
