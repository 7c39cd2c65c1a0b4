#include "manual.h"

#include <veska/workshop/edit.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>
#include <vector>

#include "command.h"

namespace veska_tool {
namespace {

bool IsFlag(const CLI::Option& option) { return option.get_items_expected_max() == 0; }

/// The options of a command that have dashes, or those that have none.
std::vector<const CLI::Option*> OptionsOf(const CLI::App& app, bool positional) {
  return app.get_options(
      [positional](const CLI::Option* option) { return option->get_positional() == positional; });
}

const CLI::App& AppOf(const CLI::App& tool, const Command& command) {
  return *tool.get_subcommand(command.name);
}

/// "-o, --output": short names before long ones.
std::string Names(const CLI::Option& option) {
  std::string text;
  for (const std::string& name : option.get_snames()) text += (text.empty() ? "-" : ", -") + name;
  for (const std::string& name : option.get_lnames()) text += (text.empty() ? "--" : ", --") + name;
  return text;
}

std::string Value(const CLI::Option& option) {
  return IsFlag(option) ? "" : option.get_type_name();
}

std::string PositionalText(const CLI::Option& option) {
  const std::string name =
      option.get_name(true) + (option.get_items_expected_max() > 1 ? "..." : "");
  return option.get_required() ? name : "[" + name + "]";
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// --- the manual page ---

std::string Roff(const std::string& text) {
  std::string escaped;
  if (!text.empty() && (text.front() == '.' || text.front() == '\'')) escaped = "\\&";
  for (const char c : text) {
    escaped += c == '\\' ? "\\e" : c == '-' ? "\\-" : std::string(1, c);
  }
  return escaped;
}

/// Lines that begin with blanks keep their form; the others are filled, and empty ones part
/// paragraphs.
std::string RoffText(const std::string& text) {
  std::string page;
  bool verbatim = false;
  for (const std::string& line : Lines(text)) {
    const bool indented = !line.empty() && line.front() == ' ';
    if (indented != verbatim && !line.empty()) {
      page += indented ? ".nf\n" : ".fi\n";
      verbatim = indented;
    }
    page += line.empty() ? ".PP\n" : Roff(line) + "\n";
  }
  return page + (verbatim ? ".fi\n" : "");
}

std::string RoffOption(const CLI::Option& option, const std::string& name) {
  const std::string value = option.get_positional() ? "" : Value(option);
  return ".TP\n.B " + Roff(name) + (value.empty() ? "" : " " + Roff(value)) + "\n" +
         Roff(option.get_description()) + "\n";
}

std::string RoffCommand(const CLI::App& app, const Command& command) {
  std::string page = ".SS veska " + Roff(command.name);
  for (const CLI::Option* option : OptionsOf(app, true))
    page += " " + Roff(PositionalText(*option));
  page += "\n" + Roff(command.summary) + ".\n.PP\n" + RoffText(command.description);
  for (const CLI::Option* option : OptionsOf(app, true)) {
    page += RoffOption(*option, option->get_name(true));
  }
  for (const CLI::Option* option : OptionsOf(app, false)) {
    page += RoffOption(*option, Names(*option));
  }
  return page + ".PP\nExample:\n.PP\n" + RoffText(command.examples);
}

// --- completions ---

std::string OptionWords(const CLI::App& app) {
  std::string words;
  for (const CLI::Option* option : OptionsOf(app, false)) {
    for (const std::string& name : option->get_lnames()) {
      words += (words.empty() ? "--" : " --") + name;
    }
  }
  return words;
}

std::string OperationWords() {
  std::string words;
  for (const auto& operation : VESKA::workshop::Operations()) {
    words += (words.empty() ? "" : " ") + std::string(operation.name);
  }
  return words;
}

/// Inside single quotes of a shell, in what describes an argument to zsh.
std::string ZshText(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '\'') {
      escaped += "'\\''";
    } else if (c == '[' || c == ']' || c == ':' || c == '\\') {
      escaped += {'\\', c};
    } else {
      escaped += c;
    }
  }
  return escaped;
}

std::string ZshOptions(const CLI::App& app) {
  std::string text;
  for (const CLI::Option* option : OptionsOf(app, false)) {
    const bool is_file = Value(*option).starts_with("OUT");
    const std::string value =
        IsFlag(*option) ? "" : ":" + ZshText(Value(*option)) + ":" + (is_file ? "_files" : "");
    const std::string description = "[" + ZshText(option->get_description()) + "]";
    const auto add = [&](const char* dashes, const std::string& name) {
      text.append(" \\\n        '").append(dashes).append(name);
      text.append(description).append(value).append("'");
    };
    for (const std::string& name : option->get_snames()) add("-", name);
    for (const std::string& name : option->get_lnames()) add("--", name);
  }
  return text;
}

std::string ZshArguments(const Command& command) {
  const std::string name = command.name;
  if (name == "help") return " \\\n        '1:command:{ _describe command commands }'";
  if (name != "edit") return " \\\n        '*:file:_files'";
  return " \\\n        '1:file:_files' \\\n        '*:operation:{ compadd -- " + OperationWords() +
         "; _files }'";
}

}  // namespace

