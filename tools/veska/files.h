// Commands over many files.
#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "command.h"

namespace veska_tool {

/// Runs `action` for every file and prints what it wrote; one file's failure does not stop the
/// others. A bar on standard error shows how far it is, when that is a terminal and the work is
/// long. Returns the worst status.
ExitStatus ForEachFile(
    const std::vector<std::string>& files,
    const std::function<ExitStatus(const std::string& file, std::ostream& out)>& action);

}  // namespace veska_tool
