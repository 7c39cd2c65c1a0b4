// Commands over many inputs.
#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "command.h"
#include "input.h"

namespace veska_tool {

/// What a command does with its inputs.
struct InputWork {
  /// Handles one management file and writes to `out` what is to be printed of it. With several jobs
  /// it is called by several threads at once.
  std::function<ExitStatus(const Input& input, std::ostream& out)> action = {};
  /// What is to be printed of an input that cannot be read; may be empty.
  std::function<void(const std::string& argument, const std::string& reason, std::ostream& out)>
      print_bad = {};
  unsigned jobs = 1;
};

/// Does the work for every input and prints what it wrote, in the order of the inputs however many
/// jobs there are. One input's failure does not stop the others. A bar on standard error shows how
/// far it is, when that is a terminal and the work is long. Holds the bytes of a few inputs at a
/// time. Returns the worst status.
ExitStatus ForEachInput(const std::vector<std::string>& arguments, const InputOptions& options,
                        const InputWork& work);

/// Adds --jobs to the parser of a command.
void DeclareJobs(CLI::App& app, unsigned& jobs);

}  // namespace veska_tool