std::string ManualPage(const CLI::App& tool) {
  std::string page = ".\\\" Made by veska help --man.\n.TH VESKA 1 \"\" \"veska " VESKA_VERSION
                     "\" \"User Commands\"\n.SH NAME\nveska \\- " +
                     Roff(kToolSummary) + "\n.SH SYNOPSIS\n";
  page += ".B veska\n.I COMMAND\n[\n.I OPTION\n]... [\n.I FILE\n]...\n";
  page += ".SH DESCRIPTION\nResults go to standard output, messages to standard error. The name\n";
  page += ".B \\-\nstands for standard input or output where a command reads or writes one file. ";
  page += "An existing\nfile is not overwritten unless\n.B \\-\\-force\nallows it.\n.SH COMMANDS\n";
  for (const Command* command : Commands()) page += RoffCommand(AppOf(tool, *command), *command);
  page += ".SH EXIT STATUS\n";
  for (const ExitStatus status : kExitStatuses) {
    page +=
        ".TP\n.B " + std::to_string(static_cast<int>(status)) + "\n" + Roff(Meaning(status)) + "\n";
  }
  page += ".SH ENVIRONMENT\n.TP\n.B NO_COLOR\nWhen it is set and not empty, nothing is coloured.\n";
  return page;
}

std::string BashCompletion(const CLI::App& tool) {
  std::string commands;
  std::string cases;
  for (const Command* command : Commands()) {
    commands += (commands.empty() ? "" : " ") + std::string(command->name);
    cases += std::string("    ") + command->name + ") words=\"" +
             OptionWords(AppOf(tool, *command)) + "\" ;;\n";
  }
  return "# Completion of veska for bash. Made by veska help --bash.\n"
         "_veska() {\n"
         "  local current=${COMP_WORDS[COMP_CWORD]} words\n"
         "  if [[ $COMP_CWORD -eq 1 ]]; then\n"
         "    COMPREPLY=($(compgen -W \"" +
         commands + " " + OptionWords(tool) +
         "\" -- \"$current\"))\n"
         "    return\n"
         "  fi\n"
         "  case ${COMP_WORDS[1]} in\n" +
         cases +
         "  esac\n"
         "  if [[ $current == -* ]]; then\n"
         "    COMPREPLY=($(compgen -W \"$words\" -- \"$current\"))\n"
         "  elif [[ ${COMP_WORDS[1]} == help ]]; then\n"
         "    COMPREPLY=($(compgen -W \"" +
         commands +
         "\" -- \"$current\"))\n"
         "  else\n"
         "    compopt -o filenames 2>/dev/null\n"
         "    mapfile -t COMPREPLY < <(compgen -f -- \"$current\")\n"
         "    [[ ${COMP_WORDS[1]} != edit || $COMP_CWORD -eq 2 ]] ||\n"
         "      COMPREPLY+=($(compgen -W \"" +
         OperationWords() +
         "\" -- \"$current\"))\n"
         "  fi\n"
         "}\n"
         "complete -F _veska veska\n";
}

std::string ZshCompletion(const CLI::App& tool) {
  std::string commands;
  std::string cases;
  for (const Command* command : Commands()) {
    commands += std::string("    '") + command->name + ":" + ZshText(command->summary) + "'\n";
    cases += std::string("    ") + command->name + ")\n      _arguments" +
             ZshOptions(AppOf(tool, *command)) + ZshArguments(*command) + "\n      ;;\n";
  }
  return "#compdef veska\n"
         "# Completion of veska for zsh. Made by veska help --zsh.\n"
         "_veska() {\n"
         "  local -a commands\n"
         "  commands=(\n" +
         commands +
         "  )\n"
         "  if (( CURRENT == 2 )); then\n"
         "    _describe command commands\n"
         "    return\n"
         "  fi\n"
         "  shift words\n"
         "  (( CURRENT-- ))\n"
         "  case $words[1] in\n" +
         cases +
         "  esac\n"
         "}\n"
         "_veska \"$@\"\n";
}

}  // namespace veska_tool
