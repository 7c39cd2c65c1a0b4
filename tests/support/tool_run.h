// Runs the tool inside the test.
#pragma once

#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "command.h"
#include "support/samples.h"

struct ToolRun {
  veska_tool::ExitStatus status;
  std::string out;
  std::string err;
};

inline ToolRun RunTool(const std::vector<std::string>& arguments) {
  std::ostringstream out;
  std::ostringstream err;
  std::streambuf* const old_out = std::cout.rdbuf(out.rdbuf());
  std::streambuf* const old_err = std::cerr.rdbuf(err.rdbuf());
  const veska_tool::ExitStatus status = veska_tool::RunTool(arguments);
  std::cout.rdbuf(old_out);
  std::cerr.rdbuf(old_err);
  return {status, out.str(), err.str()};
}
