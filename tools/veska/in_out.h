// What the commands that make one file of another are given.
#pragma once

#include <string>

#include "input.h"

namespace CLI {
class App;
}

namespace veska_tool {

/// `input` may be a disc's folder or an image where the command takes management files.
struct InOut : InputOptions {
  std::string input;
  std::string output;
  bool force = false;
};

/// A file as the help names and explains it.
struct FileArgument {
  const char* name;
  const char* help;
};

inline constexpr FileArgument kInputFile = {
    "IN", "A management file, a disc's folder, the image of a disc or a device"};
inline constexpr FileArgument kOutputFile = {"OUT", "Management file to write"};

/// Adds the input, -o and --force to the parser of a command. `files` has to live as long.
void DeclareInOut(CLI::App& app, InOut& files, FileArgument input, FileArgument output);
/// The same for a command whose input is a management file, or where one is found.
void DeclareDiscInOut(CLI::App& app, InOut& files, FileArgument output);

}  // namespace veska_tool
