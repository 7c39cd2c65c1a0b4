#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "bitrate.h"
#include "command.h"
#include "in_out.h"
#include "report_page.h"
#include "tool_io.h"

namespace veska_tool {
namespace {

struct Options : InOut {
  std::string field_rate;
};

/// 0 when it is to be told from the file.
double FieldRate(const std::string& option) {
  if (option.empty()) return 0;
  return option == "50" ? kFields50 : kFields60;
}

ExitStatus Run(const Options& options) {
  CheckOutput(options.output, options.force);
  Bytes bytes = ReadInput(options.input);
  const auto info = LoadInfo(options.input, bytes);
  const std::string name =
      IsStandard(options.input) ? "standard input" : NameOf(PathOf(options.input).filename());
  WriteOutput(options.output, ReportPage(name, bytes, *info, FieldRate(options.field_rate)),
              options.force);
  return ExitStatus::kDone;
}

std::function<ExitStatus()> Declare(CLI::App& app) {
  auto options = std::make_shared<Options>();
  DeclareInOut(app, *options, {"FILE", kInputFile.help}, {"OUT.html", "The page to write"});
  app.add_option(
         "--field-rate", options->field_rate,
         "Video fields a second, 50 or 59.94; told from the clock values of the VOBs unless given")
      ->type_name("RATE")
      ->check(CLI::IsMember({"50", "59.94"}).description(""));
  return [options] { return Run(*options); };
}

}  // namespace

extern const Command kReportCommand;
const Command kReportCommand = {
    "report", "Draw a management file as a web page",
    "The page holds all that it needs: a map of the file, the programs and cells to scale, the\n"
    "play lists, and the bitrate of every movie VOB over time. It works without scripts, in light\n"
    "and in dark.\n",
    "  veska report VR_MANGR.IFO -o report.html\n", Declare};

}  // namespace veska_tool
