#include <veska/workshop/error.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <iostream>
#include <new>

#include "command.h"
#include "tool_io.h"

namespace veska_tool {

namespace {

constexpr const Command* kCommands[] = {
    &kListCommand,    &kShowCommand,   &kCheckCommand,  &kReportCommand,
    &kDiffCommand,    &kExportCommand, &kBuildCommand,  &kCompleteCommand,
    &kSalvageCommand, &kEditCommand,   &kLocateCommand, &kHelpCommand,
};

std::string StatusList() {
  std::string text = "Exit status:\n";
  for (const ExitStatus status : kExitStatuses) {
    text += "  " + std::to_string(static_cast<int>(status)) + "  " + Meaning(status) + "\n";
  }
  return text;
}

std::string Footer(const Command& command) {
  std::string text = command.description;
  if (!text.empty()) text += "\n";
  return text + "Example:\n" + command.examples;
}

/// What was asked for goes to standard output; a mistake is one line on standard error.
ExitStatus Report(const CLI::App& app, const CLI::ParseError& error) {
  if (error.get_exit_code() == 0) {
    app.exit(error, std::cout, std::cerr);
    return ExitStatus::kDone;
  }
  const auto chosen = app.get_subcommands();
  const std::string name = chosen.empty() ? "" : " " + chosen.front()->get_name();
  std::string what = error.what();
  if (chosen.empty() && error.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError)) {
    const auto rest = app.remaining();
    what = rest.empty() ? "a command is required" : "no command is named " + rest.front();
  }
  Message("", what + " (see veska" + name + " --help)");
  return ExitStatus::kUsage;
}

/// Stands before an argument that begins with a bracket, which the parser would take apart.
constexpr char kMark = '\x01';

std::string Marked(const std::string& argument) {
  const bool needs_mark = !argument.empty() && (argument[0] == '[' || argument[0] == kMark);
  return needs_mark ? kMark + argument : argument;
}

std::string Unmarked(const std::string& argument) {
  return argument.starts_with(kMark) ? argument.substr(1) : argument;
}

}  // namespace

std::span<const Command* const> Commands() { return kCommands; }

const char* Meaning(ExitStatus status) {
  switch (status) {
    case ExitStatus::kDone:
      return "done";
    case ExitStatus::kFound:
      return "the file is bad, or something was found or differs";
    case ExitStatus::kUsage:
      return "wrong usage";
    case ExitStatus::kFile:
      return "reading or writing failed";
  }
  return "";
}

ExitStatus Worse(ExitStatus a, ExitStatus b) { return std::max(a, b); }

ExitStatus Caught(const std::string& where, Notes& notes,
                  const std::function<ExitStatus()>& action) {
  try {
    return action();
  } catch (const Failure& failure) {
    notes.push_back({failure.Where(), failure.what()});
    return failure.Status();
  } catch (const VESKA::workshop::Error& error) {
    notes.push_back({where, error.what()});
    return error.Kind() == VESKA::workshop::ErrorKind::kRequest ? ExitStatus::kUsage
                                                                : ExitStatus::kFound;
  } catch (const std::bad_alloc&) {
    notes.push_back({where, "there is not enough memory"});
    return ExitStatus::kFile;
  }
}

ExitStatus Guarded(const std::string& where, const std::function<ExitStatus()>& action) {
  Notes notes;
  const ExitStatus status = Caught(where, notes, action);
  for (const Note& note : notes) Message(note.where, note.what);
  return status;
}

void DeclareAll(CLI::App& app, std::function<ExitStatus()>& run) {
  app.require_subcommand(1);
  const auto formatter = app.get_formatter();
  formatter->label("SUBCOMMAND", "COMMAND");
  formatter->label("Positionals", "Arguments");
  formatter->label("TEXT", "");
  formatter->label("REQUIRED", "");
  app.set_version_flag("--version", "veska " VESKA_VERSION);
  app.footer(StatusList());
  for (const Command* command : Commands()) {
    CLI::App* sub = app.add_subcommand(command->name, command->summary);
    sub->group("Commands");
    sub->footer(Footer(*command));
    const std::function<ExitStatus()> action = command->declare(*sub);
    for (CLI::Option* option : sub->get_options()) option->transform(Unmarked);
    sub->final_callback([&run, action] { run = action; });
  }
}

ExitStatus RunTool(std::vector<std::string> arguments) {
  CLI::App app(kToolSummary, "veska");
  std::function<ExitStatus()> run;
  DeclareAll(app, run);
  try {
    std::transform(arguments.begin(), arguments.end(), arguments.begin(), Marked);
    std::reverse(arguments.begin(), arguments.end());  // as the parser takes them
    app.parse(std::move(arguments));
  } catch (const CLI::ParseError& error) {
    run = [&app, error] { return Report(app, error); };
  }
  const ExitStatus status = Guarded("", run);
  const ExitStatus flushed = Guarded("", [] { return FlushStandardOutput(), ExitStatus::kDone; });
  return Worse(status, flushed);
}

}  // namespace veska_tool
