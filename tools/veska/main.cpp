#include <exception>
#include <string>
#include <vector>

#include "command.h"
#include "tool_io.h"

namespace {

int Run(std::vector<std::string> arguments) {
  try {
    return static_cast<int>(veska_tool::RunTool(std::move(arguments)));
  } catch (const std::exception& error) {
    veska_tool::Message("", error.what());
    return static_cast<int>(veska_tool::ExitStatus::kFile);
  }
}

}  // namespace

int main(int argc, char** argv) { return Run(veska_tool::Arguments(argc, argv)); }
