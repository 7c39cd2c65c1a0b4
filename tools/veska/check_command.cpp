#include <veska/workshop/check.h>

#include <CLI/CLI.hpp>
#include <iostream>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "command.h"
#include "for_each_input.h"
#include "input.h"
#include "tool_io.h"

namespace veska_tool {
namespace {

using namespace VESKA::workshop;

constexpr unsigned kDefaultLimit = 20;

struct Options : InputOptions {
  std::vector<std::string> inputs;
  bool json = false;
  bool summary = false;
  bool warnings_as_errors = false;
  unsigned limit = kDefaultLimit;
  unsigned jobs = 1;
};

/// What all files together came to.
struct Sums {
  std::mutex mutex;
  std::map<Code, std::size_t> findings;
  std::map<Code, std::size_t> files;
  std::size_t examined = 0;
  std::size_t bad = 0;

  void Add(const Examination& examination) {
    const std::scoped_lock lock(mutex);
    ++examined;
    if (examination.errors != 0) ++bad;
    std::map<Code, std::size_t> counts = examination.omitted;
    for (const Finding& finding : examination.findings) ++counts[finding.code];
    for (const auto& [code, count] : counts) {
      findings[code] += count;
      ++files[code];
    }
  }
};

void PrintSummary(const Sums& sums) {
  for (const auto& [code, count] : sums.findings) {
    std::cout << NameOf(code) << " " << NameOf(EntryOf(code).severity) << ": " << count << " in "
              << sums.files.at(code) << (sums.files.at(code) == 1 ? " file: " : " files: ")
              << EntryOf(code).title << "\n";
  }
  std::cout << sums.examined << (sums.examined == 1 ? " file, " : " files, ") << sums.bad
            << " with errors\n";
}

/// The examinations of one document, in the order of the inputs whichever ends first.
struct Document {
  std::mutex mutex;
  std::map<std::size_t, NamedExamination> files;

  void Add(const Input& input, Examination examination) {
    const std::scoped_lock lock(mutex);
    files.emplace(input.order, NamedExamination{input.name, std::move(examination)});
  }
  std::string Text() {
    std::vector<NamedExamination> list;
    for (auto& [order, file] : files) list.push_back(std::move(file));
    return ToJson(list);
  }
};

ExitStatus CheckInputs(const Options& options) {
  Sums sums;
  Document document;
  InputWork work{.jobs = options.jobs};
  work.action = [&](const Input& input, std::ostream& out) {
    Examination examination = Check(input.bytes, options.limit);
    const bool is_bad = examination.errors != 0 || input.is_backup ||
                        (options.warnings_as_errors && examination.warnings != 0);
    if (options.summary) {
      sums.Add(examination);
    } else if (options.json) {
      document.Add(input, std::move(examination));
    } else {
      out << ToText(examination, input.name);
    }
    return is_bad ? ExitStatus::kFound : ExitStatus::kDone;
  };
  const ExitStatus status = ForEachInput(options.inputs, options, work);
  if (options.summary) PrintSummary(sums);
  if (options.json) std::cout << document.Text();
  return status;
}

void DeclareOptions(CLI::App& app, Options& options) {
  app.add_option("INPUT", options.inputs, kInputHelp)->required();
  CLI::Option* json = app.add_flag("--json", options.json, "Print JSON");
  app.add_flag("--summary", options.summary,
               "Print how often each code was found in all files together instead")
      ->excludes(json);
  app.add_flag("--warnings-as-errors", options.warnings_as_errors,
               "Exit with 1 for warnings as well");
  app.add_option("--limit", options.limit,
                 "Print at most this many findings of each code, 0 for all")
      ->type_name("N")
      ->capture_default_str();
  DeclareJobs(app, options.jobs);
  DeclareInputOptions(app, options, true);
}

}  // namespace

const Command kCheckCommand = {
    "check", "Find what is inconsistent in management files",
    "Examines a file however damaged it is, and prints for each finding the offset in the file, a\n"
    "code, where it is, what stands there and what would be right. Repairs nothing. Exits with 1\n"
    "when an error was found; warnings count only with --warnings-as-errors, notes never.\n"
    "Programs, cells, VOBs and all others are numbered from 1. The document check.md lists all "
    "codes.\n",
    "  veska check VR_MANGR.IFO\n"
    "  veska check --json --warnings-as-errors discs/*/DVD_RTAV/VR_MANGR.IFO\n",
    Declare<Options, DeclareOptions, CheckInputs>};

}  // namespace veska_tool
