// The documents, the manual page and the completions, held against the parser of the command line.
#include "manual.h"

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <map>
#include <regex>
#include <set>

#include "command.h"
#include "support/image_builder.h"
#include "support/tool_run.h"

namespace {

using VESKA::ReadFile;
using veska_tool::Commands;
using veska_tool::ExitStatus;

const std::filesystem::path kProject = std::filesystem::path(VESKA_SAMPLES).parent_path();

/// Each command with its long options.
std::map<std::string, std::set<std::string>> Options() {
  CLI::App tool;
  std::function<ExitStatus()> run;
  veska_tool::DeclareAll(tool, run);
  std::map<std::string, std::set<std::string>> options;
  for (const auto* command : Commands()) {
    for (const auto* option : tool.get_subcommand(command->name)->get_options()) {
      for (const auto& name : option->get_lnames()) options[command->name].insert("--" + name);
    }
  }
  return options;
}

std::set<std::string> AllOf(const std::string& text, const std::string& pattern) {
  const std::regex regex(pattern);
  std::set<std::string> found;
  for (std::sregex_iterator i(text.begin(), text.end(), regex), end; i != end; ++i) {
    found.insert((*i)[1]);
  }
  return found;
}

TEST(Manual, DescribesEveryCommandAndOptionAndNoOther) {
  const std::string text = ReadFile<std::string>(kProject / "docs/tool.md");
  const std::regex heading("(?:^|\n)## veska ([a-z]+)\n");
  std::map<std::string, std::string> sections;
  for (std::sregex_iterator i(text.begin(), text.end(), heading), end; i != end; ++i) {
    const std::string rest = i->suffix();
    sections[(*i)[1]] = rest.substr(0, rest.find("\n## "));
  }
  for (const auto& [command, options] : Options()) {
    ASSERT_TRUE(sections.count(command)) << "docs/tool.md has no section for veska " << command;
    auto described = AllOf(sections[command], "`(--[a-z-]+)");
    described.insert("--help");  // of every command, at the top
    EXPECT_EQ(described, options) << "veska " << command;
    sections.erase(command);
  }
  EXPECT_TRUE(sections.empty()) << sections.begin()->first << " is no command";
}

TEST(Manual, PageAndCompletionsHaveEveryCommandAndOption) {
  CLI::App tool;
  std::function<ExitStatus()> run;
  veska_tool::DeclareAll(tool, run);
  std::string page;  // in which a dash is escaped
  for (const char c : veska_tool::ManualPage(tool)) page += c == '\\' ? "" : std::string(1, c);
  for (const std::string& text :
       {page, veska_tool::BashCompletion(tool), veska_tool::ZshCompletion(tool)}) {
    for (const auto& [command, options] : Options()) {
      EXPECT_NE(text.find(command), std::string::npos) << command << " in " << text;
      for (const std::string& option : options) {
        EXPECT_NE(text.find(option), std::string::npos) << option << " in " << text;
      }
    }
    EXPECT_NE(text.find("join-programs"), std::string::npos) << text;
  }
}

TEST(Manual, ListsCommandsAndExitStatuses) {
  const std::string text = ReadFile<std::string>(kProject / "docs/tool.md");
  std::string commands;
  for (const auto* command : Commands()) {
    commands += std::string("| `") + command->name + "` | " + command->summary + " |\n";
  }
  EXPECT_NE(text.find("|---|---|\n" + commands + "\n"), std::string::npos) << commands;
  std::string statuses;
  for (const ExitStatus status : veska_tool::kExitStatuses) {
    statuses += "| " + std::to_string(static_cast<int>(status)) + " | " +
                veska_tool::Meaning(status) + " |\n";
  }
  EXPECT_NE(text.find("|---|---|\n" + statuses + "\n"), std::string::npos) << statuses;
}

/// The code of a document: its fenced blocks, and a line for each of its spans.
std::string CodeOf(const std::string& text) {
  std::string code;
  bool fenced = false;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("```")) fenced = !fenced;
    if (fenced) code += line + "\n";
    if (fenced) continue;
    for (const std::string& span : AllOf(line, "`([^`]+)`")) code += span + "\n";
  }
  return code;
}

// Every command line in a document, and in the examples of the help.
TEST(Manual, ExamplesUseWhatThereIs) {
  std::string code;
  for (const auto* command : Commands()) code += std::string(command->examples) + "\n";
  for (const auto& folder : {kProject, kProject / "docs"}) {
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
      if (entry.path().extension() == ".md")
        code += CodeOf(ReadFile<std::string>(entry.path())) + "\n";
    }
  }
  const auto options = Options();
  const std::regex command_line("(?:^|\n|\\| )(?:\\$ )? *veska ([a-z]+)([^\n|]*)");
  int found = 0;
  for (std::sregex_iterator i(code.begin(), code.end(), command_line), end; i != end; ++i) {
    const auto known = options.find((*i)[1]);
    ASSERT_NE(known, options.end()) << i->str();
    for (const std::string& option : AllOf((*i)[2], "(?: |\\[)(--[a-z-]+)")) {
      EXPECT_EQ(known->second.count(option), 1U) << i->str();
    }
    ++found;
  }
  EXPECT_GT(found, 15);
}

}  // namespace
