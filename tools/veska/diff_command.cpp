#include <veska/workshop/diff.h>

#include <CLI/CLI.hpp>
#include <iostream>

#include "command.h"
#include "encoding.h"
#include "input.h"
#include "tool_io.h"

namespace veska_tool {
namespace {

using namespace VESKA::workshop;

struct Options : InputOptions {
  std::string a;
  std::string b;
  std::string encoding;
  bool all = false;
};

/// Where the bytes of two files with equal tables differ: no table reads them.
void PrintByteDifference(const Bytes& a, const Bytes& b) {
  const std::size_t shorter = std::min(a.size(), b.size());
  const auto first = static_cast<std::size_t>(
      std::mismatch(a.begin(), a.begin() + static_cast<std::ptrdiff_t>(shorter), b.begin()).first -
      a.begin());
  std::cout << "the tables are equal; bytes that belong to no table differ from offset " << first
            << " (files of " << a.size() << " and " << b.size() << " bytes)\n";
}

ExitStatus RunDiff(const Options& options) {
  const DecodeText decode = Encoding(options.encoding).Decoder();
  const Input input_a = ReadOneInput(options.a, options);
  const auto a = LoadInfo(input_a);
  const Input input_b = ReadOneInput(options.b, options);
  const auto b = LoadInfo(input_b);
  const std::vector<std::string> differences = Differences(*a, *b, options.all, decode);
  for (const std::string& line : differences) std::cout << line << "\n";
  if (!differences.empty()) return ExitStatus::kFound;
  if (input_a.bytes == input_b.bytes) return ExitStatus::kDone;
  PrintByteDifference(input_a.bytes, input_b.bytes);
  return ExitStatus::kFound;
}

void DeclareOptions(CLI::App& app, Options& options) {
  app.add_option("A", options.a, std::string("First: ") + kInputHelp)->required();
  app.add_option("B", options.b, "Second, as the first")->required();
  app.add_flag("--all", options.all, "Compare counts, sizes and addresses even if more differs");
  DeclareInputOptions(app, options, false);
  DeclareEncoding(app, options.encoding);
}

}  // namespace

const Command kDiffCommand = {
    "diff", "Show what differs between two management files",
    "One line for each field that differs, and for each record that only one of both has. Items\n"
    "are numbered from 1, as they stand in the first file. What completing derives (counts,\n"
    "sizes, addresses) is compared when all else is equal, or with --all.\n",
    "  veska diff before.ifo after.ifo\n", Declare<Options, DeclareOptions, RunDiff>};

}  // namespace veska_tool
