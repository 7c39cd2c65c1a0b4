// What the commands that make one file of another are given.
#pragma once

#include <string>

namespace CLI {
class App;
}

namespace veska_tool {

struct InOut {
  std::string input;
  std::string output;
  bool force = false;
};

/// A file as the help names and explains it.
struct FileArgument {
  const char* name;
  const char* help;
};

inline constexpr FileArgument kInputFile = {"IN", "Management file"};
inline constexpr FileArgument kOutputFile = {"OUT", "Management file to write"};

/// Adds the input, -o and --force to the parser of a command. `files` has to live as long.
void DeclareInOut(CLI::App& app, InOut& files, FileArgument input, FileArgument output);

}  // namespace veska_tool
