// The manual page and the shell completions, made from the parser of the command line.
#pragma once

#include <string>

namespace CLI {
class App;
}

namespace veska_tool {

/// In the man macros of roff.
std::string ManualPage(const CLI::App& tool);
std::string BashCompletion(const CLI::App& tool);
std::string ZshCompletion(const CLI::App& tool);

}  // namespace veska_tool
