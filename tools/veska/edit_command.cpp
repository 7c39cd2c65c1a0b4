#include <veska/workshop/edit.h>

#include <CLI/CLI.hpp>
#include <iostream>

#include "command.h"
#include "encoding.h"
#include "input.h"
#include "tool_io.h"

namespace veska_tool {
namespace {

using namespace VESKA::workshop;

namespace fs = std::filesystem;

struct Options : InputOptions {
  std::string input;
  std::vector<std::string> words;
  std::string output;
  std::string encoding;
  bool in_place = false;
  bool dry_run = false;
  bool force = false;
};

std::string BackupOf(const Options& options) { return options.input + ".bak"; }

/// Where the result goes, and in place the file as it was: refused before any work is done.
void CheckPlaces(const Options& options) {
  const auto fail = [](const std::string& what) {
    throw Failure(ExitStatus::kUsage, "", what + " (see veska edit --help)");
  };
  const bool has_output = !options.output.empty();
  if (options.in_place && has_output) fail("--in-place and -o exclude each other");
  if (options.in_place && IsStandard(options.input)) fail("--in-place needs a file");
  if (!options.in_place && !has_output && !options.dry_run) {
    fail("-o OUT, --in-place or --dry-run has to say where the result goes");
  }
  if (options.dry_run) return;
  CheckOutput(options.in_place ? BackupOf(options) : options.output, options.force);
  std::error_code error;
  if (options.in_place && fs::equivalent(PathOf(options.input), PathOf(BackupOf(options)), error)) {
    throw Failure(ExitStatus::kFile, NameOfOutput(BackupOf(options)),
                  "is the same file as " + NameOfInput(options.input));
  }
}

void Save(const Options& options, const Bytes& before, VESKA::CVMGInfo& info) {
  if (!options.in_place) return SaveInfo(options.output, info, options.force);
  ImageOf(options.input, info);
  const std::string backup = BackupOf(options);
  WriteOutput(backup, before, options.force);
  std::error_code error;
  const fs::perms permissions = fs::status(PathOf(options.input), error).permissions();
  if (!error) fs::permissions(PathOf(backup), permissions, error);
  SaveInfo(options.input, info, true);
}

void CheckWords(const Options& options) {
  try {
    CheckRequest(options.words);
  } catch (const Error& error) {
    throw Failure(ExitStatus::kUsage, "", std::string(error.what()) + " (see veska edit --help)");
  }
}

ExitStatus Preview(const Options& options, const VESKA::CVMGInfo& info, const Encoding& encoding) {
  try {
    for (const std::string& line :
         PreviewEdit(info, options.words, encoding.Encoder(), encoding.Decoder())) {
      std::cout << line << "\n";
    }
  } catch (const Error& error) {
    if (error.Kind() == ErrorKind::kRequest) throw;
    throw Failure(ExitStatus::kFound, NameOfInput(options.input), error.what());
  }
  return ExitStatus::kDone;
}

ExitStatus Run(const Options& options) {
  CheckWords(options);
  const Encoding encoding(options.encoding);
  CheckPlaces(options);
  const Input input = ReadOneInput(options.input, options, options.output);
  if (options.in_place && input.is_found) {
    throw Failure(ExitStatus::kUsage, "", "--in-place needs a file, and -o goes with a disc");
  }
  const auto info = LoadInfo(input);
  if (options.dry_run) return Preview(options, *info, encoding);
  for (const std::string& note : Edit(*info, options.words, encoding.Encoder())) {
    Message(NameOfInput(options.input), note);
  }
  Save(options, input.bytes, *info);
  return ExitStatus::kDone;
}

void DeclareOptions(CLI::App& app, Options& options) {
  app.add_option("IN", options.input, kInputHelp)->required();
  app.add_option("OPERATION", options.words, "What to do, in this order; see below")->required();
  app.add_option("-o,--output", options.output, "The file to write; - is standard output")
      ->type_name("OUT");
  app.add_flag("--in-place", options.in_place,
               "Write the result over IN, and keep what IN was as IN.bak");
  app.add_flag("--dry-run", options.dry_run, "Write nothing; show what would change");
  app.add_flag("--force", options.force, "Overwrite OUT, or IN.bak");
  DeclareInputOptions(app, options, false);
  DeclareEncoding(app, options.encoding);
}

std::string Description() {
  std::string text =
      "Everything is numbered from 1: programs, cells, play lists, user-defined chains, text sets\n"
      "and their texts. Cells are those of the original program chain, counted through all its\n"
      "programs. A number means the file as the operations before it leave it.\n"
      "\n"
      "The cell numbers in the header, the play lists and these programs follow the cells, and so\n"
      "do the programs' cell counts. A cell number whose cell is deleted becomes 0xFFFF (none),\n"
      "which is reported. User-defined chains count cells of their own and are left alone, and so\n"
      "are numbers that the format gives no meaning.\n"
      "\n"
      "In a TEXT, \\\\ is a backslash and \\xNN a byte in hexadecimal; all else is written in\n"
      "the character set that --encoding names, and else as it is. Where a TEXT begins with -, put "
      "-- before IN.\n"
      "\n"
      "Operations:\n";
  for (const Operation& operation : Operations()) {
    text += std::string("  ") + operation.name + " " + operation.arguments + "\n        " +
            operation.help + "\n";
  }
  return text;
}

const std::string kDescription = Description();

}  // namespace

const Command kEditCommand = {
    "edit", "Edit a management file and keep all references in step", kDescription.c_str(),
    "  veska edit VR_MANGR.IFO -o NEW.IFO delete-program 3 move-cell 5 1\n"
    "  veska edit VR_MANGR.IFO --dry-run join-programs 2\n"
    "  veska edit VR_MANGR.IFO --in-place set-program-text 1 'Evening news'\n",
    Declare<Options, DeclareOptions, Run>};

}  // namespace veska_tool
