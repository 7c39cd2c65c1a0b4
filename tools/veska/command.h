// What a command is, and how the tool runs one.
#pragma once

#include <functional>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace veska_tool {

inline constexpr const char* kToolSummary =
    "Read, edit, complete and write the management file of DVD Video Recording discs";

/// How the tool exits.
enum class ExitStatus : int {
  kDone = 0,   ///< all was done and nothing found
  kFound = 1,  ///< a file is bad, something was found, or files differ
  kUsage = 2,  ///< the command line is wrong
  kFile = 3    ///< reading or writing failed
};

inline constexpr ExitStatus kExitStatuses[] = {ExitStatus::kDone, ExitStatus::kFound,
                                               ExitStatus::kUsage, ExitStatus::kFile};

/// What each status means, for the help and the manual.
const char* Meaning(ExitStatus status);

/// The status that tells more of two, for a command that has done several things.
ExitStatus Worse(ExitStatus a, ExitStatus b);

/// A command of the tool. One file defines each: tools/veska/NAME_command.cpp.
struct Command {
  const char* name;
  const char* summary;      ///< one line
  const char* description;  ///< paragraphs for the help and the manual; may be empty
  const char* examples;     ///< one or more command lines, each followed by a line end
  /// Adds the command's options to its parser and returns what runs it once they are parsed.
  std::function<ExitStatus()> (*declare)(CLI::App& app);
};

/// All commands, in the order of the help.
std::span<const Command* const> Commands();

extern const Command kBuildCommand, kCheckCommand, kCompleteCommand, kDiffCommand, kEditCommand,
    kExportCommand, kHelpCommand, kListCommand, kLocateCommand, kReportCommand, kSalvageCommand,
    kShowCommand;

/// What declares a command: `declare` adds the options, into which the parser writes what is given
/// before `run` is called.
template <class Options, void (*declare)(CLI::App& app, Options& options),
          ExitStatus (*run)(const Options& options)>
std::function<ExitStatus()> Declare(CLI::App& app) {
  auto options = std::make_shared<Options>();
  declare(app, *options);
  return [options] { return run(*options); };
}

/// Ends a command with one line on standard error, `veska: WHERE: WHAT`, and an exit status.
class Failure : public std::runtime_error {
 public:
  Failure(ExitStatus status, std::string where, const std::string& what)
      : std::runtime_error(what), status_(status), where_(std::move(where)) {}

  ExitStatus Status() const { return status_; }
  /// The file, or what else it is about.
  const std::string& Where() const { return where_; }

 private:
  ExitStatus status_;
  std::string where_;
};

/// A line for standard error, `veska: WHERE: WHAT`.
struct Note {
  std::string where;
  std::string what;
};
using Notes = std::vector<Note>;

/// Runs `action`. A failure, or a lack of memory, becomes a note and its status.
ExitStatus Caught(const std::string& where, Notes& notes,
                  const std::function<ExitStatus()>& action);

/// The same, and prints the note.
ExitStatus Guarded(const std::string& where, const std::function<ExitStatus()>& action);

/// The parser of the whole command line; `run` is set to what a parsed command line asks for.
void DeclareAll(CLI::App& app, std::function<ExitStatus()>& run);

/// Runs the tool with the arguments behind the program's name, in UTF-8.
ExitStatus RunTool(std::vector<std::string> arguments);

}  // namespace veska_tool
