#include <CLI/CLI.hpp>
#include <iostream>
#include <string>
#include <vector>

#include "command.h"
#include "manual.h"

namespace veska_tool {
namespace {

struct Options {
  std::string command;
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
  } else if (!options.command.empty()) {
    std::cout << tool.get_subcommand(options.command)->help(tool.get_name());
  } else {
    // The parser's own help would be that of the command that was given: of this one.
    std::cout << tool.get_formatter()->make_help(&tool, "", CLI::AppFormatMode::Normal);
  }
  return ExitStatus::kDone;
}

std::function<ExitStatus()> Declare(CLI::App& app) {
  auto options = std::make_shared<Options>();
  std::vector<std::string> names;
  for (const Command* command : Commands()) names.emplace_back(command->name);
  app.add_option("COMMAND", options->command, "The command to explain; all when none is given")
      ->check(CLI::IsMember(names).description(""));
  app.add_flag("--man", options->man, "Print the manual page");
  app.add_flag("--bash", options->bash, "Print the completion for bash");
  app.add_flag("--zsh", options->zsh, "Print the completion for zsh");
  return [options, tool = app.get_parent()] { return RunHelp(*tool, *options); };
}

}  // namespace

const Command kHelpCommand = {
    "help", "Print this help, that of a command, the manual page or a completion", "",
    "  veska help check\n"
    "  veska help --man | man -l -\n",
    Declare};

}  // namespace veska_tool
